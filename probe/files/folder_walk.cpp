#include "probe/files/folder_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

#include "probe/files/mount_point.h"

namespace pellwin {

std::expected<FileDescriptor, SystemError> openFolderWithoutLinks(std::string_view absolutePath,
                                                                  int lastFlags) {
  if (absolutePath.empty() || absolutePath.front() != '/') {
    return std::unexpected(
        SystemError{.operation = "open", .path = std::string(absolutePath), .code = EINVAL});
  }
  std::vector<std::string> parts;
  for (std::size_t start = 0; start < absolutePath.size();) {
    std::size_t end = absolutePath.find('/', start);
    if (end == std::string_view::npos) end = absolutePath.size();
    if (end > start) parts.emplace_back(absolutePath.substr(start, end - start));
    start = end + 1;
  }
  constexpr int always = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor current(::open("/", (parts.empty() ? lastFlags : O_PATH) | always));
  if (!current.valid()) return std::unexpected(SystemError::fromErrno("open", "/"));
  std::string reached;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const int flags = (i + 1 == parts.size() ? lastFlags : O_PATH) | always;
    reached += '/';
    reached += parts[i];
    FileDescriptor next(::openat(current.get(), parts[i].c_str(), flags));
    if (!next.valid()) return std::unexpected(SystemError::fromErrno("open", reached));
    current = std::move(next);
  }
  return current;
}

namespace {

struct Pending {
  std::string name;
  struct stat info {};
};

struct Frame {
  std::string name;
  std::string relativePath;
  dev_t device = 0;
  ino_t inode = 0;
  std::vector<Pending> pending;  // folders still to enter, last one first
};

bool sameFile(const struct stat& a, dev_t device, ino_t inode) {
  return a.st_dev == device && a.st_ino == inode;
}

std::string childPath(const std::string& folder, const std::string& name) {
  return folder.empty() ? name : folder + "/" + name;
}

WalkStep reportFailure(const FolderWalkVisitor& visitor, const SystemError& error) {
  return visitor.failed ? visitor.failed(error) : WalkStep::skip;
}

// Reads every name of the folder (at `path` below the root) before any is visited, so a visitor
// that removes entries does not disturb the listing.
std::expected<std::vector<std::string>, SystemError> readNames(int folderFd,
                                                               const std::string& path) {
  const int copy = ::fcntl(folderFd, F_DUPFD_CLOEXEC, 0);
  if (copy < 0) return std::unexpected(SystemError::fromErrno("open", path));
  DIR* stream = ::fdopendir(copy);
  if (stream == nullptr) {
    SystemError error = SystemError::fromErrno("open", path);
    ::close(copy);
    return std::unexpected(std::move(error));
  }
  ::rewinddir(stream);
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(stream)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  // readdir gives null both at the end and on failure; only errno tells them apart.
  const int error = errno;
  ::closedir(stream);
  if (error != 0) {
    return std::unexpected(SystemError{.operation = "read", .path = path, .code = error});
  }
  return names;
}

// Offers each entry of the open folder to the visitor; folders it wants entered are queued. A
// folder that cannot be read is an error value, for the caller to report.
std::expected<WalkStep, SystemError> listFolder(int folderFd, Frame& frame,
                                                const FolderWalkVisitor& visitor) {
  auto names = readNames(folderFd, frame.relativePath);
  if (!names) return std::unexpected(std::move(names.error()));
  for (const std::string& name : *names) {
    const std::string path = childPath(frame.relativePath, name);
    struct stat info {};
    if (::fstatat(folderFd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno == ENOENT) continue;
      if (reportFailure(visitor, SystemError::fromErrno("lstat", path)) == WalkStep::stop)
        return WalkStep::stop;
      continue;
    }
    const WalkStep step = visitor.entry(folderFd, name, path, info);
    if (step == WalkStep::stop) return WalkStep::stop;
    if (step == WalkStep::descend && S_ISDIR(info.st_mode)) frame.pending.push_back({name, info});
  }
  std::reverse(frame.pending.begin(), frame.pending.end());
  return WalkStep::skip;
}

}  // namespace

