#include "probe/files/directory_listing.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>

#include "probe/files/folder_walk.h"

namespace pellwin {

std::uint64_t allocatedBytes(const struct stat& info) {
  return info.st_blocks > 0 ? static_cast<std::uint64_t>(info.st_blocks) * 512 : 0;
}

namespace {
double seconds(const struct timespec& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}
}  // namespace

DirectoryEntry DirectoryEntry::from(std::string_view name, const struct stat& info) {
  const double modified = seconds(info.st_mtim);
  const double accessed = seconds(info.st_atim);
  return {.name = std::string(name),
          .isDirectory = S_ISDIR(info.st_mode),
          .isSymlink = S_ISLNK(info.st_mode),
          .isDataless = false,
          .allocatedBytes = pellwin::allocatedBytes(info),
          .device = static_cast<std::uint64_t>(info.st_dev),
          .inode = static_cast<std::uint64_t>(info.st_ino),
          .linkCount = static_cast<std::uint32_t>(
              std::min<std::uint64_t>(info.st_nlink, std::numeric_limits<std::uint32_t>::max())),
          .modified = modified,
          .accessed = accessed > 0 ? accessed : modified};
}

namespace DirectoryListing {

int read(int folderFd, std::vector<char>& buffer,
         const std::function<void(std::string_view name, const struct stat& info)>& each) {
  // getdents64 straight into a reused buffer: the walk's hot loop, with no DIR stream to
  // allocate per folder. 64 KiB holds a few hundred names per call.
  if (buffer.size() < 65536) buffer.resize(65536);
  while (true) {
    const ssize_t filled = ::getdents64(folderFd, buffer.data(), buffer.size());
    if (filled < 0) return errno;
    if (filled == 0) return 0;
    for (ssize_t offset = 0; offset < filled;) {
      const auto* record = reinterpret_cast<const struct dirent64*>(buffer.data() + offset);
      offset += record->d_reclen;
      const std::string_view name = record->d_name;
      if (name == "." || name == "..") continue;
      struct stat info {};
      if (::fstatat(folderFd, record->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) continue;
      each(name, info);
    }
  }
}

Result list(const std::string& path) {
  FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.valid()) {
    if (errno == EACCES || errno == EPERM) return Locked{};
    return Unreadable{.error = errno};
  }
  Entries result;
  std::vector<char> buffer;
  // A read error part-way keeps what was read, as readdir would.
  (void)read(folder.get(), buffer, [&](std::string_view name, const struct stat& info) {
    result.entries.push_back(DirectoryEntry::from(name, info));
  });
  return result;
}

}  // namespace DirectoryListing
}  // namespace pellwin
