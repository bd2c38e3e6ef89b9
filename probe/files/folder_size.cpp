#include "probe/files/folder_size.h"

#include <sys/stat.h>

#include "probe/files/directory_listing.h"
#include "probe/files/disk_scanner.h"

namespace pellwin::FolderSize {

std::uint64_t allocatedBytes(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return 0;
  const std::uint64_t own = pellwin::allocatedBytes(info);
  if (!S_ISDIR(info.st_mode)) return own;
  // The space map's walk, whose tree is small (only items of 1 MB and more are kept): the same
  // rules for links, volumes and depth, and no second walker to keep in step with it.
  auto walked = walkTree(path, std::nullopt, {});
  if (!walked || walked->tree.isLocked) return own;
  return walked->tree.bytes;
}

}  // namespace pellwin::FolderSize
