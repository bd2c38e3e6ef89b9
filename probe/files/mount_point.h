// Whether a folder is a mount point: where a disk, or a bind mount of another folder, is
// attached. Code that walks, counts, lists, moves or removes a tree never goes into one. The
// device number alone cannot tell: a bind mount of a folder on the same disk keeps it.
// Blocking (one statx); safe to call from any thread.
#pragma once

#include <string>

namespace pellwin {

// `name` in the open folder `folderFd`, a link at `name` not followed (a link is never a mount
// point). False when nothing is there. The kernel's mount-root attribute decides; a kernel
// without it (before 5.8) is asked whether the device differs from the folder's.
[[nodiscard]] bool isMountPoint(int folderFd, const std::string& name);

// The same for a path, resolved from the working folder when relative; links on the way to the
// last component are followed as the kernel does.
[[nodiscard]] bool isMountPoint(const std::string& path);

// The reason given when a mount point itself was picked for removal.
inline constexpr const char* mountPointRefusal = "It's where another disk or folder is mounted";

// The reason given when a picked folder holds one, at `where` (a name or a path inside it).
[[nodiscard]] inline std::string mountInsideRefusal(const std::string& where) {
  return "Another disk or folder is mounted inside it, at " + where;
}

}  // namespace pellwin
