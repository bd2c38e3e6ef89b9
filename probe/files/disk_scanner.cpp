#include "probe/files/disk_scanner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <deque>
#include <unordered_map>
#include <vector>

#include "core/base/checked_math.h"
#include "core/base/path_text.h"
#include "core/space/folder_catalog.h"
#include "core/space/project_rules.h"
#include "probe/files/directory_listing.h"
#include "probe/files/folder_walk.h"
#include "probe/files/mount_point.h"

namespace pellwin {

std::string ScanError::description() const {
  if (kind == ScanErrorKind::cancelled) return "The scan was cancelled";
  return sentence(failure, ErrorWording::pathAfterReason);
}

std::string displayPath(std::string_view path, const std::optional<std::string>& stripPrefix) {
  if (stripPrefix && !stripPrefix->empty() && pathIsWithin(path, *stripPrefix)) {
    path.remove_prefix(stripPrefix->size());
  }
  if (path.empty()) return "/";
  return std::string(path);
}

namespace {

struct FileKey {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  friend bool operator==(const FileKey&, const FileKey&) = default;
};
struct FileKeyHash {
  std::size_t operator()(const FileKey& key) const {
    return std::hash<std::uint64_t>()(key.inode * 0x9E3779B97F4A7C15ull ^ key.device);
  }
};

// One entry of a listed folder, waiting for its turn in listing order. Names live back to back
// in the frame's `names`, so a listing costs two growing buffers rather than a string each.
struct Listed {
  std::size_t nameOffset = 0;
  std::size_t nameLength = 0;
  bool isDirectory = false;
  std::uint64_t bytes = 0;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  nlink_t links = 0;
  double lastUsed = 0;
};

// A folder being walked: its listing, the position in it, and the node being built.
struct Frame {
  FileDescriptor fd;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::string path;  // the real path
  std::string names;
  std::vector<Listed> listing;
  std::size_t next = 0;
  bool lost = false;  // could not be opened again after a deep descent
  SizeNode node;
};

// Folders keep their descriptors open so that a child is opened relative to its parent. Past
// this many open at once the shallowest is closed and opened again through ".." on the way
// back, so a tree nested thousands deep never runs out of descriptors.
constexpr std::size_t kMaxOpenFolders = 64;

// What a file or folder entry gives as its last-used date. A folder's own access time is
// rewritten by anything that lists it (this walk, updatedb, file managers), so its
// modification time says more; a file's access time moves only when it is read.
double lastUsedDate(const struct stat& info) {
  auto seconds = [](const struct timespec& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
  };
  const double modified = seconds(info.st_mtim);
  if (S_ISDIR(info.st_mode)) return modified;
  const double accessed = seconds(info.st_atim);
  return accessed > modified ? accessed : modified;
}

class Walk {
 public:
  Walk(const std::optional<std::string>& stripPrefix, const ScanProgressHandler& progress,
       std::stop_token stop)
      : stripPrefix_(stripPrefix), progress_(progress), stop_(std::move(stop)) {}

  std::expected<WalkResult, ScanError> run(const std::string& root);

 private:
  void enter(const std::string& path, std::uint64_t device, std::uint64_t inode,
             std::uint64_t ownBytes, double lastUsed, int parentFd, std::string_view name);
  [[nodiscard]] bool listInto(Frame& frame);
  void attachLocked(const std::string& path, double lastUsed);
  void handle(Frame& frame, const Listed& entry);
  void countFile(Frame& frame, const Listed& entry);
  void finish();
  void attach(Frame& parent, SizeNode child);
  void closeShallowestIfNeeded();
  void reopenParent(Frame& parent, Frame& child);
  SizeNode lockedNode(const std::string& path, double lastUsed) const;
  void emit(const std::string& path);

