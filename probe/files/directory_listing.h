// Lists one folder: every name in it with what fstatat says about it, links never followed.
// Names are the kernel's bytes, kept as they are (they need not be UTF-8). Blocking; safe to
// call from any thread.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "probe/system_error.h"

namespace pellwin {

struct DirectoryEntry {
  std::string name{};
  bool isDirectory = false;
  bool isSymlink = false;
  // Contents kept elsewhere (a cloud placeholder). Linux has no such flag; always false.
  bool isDataless = false;
  std::uint64_t allocatedBytes = 0;  // st_blocks × 512; a negative count is 0
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint32_t linkCount = 0;
  double modified = 0;  // seconds since 1970
  double accessed = 0;  // seconds since 1970; `modified` when the kernel gave none
  friend bool operator==(const DirectoryEntry&, const DirectoryEntry&) = default;

  [[nodiscard]] static DirectoryEntry from(std::string_view name, const struct stat& info);
};

namespace DirectoryListing {

struct Entries {
  std::vector<DirectoryEntry> entries{};  // in the order the kernel gave them
  // Set when the listing is incomplete: reading the folder failed part-way, or an entry could
  // not be examined. `entries` then holds what could be read.
  std::optional<SystemError> incomplete{};
  friend bool operator==(const Entries&, const Entries&) = default;
};
// The folder could not be opened because the system keeps it private (EACCES, EPERM).
struct Locked {
  friend bool operator==(const Locked&, const Locked&) = default;
};
// The folder could not be opened for any other reason: gone, not a folder, an I/O error.
struct Unreadable {
  SystemError error{};
  friend bool operator==(const Unreadable&, const Unreadable&) = default;
};
using Result = std::variant<Entries, Locked, Unreadable>;

// Opens the folder at `path` (a link at the path itself is followed, as opendir does) and
// lists it. An entry that vanished meanwhile is left out; one that cannot be examined for any
// other reason is left out too, and makes the listing incomplete.
[[nodiscard]] Result list(const std::string& path);

// Reads every entry of the open folder `folderFd`, "." and ".." left out, calling `each` with
// the name and its fstatat (AT_SYMLINK_NOFOLLOW) as soon as it is read. `folderPath` names the
// folder in a failure. `buffer` is scratch space reused between calls so that a walk allocates
// nothing per folder. An entry that vanished between reading and examining (ENOENT) is passed
// over as normal. Returns nothing when every entry was read and examined, else the first
// failure: "read" of the folder (the entries before it were passed on, none after), or "lstat"
// of an entry (passed over; the other entries are still passed on).
[[nodiscard]] std::expected<void, SystemError> read(
    int folderFd, const std::string& folderPath, std::vector<char>& buffer,
    const std::function<void(std::string_view name, const struct stat& info)>& each);

}  // namespace DirectoryListing

// `st_blocks × 512`, with a negative count taken as 0.
[[nodiscard]] std::uint64_t allocatedBytes(const struct stat& info);

}  // namespace pellwin
