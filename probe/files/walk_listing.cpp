#include "probe/files/walk_listing.h"

#include <fcntl.h>

#include <algorithm>
#include <limits>

#include "core/space/project_rules.h"
#include "probe/files/directory_listing.h"
#include "probe/files/mount_point.h"

namespace pellwin {

// A folder's own access time is rewritten by anything that lists it (this walk, updatedb, file
// managers), so its modification time says more; a file's access time moves only when it is
// read.
double lastUsedDate(const struct stat& info) {
  auto seconds = [](const struct timespec& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
  };
  const double modified = seconds(info.st_mtim);
  if (S_ISDIR(info.st_mode)) return modified;
  const double accessed = seconds(info.st_atim);
  return accessed > modified ? accessed : modified;
}

bool leftOutOfWalk(int folderFd, std::string_view name, const struct stat& info,
                   std::uint64_t rootDevice) {
  if (static_cast<std::uint64_t>(info.st_dev) != rootDevice) return true;
  // A bind mount keeps the device number: it too is neither counted nor shown.
  return S_ISDIR(info.st_mode) && isMountPoint(folderFd, std::string(name));
}

namespace {

WalkEntry::Kind kindOf(int folderFd, std::string_view name, const struct stat& info,
                       std::uint64_t rootDevice) {
  if (leftOutOfWalk(folderFd, name, info, rootDevice)) return WalkEntry::Kind::leftOut;
  return S_ISDIR(info.st_mode) ? WalkEntry::Kind::folder : WalkEntry::Kind::file;
}

}  // namespace

WalkListing listForWalk(int parentFd, const std::string& name, std::uint64_t rootDevice,
                        std::vector<char>& buffer) {
  WalkListing listing;
  const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (parentFd == AT_FDCWD ? 0 : O_NOFOLLOW);
  FileDescriptor fd(::openat(parentFd, name.c_str(), flags));
  // Private or vanished alike: the walk makes no difference between them.
  if (!fd.valid()) return listing;
  const int folderFd = fd.get();
  const auto read = DirectoryListing::read(
      folderFd, name, buffer, [&](std::string_view entryName, const struct stat& info) {
        const bool isDirectory = S_ISDIR(info.st_mode);
        if (ProjectRules::isMarker(entryName, isDirectory)) {
          if (!listing.markers) listing.markers.emplace();
          listing.markers->emplace_back(entryName);
        }
        listing.entries.push_back(
            {.nameOffset = listing.names.size(),
             .bytes = allocatedBytes(info),
             .inode = static_cast<std::uint64_t>(info.st_ino),
             .lastUsed = lastUsedDate(info),
             .links = static_cast<std::uint32_t>(
                 std::min<std::uint64_t>(info.st_nlink, std::numeric_limits<std::uint32_t>::max())),
             // getdents64 names are at most 255 bytes on Linux, far below the field's limit.
             .nameLength = static_cast<std::uint16_t>(entryName.size()),
             .kind = kindOf(folderFd, entryName, info, rootDevice)});
        listing.names.append(entryName);
      });
  listing.complete = read.has_value();
  listing.folder = std::make_shared<const FileDescriptor>(std::move(fd));
  return listing;
}

}  // namespace pellwin