std::expected<void, SystemError> walkFolder(int rootFd, const FolderWalkVisitor& visitor) {
  FileDescriptor current(::fcntl(rootFd, F_DUPFD_CLOEXEC, 0));
  if (!current.valid()) return std::unexpected(SystemError::fromErrno("open", ""));
  struct stat rootInfo {};
  if (::fstat(current.get(), &rootInfo) != 0)
    return std::unexpected(SystemError::fromErrno("stat", ""));

  std::vector<Frame> stack;
  stack.push_back({.name = "",
                   .relativePath = "",
                   .device = rootInfo.st_dev,
                   .inode = rootInfo.st_ino,
                   .pending = {}});
  const auto rootStep = listFolder(current.get(), stack.back(), visitor);
  if (!rootStep) return std::unexpected(std::move(rootStep.error()));
  if (*rootStep == WalkStep::stop) return {};

  while (true) {
    Frame& top = stack.back();
    if (!top.pending.empty()) {
      Pending next = std::move(top.pending.back());
      top.pending.pop_back();
      const std::string path = childPath(top.relativePath, next.name);
      FileDescriptor child(::openat(current.get(), next.name.c_str(),
                                    O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      if (!child.valid()) {
        if (reportFailure(visitor, SystemError::fromErrno("open", path)) == WalkStep::stop)
          return {};
        continue;
      }
      struct stat opened {};
      if (::fstat(child.get(), &opened) != 0 ||
          !sameFile(opened, next.info.st_dev, next.info.st_ino)) {
        // A folder replaced between listing and opening is not the one that was judged.
        const SystemError replaced{.operation = "open", .path = path, .code = ESTALE};
        if (reportFailure(visitor, replaced) == WalkStep::stop) return {};
        continue;
      }
      stack.push_back({.name = next.name,
                       .relativePath = path,
                       .device = opened.st_dev,
                       .inode = opened.st_ino,
                       .pending = {}});
      current = std::move(child);
      const auto step = listFolder(current.get(), stack.back(), visitor);
      if (!step && reportFailure(visitor, step.error()) == WalkStep::stop) return {};
      if (step && *step == WalkStep::stop) return {};
      continue;
    }
    if (stack.size() == 1) return {};
    const Frame done = std::move(stack.back());
    stack.pop_back();
    // Going back up names the folder the walk returns to.
    const std::string& up = stack.back().relativePath;
    FileDescriptor parent(::openat(current.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent.valid()) return std::unexpected(SystemError::fromErrno("open", up));
    struct stat parentInfo {};
    if (::fstat(parent.get(), &parentInfo) != 0)
      return std::unexpected(SystemError::fromErrno("stat", up));
    if (!sameFile(parentInfo, stack.back().device, stack.back().inode)) {
      return std::unexpected(SystemError{.operation = "open", .path = up, .code = ESTALE});
    }
    current = std::move(parent);
    if (visitor.leave &&
        visitor.leave(current.get(), done.name, done.relativePath) == WalkStep::stop) {
      return {};
    }
  }
}

namespace {

// Removal that notes the first problem and goes on with the rest.
class TreeRemoval {
 public:
  TreeRemoval(dev_t device, const std::vector<FileIdentity>& kept) : device_(device), kept_(kept) {}

  WalkStep entry(int folderFd, const std::string& name, const std::string& path,
                 const struct stat& info) {
    if (!S_ISDIR(info.st_mode)) {
      unlinkIn(folderFd, name, 0, path);
      return WalkStep::skip;
    }
    if (info.st_dev != device_ || isMountPoint(folderFd, name)) {
      note(mountInsideRefusal(path));
      return WalkStep::skip;
    }
    if (std::ranges::find(kept_, FileIdentity::of(info)) != kept_.end()) {
      note("It holds " + name + ", which Tovrin keeps safe");
      return WalkStep::skip;
    }
    openUp(folderFd, name, info);
    return WalkStep::descend;
  }

  WalkStep leave(int parentFd, const std::string& name, const std::string& path) {
    unlinkIn(parentFd, name, AT_REMOVEDIR, path);
    return WalkStep::skip;
  }

  WalkStep failed(const SystemError& error) {
    noteFailure(error);
    return WalkStep::skip;
  }

  void noteFailure(const SystemError& error) { note(sentence(error, ErrorWording::reasonAndPath)); }

  // A folder the user owns but cannot list or change is given owner rights so it can be emptied.
  static void openUp(int parentFd, const std::string& name, const struct stat& info) {
    if (info.st_uid == ::geteuid() && (info.st_mode & S_IRWXU) != S_IRWXU) {
      ::fchmodat(parentFd, name.c_str(), (info.st_mode & 07777) | S_IRWXU, 0);
    }
  }

  void unlinkIn(int folderFd, const std::string& name, int flags, const std::string& path) {
    if (::unlinkat(folderFd, name.c_str(), flags) == 0 || errno == ENOENT) return;
    SystemError failure =
        SystemError::fromErrno((flags & AT_REMOVEDIR) != 0 ? "rmdir" : "unlink", path);
    if (failure.code == EACCES || failure.code == EPERM) {
      // The removal is tried once more in a folder the user owns but may not change, made
      // writable; whichever call fails last is the reason given.
      struct stat folder {};
      if (::fstat(folderFd, &folder) != 0) {
        failure.code = errno;
      } else if (folder.st_uid == ::geteuid() && (folder.st_mode & S_IWUSR) == 0) {
        if (::fchmod(folderFd, (folder.st_mode & 07777) | S_IRWXU) != 0) {
          failure.code = errno;
        } else if (::unlinkat(folderFd, name.c_str(), flags) == 0) {
          return;
        } else {
          failure.code = errno;
        }
      }
    }
    // A folder left non-empty by an earlier problem repeats that problem in other words.
    if (failure.code == ENOTEMPTY && problem_) return;
    note(sentence(failure, ErrorWording::reasonAndPath));
  }

  void note(std::string problem) {
    if (!problem_) problem_ = std::move(problem);
  }

  [[nodiscard]] const std::optional<std::string>& problem() const { return problem_; }

 private:
  dev_t device_;
  const std::vector<FileIdentity>& kept_;
  std::optional<std::string> problem_;
};

// The item itself failing needs no path: the words around the sentence name it.
std::unexpected<std::string> itemFailure(const char* operation, const std::string& name) {
  return std::unexpected(sentence(SystemError::fromErrno(operation, name), ErrorWording::reason));
}

}  // namespace

std::expected<void, std::string> removeTree(int parentFd, const std::string& name,
                                            const std::vector<FileIdentity>& kept) {
  struct stat info {};
  if (::fstatat(parentFd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return {};
    return itemFailure("lstat", name);
  }
  // Emptying a mount point would empty the disk or the folder bound there.
  if (S_ISDIR(info.st_mode) && isMountPoint(parentFd, name)) {
    return std::unexpected(std::string(mountPointRefusal));
  }
  TreeRemoval removal(info.st_dev, kept);
  if (!S_ISDIR(info.st_mode)) {
    removal.unlinkIn(parentFd, name, 0, name);
  } else {
    TreeRemoval::openUp(parentFd, name, info);
    FileDescriptor root(
        ::openat(parentFd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!root.valid()) return itemFailure("open", name);
    struct stat opened {};
    if (::fstat(root.get(), &opened) != 0) return itemFailure("stat", name);
    if (opened.st_dev != info.st_dev || opened.st_ino != info.st_ino) {
      return std::unexpected(std::string("It changed while Tovrin was removing it"));
    }
    const FolderWalkVisitor visitor{
        .entry = [&](int fd, const std::string& n, const std::string& p,
                     const struct stat& i) { return removal.entry(fd, n, name + "/" + p, i); },
        .leave = [&](int fd, const std::string& n,
                     const std::string& p) { return removal.leave(fd, n, name + "/" + p); },
        .failed =
            [&](const SystemError& error) {
              SystemError within = error;
              within.path = name + "/" + error.path;
              return removal.failed(within);
            },
    };
    if (auto walked = walkFolder(root.get(), visitor); !walked) {
      // The walk's own failure (the item's listing, or the way back up) is told as the item's.
      SystemError failure = std::move(walked.error());
      failure.path = name;
      removal.noteFailure(failure);
    }
    removal.unlinkIn(parentFd, name, AT_REMOVEDIR, name);
  }
  if (removal.problem()) return std::unexpected(*removal.problem());
  return {};
}

}  // namespace pellwin
