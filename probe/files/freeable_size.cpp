#include "probe/files/freeable_size.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "probe/file_descriptor.h"
#include "probe/files/directory_listing.h"
#include "probe/files/mount_point.h"

namespace pellwin {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::uint64_t allocated(const struct stat& info) {
  return info.st_blocks > 0 ? static_cast<std::uint64_t>(info.st_blocks) * 512 : 0;
}

double modified(const struct stat& info) {
  return static_cast<double>(info.st_mtim.tv_sec) + static_cast<double>(info.st_mtim.tv_nsec) / 1e9;
}

// One walk's running totals.
class Tally {
 public:
  explicit Tally(dev_t device) : device_(device) {}

  void count(const struct stat& info) {
    newest_ = std::max(newest_, modified(info));
    if (S_ISDIR(info.st_mode) || info.st_nlink < 2) {
      add(allocated(info));
      return;
    }
    Links& links = links_[{info.st_dev, info.st_ino}];
    links.bytes = allocated(info);
    links.total = info.st_nlink;
    ++links.seen;
  }

  [[nodiscard]] bool onVolume(const struct stat& info) const { return info.st_dev == device_; }

  [[nodiscard]] FreeableSize result() {
    for (const auto& [key, links] : links_) {
      if (links.seen >= links.total) add(links.bytes);
    }
    return FreeableSize{.bytes = bytes_, .newestModified = newest_};
  }

 private:
  struct Links {
    std::uint64_t bytes = 0;
    nlink_t total = 0;
    nlink_t seen = 0;
  };
  void add(std::uint64_t more) {
    bytes_ = more > std::numeric_limits<std::uint64_t>::max() - bytes_
                 ? std::numeric_limits<std::uint64_t>::max()
                 : bytes_ + more;
  }

  dev_t device_;
  std::uint64_t bytes_ = 0;
  double newest_ = 0;
  std::map<std::pair<dev_t, ino_t>, Links> links_;
};

// A folder on the way down: who it is, and its sub-folders still to visit.
struct Frame {
  dev_t device = 0;
  ino_t inode = 0;
  std::string path;
  std::vector<std::string> folders;
  std::size_t next = 0;
};

// Counts every entry of the open folder and returns its sub-folders on the same volume.
Frame readFolder(int fd, std::string path, const struct stat& self, Tally& tally,
                 std::vector<char>& buffer) {
  Frame frame{.device = self.st_dev, .inode = self.st_ino, .path = std::move(path)};
  // A folder read only in part counts what could be read, as `measure` promises: the figure
  // estimates what cleaning would free, and a part is closer to it than nothing.
  std::ignore = DirectoryListing::read(
      fd, frame.path, buffer, [&](std::string_view name, const struct stat& info) {
        if (S_ISDIR(info.st_mode)) {
          // A mount point, of another disk or a bind mount
          // of a folder: not ours to count.
          if (!tally.onVolume(info) || isMountPoint(fd, std::string(name))) return;
          frame.folders.emplace_back(name);
        }
        tally.count(info);
      });
  return frame;
}

// Walks depth first holding one descriptor at a time, so that neither depth nor the limit on
// open files stops it; going back up re-opens ".." and checks it is the folder it came from.
void walk(FileDescriptor fd, const std::string& path, const struct stat& root, Tally& tally) {
  std::vector<char> buffer;
  std::vector<Frame> frames;
  frames.push_back(readFolder(fd.get(), path, root, tally, buffer));
  while (!frames.empty()) {
    Frame& top = frames.back();
    if (top.next < top.folders.size()) {
      const std::string& name = top.folders[top.next++];
      FileDescriptor child(::openat(fd.get(), name.c_str(), folderFlags));
      struct stat info {};
      if (!child.valid() || ::fstat(child.get(), &info) != 0 || !tally.onVolume(info)) continue;
      fd = std::move(child);
      std::string childPath = top.path + "/" + name;
      frames.push_back(readFolder(fd.get(), std::move(childPath), info, tally, buffer));
      continue;
    }
    frames.pop_back();
    if (frames.empty()) break;
    FileDescriptor parent(::openat(fd.get(), "..", folderFlags));
    struct stat info {};
    if (!parent.valid() || ::fstat(parent.get(), &info) != 0 ||
        info.st_dev != frames.back().device || info.st_ino != frames.back().inode) {
      return;  // the tree moved under the walk; keep what was counted
    }
    fd = std::move(parent);
  }
}

}  // namespace

std::optional<FreeableSize> FreeableSize::measure(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return std::nullopt;
  Tally tally(info.st_dev);
  tally.count(info);
  if (S_ISDIR(info.st_mode)) {
    FileDescriptor fd(::open(path.c_str(), folderFlags));
    struct stat opened {};
    // The folder must still be the one looked at, not a link swapped in since.
    if (fd.valid() && ::fstat(fd.get(), &opened) == 0 && opened.st_dev == info.st_dev &&
        opened.st_ino == info.st_ino) {
      walk(std::move(fd), path, opened, tally);
    }
  }
  return tally.result();
}

}  // namespace pellwin