  std::optional<std::string> stripPrefix_;
  const ScanProgressHandler& progress_;
  std::stop_token stop_;
  std::uint64_t rootDevice_ = 0;
  std::unordered_map<FileKey, std::uint32_t, FileKeyHash> linksLeft_;
  std::int64_t items_ = 0;
  std::uint64_t bytes_ = 0;
  std::chrono::steady_clock::time_point lastEmit_ = std::chrono::steady_clock::time_point::min();
  // Grows to the deepest level and is reused below it; a deque, so growing never moves the
  // frames (and the names) that the levels above are still reading.
  std::deque<Frame> frames_;
  std::size_t depth_ = 0;  // frames in use
  std::size_t openFolders_ = 0;
  std::size_t shallowestOpen_ = 0;
  std::vector<char> buffer_;
  std::optional<SizeNode> result_;
};

SizeNode Walk::lockedNode(const std::string& path, double lastUsed) const {
  std::string shown = displayPath(path, stripPrefix_);
  return {.name = std::string(lastPathComponent(shown)),
          .path = std::move(shown),
          .bytes = 0,
          .isDirectory = true,
          .children = {},
          .restBytes = 0,
          .restCount = 0,
          .isLocked = true,
          .lastUsed = lastUsed,
          .category = StorageCategory::system,
          .markers = std::nullopt};
}

void Walk::emit(const std::string& path) {
  if (!progress_) return;
  const auto now = std::chrono::steady_clock::now();
  if (lastEmit_ != std::chrono::steady_clock::time_point::min() &&
      now - lastEmit_ < std::chrono::milliseconds(100)) {
    return;
  }
  lastEmit_ = now;
  progress_({.items = items_, .bytes = bytes_, .currentPath = displayPath(path, stripPrefix_)});
}

// Lists the frame's folder; false when the listing is incomplete.
bool Walk::listInto(Frame& frame) {
  frame.names.clear();
  frame.listing.clear();
  frame.next = 0;
  const auto listed = DirectoryListing::read(
      frame.fd.get(), frame.path, buffer_, [&](std::string_view name, const struct stat& info) {
        const bool isDirectory = S_ISDIR(info.st_mode);
        if (ProjectRules::isMarker(name, isDirectory)) {
          if (!frame.node.markers) frame.node.markers.emplace();
          frame.node.markers->emplace_back(name);
        }
        frame.listing.push_back({.nameOffset = frame.names.size(),
                                 .nameLength = name.size(),
                                 .isDirectory = isDirectory,
                                 .bytes = allocatedBytes(info),
                                 .device = static_cast<std::uint64_t>(info.st_dev),
                                 .inode = static_cast<std::uint64_t>(info.st_ino),
                                 .links = info.st_nlink,
                                 .lastUsed = lastUsedDate(info)});
        frame.names.append(name);
      });
  return listed.has_value();
}

void Walk::attachLocked(const std::string& path, double lastUsed) {
  if (depth_ == 0) {
    result_ = lockedNode(path, lastUsed);
  } else {
    attach(frames_[depth_ - 1], lockedNode(path, lastUsed));
  }
}

// Starts visiting a folder: a new frame whose node is complete once its listing is used up.
// A folder that cannot be opened, or listed in full, becomes a locked node of its parent at once.
void Walk::enter(const std::string& path, std::uint64_t device, std::uint64_t inode,
                 std::uint64_t ownBytes, double lastUsed, int parentFd, std::string_view name) {
  emit(path);
  const std::string nameText(name);
  FileDescriptor fd(parentFd < 0 ? ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)
                                 : ::openat(parentFd, nameText.c_str(),
                                            O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!fd.valid()) {
    // Private or vanished alike: the walk makes no difference between them.
    attachLocked(path, lastUsed);
    return;
  }
  if (frames_.size() == depth_) frames_.emplace_back();
  Frame& frame = frames_[depth_++];
  frame.fd = std::move(fd);
  frame.device = device;
  frame.inode = inode;
  frame.path = path;
  frame.lost = false;
  // The name and display path are set when the folder is finished, from `frame.path`, so that
  // a deep chain holds each long path once rather than twice.
  frame.node = {.name = {},
                .path = {},
                .bytes = ownBytes,
                .isDirectory = true,
                .children = {},
                .restBytes = 0,
                .restCount = 0,
                .isLocked = false,
                .lastUsed = lastUsed,
                .category = StorageCategory::other,
                .markers = std::nullopt};
  ++openFolders_;
  if (!listInto(frame)) {
    // Sizes added up from part of a folder would pass for the whole of it. Nothing of the
    // listing has been counted yet, so dropping the frame leaves no trace of it.
    frame.fd = FileDescriptor();
    --openFolders_;
    --depth_;
    attachLocked(path, lastUsed);
    return;
  }
  closeShallowestIfNeeded();
}

void Walk::closeShallowestIfNeeded() {
  while (openFolders_ > kMaxOpenFolders && shallowestOpen_ + 1 < depth_) {
    Frame& shallow = frames_[shallowestOpen_++];
    if (shallow.fd.valid()) {
      shallow.fd = FileDescriptor();
      --openFolders_;
    }
  }
}

void Walk::reopenParent(Frame& parent, Frame& child) {
  if (parent.fd.valid() || parent.lost) return;
  FileDescriptor up;
  if (child.fd.valid())
    up = FileDescriptor(::openat(child.fd.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  struct stat info {};
  if (up.valid() && ::fstat(up.get(), &info) == 0 &&
      static_cast<std::uint64_t>(info.st_dev) == parent.device &&
      static_cast<std::uint64_t>(info.st_ino) == parent.inode) {
    parent.fd = std::move(up);
    ++openFolders_;
  } else {
    // The folder moved while the walk was deeper down; what is left of it cannot be reached
    // by name, so its remaining folders are shown as private.
    parent.lost = true;
  }
  shallowestOpen_ = depth_ - 2;
}

void Walk::attach(Frame& parent, SizeNode child) {
  parent.node.bytes = checkedAdd(parent.node.bytes, child.bytes, "folder size");
  if (child.isLocked || child.bytes >= DiskScanner::keepBytes) {
    parent.node.children.push_back(std::move(child));
  } else {
    parent.node.restBytes = checkedAdd(parent.node.restBytes, child.bytes, "remainder size");
    parent.node.restCount += 1;
  }
}

void Walk::countFile(Frame& frame, const Listed& entry) {
  if (entry.links >= 2) {
    const FileKey key{.device = entry.device, .inode = entry.inode};
    auto [it, inserted] = linksLeft_.try_emplace(key, 0);
    if (!inserted) {
      // A further link of a file already counted.
      if (it->second > 0) --it->second;
      return;
    }
    it->second = static_cast<std::uint32_t>(std::min<nlink_t>(entry.links - 1, UINT32_MAX));
  }
  bytes_ = checkedAdd(bytes_, entry.bytes, "scanned bytes");
  frame.node.bytes = checkedAdd(frame.node.bytes, entry.bytes, "folder size");
  if (entry.bytes < DiskScanner::keepBytes) {
    frame.node.restBytes = checkedAdd(frame.node.restBytes, entry.bytes, "remainder size");
    frame.node.restCount += 1;
    return;
  }
  const std::string_view name(frame.names.data() + entry.nameOffset, entry.nameLength);
  std::string shown = displayPath(joinedPath(frame.path, name), stripPrefix_);
  frame.node.children.push_back({.name = std::string(name),
                                 .path = std::move(shown),
                                 .bytes = entry.bytes,
                                 .isDirectory = false,
                                 .children = {},
                                 .restBytes = 0,
                                 .restCount = 0,
                                 .isLocked = false,
                                 .lastUsed = entry.lastUsed,
                                 .category = StorageCategory::other,
                                 .markers = std::nullopt});
}

void Walk::handle(Frame& frame, const Listed& entry) {
  ++items_;
  // Only this volume is counted: a disk mounted inside is neither counted nor shown.
  if (entry.device != rootDevice_) return;
  if (!entry.isDirectory) {
    countFile(frame, entry);
    return;
  }
  const std::string_view name(frame.names.data() + entry.nameOffset, entry.nameLength);
  // A bind mount keeps the device number: it too is neither counted nor shown.
  if (!frame.lost && isMountPoint(frame.fd.get(), std::string(name))) return;
  bytes_ = checkedAdd(bytes_, entry.bytes, "scanned bytes");
  std::string path = joinedPath(frame.path, name);
  if (frame.lost) {
    attach(frame, lockedNode(path, entry.lastUsed));
    return;
  }
  enter(path, entry.device, entry.inode, entry.bytes, entry.lastUsed, frame.fd.get(), name);
}

void Walk::finish() {
  Frame& frame = frames_[depth_ - 1];
  SizeNode::sortChildren(frame.node.children);
  SizeNode node = std::move(frame.node);
  node.path = stripPrefix_ ? displayPath(frame.path, stripPrefix_) : std::move(frame.path);
  if (node.path.empty()) node.path.push_back('/');
  node.name = std::string(lastPathComponent(node.path));
  if (depth_ >= 2) reopenParent(frames_[depth_ - 2], frame);
  if (frame.fd.valid()) {
    frame.fd = FileDescriptor();
    --openFolders_;
  }
  --depth_;
  if (shallowestOpen_ > depth_) shallowestOpen_ = depth_;
  if (depth_ == 0) {
    result_ = std::move(node);
  } else {
    attach(frames_[depth_ - 1], std::move(node));
  }
}

std::expected<WalkResult, ScanError> Walk::run(const std::string& root) {
  struct stat info {};
  if (::stat(root.c_str(), &info) != 0) {
    return std::unexpected(ScanError{.kind = ScanErrorKind::rootNotFound,
                                     .failure = SystemError::fromErrno("stat", root)});
  }
  rootDevice_ = static_cast<std::uint64_t>(info.st_dev);
  if (stop_.stop_requested()) {
    return std::unexpected(ScanError{.kind = ScanErrorKind::cancelled, .failure = {}});
  }
  bytes_ = allocatedBytes(info);
  enter(root, rootDevice_, static_cast<std::uint64_t>(info.st_ino), allocatedBytes(info),
        static_cast<double>(info.st_mtim.tv_sec), -1, {});
  while (depth_ > 0) {
    Frame& frame = frames_[depth_ - 1];
    if (frame.next == frame.listing.size()) {
      finish();
      continue;
    }
    const Listed entry = frame.listing[frame.next++];
    if (entry.isDirectory && entry.device == rootDevice_ && stop_.stop_requested()) {
      return std::unexpected(ScanError{.kind = ScanErrorKind::cancelled, .failure = {}});
    }
    handle(frame, entry);
  }
  WalkResult result{.tree = std::move(*result_), .sharesLinksOutside = false};
  for (const auto& [key, left] : linksLeft_) {
    if (left > 0) {
      result.sharesLinksOutside = true;
      break;
    }
  }
  return result;
}

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

void setCategories(SizeNode& tree, const std::string& home) {
  tree.forEachMutable([&](SizeNode& node) {
    node.category =
        node.isLocked ? StorageCategory::system : FolderCatalog::category(node.path, home);
  });
}

}  // namespace

std::expected<WalkResult, ScanError> walkTree(const std::string& root,
                                              const std::optional<std::string>& stripPrefix,
                                              const ScanProgressHandler& progress,
                                              std::stop_token stop) {
  Walk walk(stripPrefix, progress, std::move(stop));
  return walk.run(withoutTrailingSlashes(root));
}

std::expected<WalkResult, ScanError> DiskScanner::scan(
    const std::string& root, const std::optional<std::string>& stripPrefix,
    const ScanProgressHandler& progress, std::stop_token stop) const {
  auto result = walkTree(root, stripPrefix, progress, std::move(stop));
  if (result) setCategories(result->tree, home_);
  return result;
}

std::expected<WalkResult, ScanError> DiskScanner::rescan(
    const SizeNode& folder, const std::optional<std::string>& stripPrefix,
    const ScanProgressHandler& progress, std::stop_token stop) const {
  std::string real = folder.path;
  if (stripPrefix && !stripPrefix->empty()) {
    real = folder.path == "/" ? *stripPrefix : *stripPrefix + folder.path;
  }
  return scan(real, stripPrefix, progress, std::move(stop));
}

}  // namespace pellwin
