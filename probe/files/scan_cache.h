// The last finished scan, kept in one JSON file in the data folder ("space-map.json") so the
// space map can show it at once next time. Loading never fails loudly: a missing, damaged or
// older file is simply no cache. Saving replaces the file in one step. Not thread-safe per
// object; one owner saves and loads.
#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "core/space/size_node.h"
#include "probe/files/full_disk_access.h"
#include "probe/system_error.h"

namespace pellwin {

struct CachedScan {
  static constexpr std::int64_t currentVersion = 2;

  std::int64_t version = currentVersion;
  SizeNode tree{};
  double scannedAt = 0;  // seconds since 1970 (stored as seconds since 2001)
  std::string root{};    // the scanned path
  FullDiskAccess::State access = FullDiskAccess::State::unknown;
  friend bool operator==(const CachedScan&, const CachedScan&) = default;

  // The file's JSON: {"version","tree","scannedAt","root","access"}, compact.
  [[nodiscard]] std::string encode() const;
  // The bytes the tree's paths and names alone take in that JSON, found without writing it: a
  // lower bound on its size. Every node carries its whole path there, so in a very deep tree
  // they add up to gigabytes while the tree itself holds each name once.
  [[nodiscard]] std::uint64_t textBytesAtLeast() const;
  // None when the text is not a complete cached scan or its version is not `currentVersion`.
  [[nodiscard]] static std::optional<CachedScan> decode(std::string_view json);
};

class ScanCache {
 public:
  // A tree whose file would pass this size is not kept (see `save`).
  static constexpr std::uint64_t largestFile = 256ULL << 20;
  static constexpr std::string_view fileName = "space-map.json";
  // What a screen model built for previews uses, so it never overwrites the real cache.
  static constexpr std::string_view previewFileName = "unused-space-map.json";

  // `dataFolder`/space-map.json, where `dataFolder` is DataFolder::path of the XDG data home.
  [[nodiscard]] static std::string defaultPath(std::string_view dataFolder);

  explicit ScanCache(std::string path) : path_(std::move(path)) {}

  // Creates the folders above the file, writes a temporary file beside it, flushes it to disk
  // and renames it over the old one, so a crash leaves either the old file or the new one. A
  // failure ("create", "write", "flush" or "replace") reads best with
  // ErrorWording::reasonAndStep. A tree whose paths and names alone pass `largestFile` is not
  // written at all ("write", EFBIG): the map is still shown, and the next opening scans again.
  [[nodiscard]] std::expected<void, SystemError> save(const CachedScan& scan) const;
  [[nodiscard]] std::optional<CachedScan> load() const;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace pellwin
