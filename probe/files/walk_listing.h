// One folder as the space-map walk reads it: opened relative to its parent, every entry
// examined without following links, and kept compactly (names back to back, a small record
// each) until the walk uses it. Blocking; any thread may list, each with its own buffer.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "probe/file_descriptor.h"

namespace pellwin {

struct WalkEntry {
  // `leftOut`: neither counted, shown nor entered (see `leftOutOfWalk`).
  enum class Kind : std::uint8_t { file, folder, leftOut };

  std::size_t nameOffset = 0;  // into WalkListing::names
  std::uint64_t bytes = 0;     // allocated: st_blocks × 512
  std::uint64_t inode = 0;
  double lastUsed = 0;  // seconds since 1970
  std::uint32_t links = 0;
  std::uint16_t nameLength = 0;
  Kind kind = Kind::file;
};

struct WalkListing {
  // The open folder (O_RDONLY), shared with the listings of its subfolders still to be read;
  // null when it could not be opened.
  std::shared_ptr<const FileDescriptor> folder{};
  std::string names{};
  std::vector<WalkEntry> entries{};  // in the order the kernel gave them
  // Names that mark a developer project, in listing order; absent when none.
  std::optional<std::vector<std::string>> markers{};
  // Opened, and every entry read and examined. Sizes added up from part of a folder would pass
  // for the whole of it, so the walk shows an incomplete folder as a locked one.
  bool complete = false;

  [[nodiscard]] std::string_view name(const WalkEntry& entry) const {
    return std::string_view(names).substr(entry.nameOffset, entry.nameLength);
  }
};

// The one place the walk decides to leave an entry out, neither counted, shown nor entered:
// anything on another device than the walk's root (a disk mounted inside the tree), and any
// mount point (a bind mount of a folder on the same disk keeps the device number).
// `folderFd` is the open folder holding `name`, for checks that need to ask about the entry.
[[nodiscard]] bool leftOutOfWalk(int folderFd, std::string_view name, const struct stat& info,
                                 std::uint64_t rootDevice);

// Lists `name` in the open folder `parentFd` without following a link at `name`; with
// `parentFd` AT_FDCWD, `name` is a path and a link at it is followed (the walk's root).
// `buffer` is scratch space that the caller reuses between calls.
[[nodiscard]] WalkListing listForWalk(int parentFd, const std::string& name,
                                      std::uint64_t rootDevice, std::vector<char>& buffer);

// What an entry gives as its last-used date, in seconds since 1970.
[[nodiscard]] double lastUsedDate(const struct stat& info);

}  // namespace pellwin
