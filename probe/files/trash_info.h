// The text formats of the freedesktop.org Trash: the ".trashinfo" file written beside every
// trashed item, and the "directorysizes" cache. Pure functions over text.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin::TrashInfo {

// File-system bytes escaped as in URLs: every byte except A-Z a-z 0-9 - . _ ~ and "/" becomes
// %XX, the way GLib and trash-cli write it.
[[nodiscard]] std::string percentEncode(std::string_view bytes);
// Any %XX is decoded; a "%" not followed by two hex digits makes the text invalid.
[[nodiscard]] std::optional<std::string> percentDecode(std::string_view text);

// "YYYY-MM-DDThh:mm:ss" of a broken-down local time.
[[nodiscard]] std::string deletionDate(const std::tm& localTime);

// The whole ".trashinfo" text for an original path (absolute in the home trash, relative to
// the volume's top folder in a volume trash).
[[nodiscard]] std::string text(std::string_view originalPath, std::string_view deletionDate);

struct Parsed {
  std::string path{};          // decoded
  std::string deletionDate{};  // as written
  friend bool operator==(const Parsed&, const Parsed&) = default;
};

// Reads a ".trashinfo": the first line must be "[Trash Info]", the first Path and DeletionDate
// keys count, other lines are ignored. A missing or undecodable Path gives nothing.
[[nodiscard]] std::optional<Parsed> parse(std::string_view text);

// The name used in files/ for the n-th try (1, 2, ...): "name", "name.2", "name.3". Names are
// shortened on a UTF-8 boundary so that the info file's name, with ".trashinfo", still fits in
// the 255 bytes a file name may have.
[[nodiscard]] std::string candidateName(std::string_view name, int attempt);

struct DirectorySize {
  std::uint64_t bytes = 0;
  std::int64_t infoModified = 0;  // seconds since 1970 of the .trashinfo
  std::string name{};             // decoded name in files/
  friend bool operator==(const DirectorySize&, const DirectorySize&) = default;
};

// "directorysizes" lines "<bytes> <mtime> <percent-encoded name>"; malformed lines are dropped.
[[nodiscard]] std::vector<DirectorySize> parseDirectorySizes(std::string_view text);
[[nodiscard]] std::string formatDirectorySizes(const std::vector<DirectorySize>& entries);

}  // namespace pellwin::TrashInfo
