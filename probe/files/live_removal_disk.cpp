#include "probe/files/live_removal_disk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

#include "probe/files/folder_walk.h"
#include "probe/files/mount_point.h"

namespace pellwin {

std::expected<RemovalDisk::Entry, SystemError> LiveRemovalDisk::inspect(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0)
    return std::unexpected(SystemError::fromErrno("lstat", path));
  return Entry{.isSymlink = S_ISLNK(info.st_mode),
               .isDirectory = S_ISDIR(info.st_mode),
               .isMountPoint = S_ISDIR(info.st_mode) && isMountPoint(path)};
}

std::optional<std::string> LiveRemovalDisk::resolve(const std::string& path) {
  char* resolved = ::realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return std::nullopt;
  std::string out = resolved;
  std::free(resolved);
  return out;
}

std::expected<std::optional<RemovalDisk::Subfolder>, SystemError> LiveRemovalDisk::findSubfolder(
    const std::string& folder, const std::function<bool(const Subfolder&)>& isProtected) {
  auto root = openFolderWithoutLinks(folder, O_RDONLY);
  if (!root) return std::unexpected(std::move(root.error()));
  struct stat rootInfo {};
  if (::fstat(root->get(), &rootInfo) != 0)
    return std::unexpected(SystemError::fromErrno("stat", folder));

  std::optional<Subfolder> found;
  const std::string base = folder.ends_with('/') ? folder : folder + "/";
  const FolderWalkVisitor visitor{
      .entry =
          [&](int folderFd, const std::string& name, const std::string& relative,
              const struct stat& info) {
            if (!S_ISDIR(info.st_mode)) return WalkStep::skip;
            Subfolder subfolder{
                .path = base + relative,
                .name = name,
                .isMountPoint = info.st_dev != rootInfo.st_dev || isMountPoint(folderFd, name)};
            if (isProtected(subfolder)) {
              found = std::move(subfolder);
              return WalkStep::stop;
            }
            return WalkStep::descend;
          },
      .leave = nullptr,
      .failed = nullptr,
  };
  if (auto walked = walkFolder(root->get(), visitor); !walked) {
    SystemError failure = std::move(walked.error());
    failure.path = failure.path.empty() ? folder : base + failure.path;
    return std::unexpected(std::move(failure));
  }
  return found;
}

std::expected<void, std::string> LiveRemovalDisk::moveToTrash(const std::string& path) {
  auto moved = trash_.moveToTrash(path);
  if (!moved) return std::unexpected(moved.error());
  return {};
}

std::expected<void, std::string> LiveRemovalDisk::removeForGood(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (path.empty() || path.front() != '/' || slash + 1 >= path.size()) {
    return std::unexpected(
        sentence({.operation = "unlink", .path = path, .code = EINVAL}, ErrorWording::reason));
  }
  auto parent = openFolderWithoutLinks(slash == 0 ? "/" : path.substr(0, slash), O_PATH);
  if (!parent) return std::unexpected(sentence(parent.error(), ErrorWording::reason));
  return removeTree(parent->get(), path.substr(slash + 1));
}

}  // namespace pellwin
