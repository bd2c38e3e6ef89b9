#include "probe/files/folder_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace pellwin {

std::string describeError(int error) { return std::strerror(error); }

std::expected<FileDescriptor, int> openFolderWithoutLinks(std::string_view absolutePath,
                                                          int lastFlags) {
  if (absolutePath.empty() || absolutePath.front() != '/') return std::unexpected(EINVAL);
  std::vector<std::string> parts;
  for (std::size_t start = 0; start < absolutePath.size();) {
    std::size_t end = absolutePath.find('/', start);
    if (end == std::string_view::npos) end = absolutePath.size();
    if (end > start) parts.emplace_back(absolutePath.substr(start, end - start));
    start = end + 1;
  }
  constexpr int always = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor current(::open("/", (parts.empty() ? lastFlags : O_PATH) | always));
  if (!current.valid()) return std::unexpected(errno);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const int flags = (i + 1 == parts.size() ? lastFlags : O_PATH) | always;
    FileDescriptor next(::openat(current.get(), parts[i].c_str(), flags));
    if (!next.valid()) return std::unexpected(errno);
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

WalkStep reportFailure(const FolderWalkVisitor& visitor, const std::string& path, int error) {
  return visitor.failed ? visitor.failed(path, error) : WalkStep::skip;
}

// Reads every name of the folder before any is visited, so a visitor that removes entries does
// not disturb the listing.
std::expected<std::vector<std::string>, int> readNames(int folderFd) {
  const int copy = ::fcntl(folderFd, F_DUPFD_CLOEXEC, 0);
  if (copy < 0) return std::unexpected(errno);
  DIR* stream = ::fdopendir(copy);
  if (stream == nullptr) {
    const int error = errno;
    ::close(copy);
    return std::unexpected(error);
  }
  ::rewinddir(stream);
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(stream)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  const int error = errno;
  ::closedir(stream);
  if (error != 0) return std::unexpected(error);
  return names;
}

// Offers each entry of the open folder to the visitor; folders it wants entered are queued. A
// folder that cannot be read is an error value, for the caller to report.
std::expected<WalkStep, int> listFolder(int folderFd, Frame& frame,
                                        const FolderWalkVisitor& visitor) {
  auto names = readNames(folderFd);
  if (!names) return std::unexpected(names.error());
  for (const std::string& name : *names) {
    const std::string path = childPath(frame.relativePath, name);
    struct stat info {};
    if (::fstatat(folderFd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno == ENOENT) continue;
      if (reportFailure(visitor, path, errno) == WalkStep::stop) return WalkStep::stop;
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

std::expected<void, int> walkFolder(int rootFd, const FolderWalkVisitor& visitor) {
  FileDescriptor current(::fcntl(rootFd, F_DUPFD_CLOEXEC, 0));
  struct stat rootInfo {};
  if (!current.valid() || ::fstat(current.get(), &rootInfo) != 0) return std::unexpected(errno);

  std::vector<Frame> stack;
  stack.push_back({.name = "",
                   .relativePath = "",
                   .device = rootInfo.st_dev,
                   .inode = rootInfo.st_ino,
                   .pending = {}});
  const auto rootStep = listFolder(current.get(), stack.back(), visitor);
  if (!rootStep) return std::unexpected(rootStep.error());
  if (*rootStep == WalkStep::stop) return {};

  while (true) {
    Frame& top = stack.back();
    if (!top.pending.empty()) {
      Pending next = std::move(top.pending.back());
      top.pending.pop_back();
      const std::string path = childPath(top.relativePath, next.name);
      FileDescriptor child(::openat(current.get(), next.name.c_str(),
                                    O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      struct stat opened {};
      if (!child.valid() || ::fstat(child.get(), &opened) != 0 ||
          !sameFile(opened, next.info.st_dev, next.info.st_ino)) {
        // A folder replaced between listing and opening is not the one that was judged.
        const int error = child.valid() ? ESTALE : errno;
        if (reportFailure(visitor, path, error) == WalkStep::stop) return {};
        continue;
      }
      stack.push_back({.name = next.name,
                       .relativePath = path,
                       .device = opened.st_dev,
                       .inode = opened.st_ino,
                       .pending = {}});
      current = std::move(child);
      const auto step = listFolder(current.get(), stack.back(), visitor);
      if (!step && reportFailure(visitor, path, step.error()) == WalkStep::stop) return {};
      if (step && *step == WalkStep::stop) return {};
      continue;
    }
    if (stack.size() == 1) return {};
    const Frame done = std::move(stack.back());
    stack.pop_back();
    FileDescriptor parent(::openat(current.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat parentInfo {};
    if (!parent.valid() || ::fstat(parent.get(), &parentInfo) != 0) return std::unexpected(errno);
    if (!sameFile(parentInfo, stack.back().device, stack.back().inode))
      return std::unexpected(ESTALE);
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
  explicit TreeRemoval(dev_t device) : device_(device) {}

  WalkStep entry(int folderFd, const std::string& name, const std::string& path,
                 const struct stat& info) {
    if (!S_ISDIR(info.st_mode)) {
      unlinkIn(folderFd, name, 0, path);
      return WalkStep::skip;
    }
    if (info.st_dev != device_) {
      note("Another disk is mounted inside it, at " + path);
      return WalkStep::skip;
    }
    openUp(folderFd, name, info);
    return WalkStep::descend;
  }

  WalkStep leave(int parentFd, const std::string& name, const std::string& path) {
    unlinkIn(parentFd, name, AT_REMOVEDIR, path);
    return WalkStep::skip;
  }

  WalkStep failed(const std::string& path, int error) {
    note(describeError(error) + " (" + path + ")");
    return WalkStep::skip;
  }

  // A folder the user owns but cannot list or change is given owner rights so it can be emptied.
  static void openUp(int parentFd, const std::string& name, const struct stat& info) {
    if (info.st_uid == ::geteuid() && (info.st_mode & S_IRWXU) != S_IRWXU) {
      ::fchmodat(parentFd, name.c_str(), (info.st_mode & 07777) | S_IRWXU, 0);
    }
  }

  void unlinkIn(int folderFd, const std::string& name, int flags, const std::string& path) {
    if (::unlinkat(folderFd, name.c_str(), flags) == 0 || errno == ENOENT) return;
    if (errno == EACCES || errno == EPERM) {
      struct stat folder {};
      if (::fstat(folderFd, &folder) == 0 && folder.st_uid == ::geteuid() &&
          (folder.st_mode & S_IWUSR) == 0 &&
          ::fchmod(folderFd, (folder.st_mode & 07777) | S_IRWXU) == 0 &&
          ::unlinkat(folderFd, name.c_str(), flags) == 0) {
        return;
      }
    }
    // A folder left non-empty by an earlier problem repeats that problem in other words.
    if (errno == ENOTEMPTY && problem_) return;
    note(describeError(errno) + " (" + path + ")");
  }

  void note(std::string problem) {
    if (!problem_) problem_ = std::move(problem);
  }

  [[nodiscard]] const std::optional<std::string>& problem() const { return problem_; }

 private:
  dev_t device_;
  std::optional<std::string> problem_;
};

}  // namespace

std::expected<void, std::string> removeTree(int parentFd, const std::string& name) {
  struct stat info {};
  if (::fstatat(parentFd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return {};
    return std::unexpected(describeError(errno));
  }
  TreeRemoval removal(info.st_dev);
  if (!S_ISDIR(info.st_mode)) {
    removal.unlinkIn(parentFd, name, 0, name);
  } else {
    TreeRemoval::openUp(parentFd, name, info);
    FileDescriptor root(
        ::openat(parentFd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat opened {};
    if (!root.valid() || ::fstat(root.get(), &opened) != 0)
      return std::unexpected(describeError(errno));
    if (opened.st_dev != info.st_dev || opened.st_ino != info.st_ino) {
      return std::unexpected(std::string("It changed while Tovrin was removing it"));
    }
    const FolderWalkVisitor visitor{
        .entry = [&](int fd, const std::string& n, const std::string& p,
                     const struct stat& i) { return removal.entry(fd, n, name + "/" + p, i); },
        .leave = [&](int fd, const std::string& n,
                     const std::string& p) { return removal.leave(fd, n, name + "/" + p); },
        .failed = [&](const std::string& p,
                      int error) { return removal.failed(name + "/" + p, error); },
    };
    if (auto walked = walkFolder(root.get(), visitor); !walked)
      removal.failed(name, walked.error());
    removal.unlinkIn(parentFd, name, AT_REMOVEDIR, name);
  }
  if (removal.problem()) return std::unexpected(*removal.problem());
  return {};
}

}  // namespace pellwin
