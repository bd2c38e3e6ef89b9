#include "probe/files/mount_point.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace pellwin {

namespace {

// AT_NO_AUTOMOUNT: asking must not mount an automounter's folder as a side effect.
constexpr int lookFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;

// `parentName` names the folder holding the entry, relative to the same `folderFd`.
bool isMountPointAt(int folderFd, const char* name, const char* parentName) {
  struct statx here {};
  if (::statx(folderFd, name, lookFlags, STATX_TYPE, &here) != 0) return false;
  if (S_ISLNK(here.stx_mode)) return false;
  if ((here.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0) {
    return (here.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  }
  // Older kernels: only a mount of another file system can be seen.
  struct statx parent {};
  const int parentFlags = parentName[0] == '\0' ? AT_EMPTY_PATH : 0;
  if (::statx(folderFd, parentName, parentFlags | AT_NO_AUTOMOUNT, STATX_TYPE, &parent) != 0) {
    return false;
  }
  return here.stx_dev_major != parent.stx_dev_major || here.stx_dev_minor != parent.stx_dev_minor;
}

}  // namespace

bool isMountPoint(int folderFd, const std::string& name) {
  return isMountPointAt(folderFd, name.c_str(), "");
}

bool isMountPoint(const std::string& path) {
  // ".." of a mount point is the folder it is mounted on, not the root of what is mounted.
  const std::string parent = path + "/..";
  return isMountPointAt(AT_FDCWD, path.c_str(), parent.c_str());
}

}  // namespace pellwin
