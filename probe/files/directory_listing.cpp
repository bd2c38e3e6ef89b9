#include "probe/files/directory_listing.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

#include "core/base/path_text.h"
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

std::expected<void, SystemError> read(
    int folderFd, const std::string& folderPath, std::vector<char>& buffer,
    const std::function<void(std::string_view name, const struct stat& info)>& each) {
  // getdents64 straight into a reused buffer: the walk's hot loop, with no DIR stream to
  // allocate per folder. 64 KiB holds a few hundred names per call.
  if (buffer.size() < 65536) buffer.resize(65536);
  std::optional<SystemError> passedOver;
  while (true) {
    const ssize_t filled = ::getdents64(folderFd, buffer.data(), buffer.size());
    if (filled < 0) return std::unexpected(SystemError::fromErrno("read", folderPath));
    if (filled == 0) break;
    for (ssize_t offset = 0; offset < filled;) {
      const auto* record = reinterpret_cast<const struct dirent64*>(buffer.data() + offset);
      offset += record->d_reclen;
      const std::string_view name = record->d_name;
      if (name == "." || name == "..") continue;
      struct stat info {};
      if (::fstatat(folderFd, record->d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
        // A folder that may be read but not searched (r without x) lists every name and
        // lets none be examined: EACCES here, not at the open.
        const int code = errno;
        if (code != ENOENT && !passedOver) {
          passedOver =
              SystemError{.operation = "lstat", .path = joinedPath(folderPath, name), .code = code};
        }
        continue;
      }
      each(name, info);
    }
  }
  if (passedOver) return std::unexpected(std::move(*passedOver));
  return {};
}

Result list(const std::string& path) {
  FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.valid()) {
    if (errno == EACCES || errno == EPERM) return Locked{};
    return Unreadable{.error = SystemError::fromErrno("open", path)};
  }
  Entries result;
  std::vector<char> buffer;
  // A read error part-way keeps what was read, as readdir would, and says so.
  auto listed =
      read(folder.get(), path, buffer, [&](std::string_view name, const struct stat& info) {
        result.entries.push_back(DirectoryEntry::from(name, info));
      });
  if (!listed) result.incomplete = std::move(listed.error());
  return result;
}

}  // namespace DirectoryListing
}  // namespace pellwin
