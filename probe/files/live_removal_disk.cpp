#include "probe/files/live_removal_disk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

#include "probe/files/folder_walk.h"
#include "probe/files/mount_point.h"

namespace pellwin {

namespace {

FileIdentity identityOf(const struct stat& info) { return FileIdentity::of(info); }

}  // namespace

std::expected<RemovalDisk::Entry, SystemError> LiveRemovalDisk::inspect(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0)
    return std::unexpected(SystemError::fromErrno("lstat", path));
  return Entry{.isSymlink = S_ISLNK(info.st_mode),
               .isDirectory = S_ISDIR(info.st_mode),
               .isMountPoint = S_ISDIR(info.st_mode) && isMountPoint(path),
               .identity = identityOf(info)};
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
                .isMountPoint = info.st_dev != rootInfo.st_dev || isMountPoint(folderFd, name),
                .identity = identityOf(info)};
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

std::expected<std::string, std::string> LiveRemovalDisk::moveToTrash(const std::string& path,
                                                                     const Identity& expected) {
  auto moved = trash_.moveToTrash(path, expected);
  if (!moved) return std::unexpected(moved.error());
  // The data home may be reached through a link; what is searched after the move must not be.
  const std::string trash = resolve(moved->trashDirectory).value_or(moved->trashDirectory);
  return trash + "/files/" + moved->name;
}

std::expected<void, std::string> LiveRemovalDisk::putBack(const std::string& trashed,
                                                          const std::string& path) {
  const std::size_t slash = trashed.rfind('/');
  const std::string files = trashed.substr(0, slash == std::string::npos ? 0 : slash);
  if (slash == std::string::npos || !files.ends_with("/files")) {
    return std::unexpected(
        sentence({.operation = "rename", .path = trashed, .code = EINVAL}, ErrorWording::reason));
  }
  return FreedesktopTrash::putBack({.trashDirectory = files.substr(0, files.size() - 6),
                                    .name = trashed.substr(slash + 1),
                                    .originalPath = path,
                                    .deletionDate = {}});
}

std::expected<void, std::string> LiveRemovalDisk::removeForGood(const std::string& path,
                                                                const Identity& expected,
                                                                const std::vector<Identity>& kept) {
  const std::size_t slash = path.rfind('/');
  if (path.empty() || path.front() != '/' || slash + 1 >= path.size()) {
    return std::unexpected(
        sentence({.operation = "unlink", .path = path, .code = EINVAL}, ErrorWording::reason));
  }
  auto parent = openFolderWithoutLinks(slash == 0 ? "/" : path.substr(0, slash), O_PATH);
  if (!parent) return std::unexpected(sentence(parent.error(), ErrorWording::reason));
  const std::string name = path.substr(slash + 1);
  struct stat info {};
  if (::fstatat(parent->get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
      identityOf(info) != expected) {
    return std::unexpected(std::string("It changed while Tovrin was removing it"));
  }
  return removeTree(parent->get(), name, kept);
}

}  // namespace pellwin
