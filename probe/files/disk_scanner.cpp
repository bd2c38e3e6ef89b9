#include "probe/files/disk_scanner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <deque>
#include <memory>
#include <thread>
#include <unordered_map>
#include <vector>

#include "core/base/checked_math.h"
#include "core/base/path_text.h"
#include "core/space/folder_catalog.h"
#include "core/space/node_path.h"
#include "probe/files/directory_listing.h"
#include "probe/files/folder_prefetch.h"
#include "probe/files/walk_listing.h"
#include "probe/files/walk_readers.h"

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

// A folder being walked: its listing, the position in it, and the node being built.
struct Frame {
  std::shared_ptr<const FileDescriptor> fd;
  std::uint64_t inode = 0;
  // Real and displayed paths, each sharing its parent's (the same one without a strip prefix),
  // so a deep chain of frames holds every name once.
  NodePath real;
  NodePath display;
  WalkListing listing;
  std::size_t next = 0;
  // Entries before this one have had their prefetch asked for, when they are folders.
  std::size_t requested = 0;
  std::size_t foldersLeft = 0;  // in `listing`, not yet entered
  // Listings asked for ahead, by index into `listing`, in listing order; the first `taken`
  // are used. A vector rather than a deque: a deque allocates even when empty, once a level.
  FolderPrefetch::Tickets tickets;
  std::size_t taken = 0;
  bool lost = false;  // could not be opened again after a deep descent
  SizeNode node;
};

// Folders keep their descriptors open so that a child is opened relative to its parent. Past
// this many open at once the shallowest is closed and opened again through ".." on the way
// back, so a tree nested thousands deep never runs out of descriptors.
constexpr std::size_t kMaxOpenFolders = 64;

// How many listings may be asked for ahead of the walk, per reading thread: enough to keep
// every thread busy, few enough that listings read early take little memory.
constexpr std::size_t kRequestsPerThread = 16;
// How far up from the folder being walked listings are asked for.
constexpr std::size_t kRequestLevels = 16;
// Folders of the folder being walked asked for ahead of the walk even past the limit.
constexpr std::size_t kNextFolders = 8;

class Walk {
 public:
  Walk(const std::optional<std::string>& stripPrefix, const ScanProgressHandler& progress,
       std::stop_token stop, std::size_t readerThreads)
      : stripPrefix_(stripPrefix),
        progress_(progress),
        stop_(std::move(stop)),
        readerThreads_(readerThreads) {}

  std::expected<WalkResult, ScanError> run(const std::string& root);

 private:
  void enter(NodePath real, NodePath display, std::uint64_t inode, std::uint64_t ownBytes,
             double lastUsed, FolderPrefetch::Taken taken);
  [[nodiscard]] NodePath displayOf(const NodePath& real, const Frame& parent,
                                   std::string_view name) const;
  [[nodiscard]] FolderPrefetch::Taken listingOf(Frame& frame, std::size_t index,
                                                std::string_view name);
  void requestAhead();
  void attachLocked(const NodePath& display, double lastUsed);
  void handle(Frame& frame, std::size_t index);
  void countFile(Frame& frame, const WalkEntry& entry);
  void finish();
  void attach(Frame& parent, SizeNode child);
  void closeShallowestIfNeeded();
  void reopenParent(Frame& parent, Frame& child);
  SizeNode lockedNode(const NodePath& display, double lastUsed) const;
  void emit(const NodePath& display);

  std::optional<std::string> stripPrefix_;
  // Whether a displayed path is its folder's displayed path and a name: always, unless the root
  // lies above the strip prefix, so that only some paths below it lose the prefix.
  bool displayJoins_ = true;
  const ScanProgressHandler& progress_;
  std::stop_token stop_;
  std::size_t readerThreads_;
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
  // Made once the root is known; destroyed first, so its threads end before anything they
  // might still be reading for goes away.
  std::optional<FolderPrefetch> prefetch_;
};

// A node's name: the name its path added to its folder's, else the last component of the text.
std::string nameOf(const NodePath& path) {
  if (path.lastAdded().size() < path.size()) return std::string(path.lastAdded());
  return std::string(lastPathComponent(path.str()));
}

SizeNode Walk::lockedNode(const NodePath& display, double lastUsed) const {
  return {.name = nameOf(display),
          .path = display,
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

void Walk::emit(const NodePath& display) {
  if (!progress_) return;
  const auto now = std::chrono::steady_clock::now();
  if (lastEmit_ != std::chrono::steady_clock::time_point::min() &&
      now - lastEmit_ < std::chrono::milliseconds(100)) {
    return;
  }
  lastEmit_ = now;
  progress_({.items = items_, .bytes = bytes_, .currentPath = display.str()});
}

void Walk::attachLocked(const NodePath& display, double lastUsed) {
  if (depth_ == 0) {
    result_ = lockedNode(display, lastUsed);
  } else {
    attach(frames_[depth_ - 1], lockedNode(display, lastUsed));
  }
}

NodePath Walk::displayOf(const NodePath& real, const Frame& parent, std::string_view name) const {
  if (!stripPrefix_) return real;
  if (displayJoins_) return NodePath::inFolder(parent.display, name);
  return NodePath(displayPath(real.str(), stripPrefix_));
}

// The listing of the folder at `index` in the frame: read ahead when it was asked for, else
// read now.
FolderPrefetch::Taken Walk::listingOf(Frame& frame, std::size_t index, std::string_view name) {
  if (frame.taken < frame.tickets.size() && frame.tickets[frame.taken].first == index) {
    auto ticket = std::move(frame.tickets[frame.taken++].second);
    return prefetch_->take(*ticket, buffer_);
  }
  frame.requested = std::max(frame.requested, index + 1);
  return {.listing = listForWalk(frame.fd->get(), std::string(name), rootDevice_, buffer_),
          .ahead = {}};
}

// Asks the reading threads for the folders the walk will enter next. The next few of the folder
// being walked are asked for whatever the limit: with the threads reading far ahead elsewhere,
// the walk otherwise read two folders in three itself, each a wait on the disk when cold, and a
// cold scan took half as long again. The hand-overs cost a scan from the kernel's caches about
// a tenth more; the cold scan is the one a user waits for. Never a folder's last one, though:
// nothing else in it could be read alongside, and handing it over costs a wake-up each way,
// which down a chain of single folders made the walk four times slower. Then, within the limit,
// more of the deepest frame's and of the frames above it.
void Walk::requestAhead() {
  if (!prefetch_ || prefetch_->threads() == 0) return;
  std::vector<FolderPrefetch::Request> requests;
  std::vector<std::pair<Frame*, std::size_t>> askedBy;  // the frame and index of each request
  // Asks for the frame's folders from where asking stopped, while `more` says so.
  const auto ask = [&](std::size_t level, const auto& more) {
    Frame& frame = frames_[level];
    if (frame.lost || !frame.fd) return;
    std::size_t i = std::max(frame.requested, frame.next);
    for (; i < frame.listing.entries.size() && more(); ++i) {
      const WalkEntry& entry = frame.listing.entries[i];
      if (entry.kind != WalkEntry::Kind::folder) continue;
      requests.push_back({.parent = frame.fd,
                          .name = std::string(frame.listing.name(entry)),
                          .rank = {.depth = level, .index = i}});
      askedBy.emplace_back(&frame, i);
    }
    frame.requested = i;
  };
  const Frame& deepest = frames_[depth_ - 1];
  if (deepest.foldersLeft >= 2) {
    ask(depth_ - 1,
        [&] { return deepest.tickets.size() - deepest.taken + requests.size() < kNextFolders; });
  }
  const std::size_t limit = prefetch_->threads() * kRequestsPerThread;
  // Topping up only once half has been used keeps each thread busy with several folders per
  // wake-up; waking one for each folder cost a fifth of a warm walk's time.
  if (prefetch_->outstanding() <= limit / 2) {
    const auto underLimit = [&] { return prefetch_->outstanding() + requests.size() < limit; };
    for (std::size_t level = depth_; level-- > 0 && level + kRequestLevels >= depth_;) {
      if (!underLimit()) break;
      ask(level, underLimit);
    }
  }
  auto tickets = prefetch_->request(std::move(requests));
  for (std::size_t k = 0; k < tickets.size(); ++k) {
    askedBy[k].first->tickets.emplace_back(askedBy[k].second, std::move(tickets[k]));
  }
}

// Starts visiting a folder, whose progress was reported before it was read: a new frame whose node
// is complete once its listing is used up. A folder that could not be opened, or listed in full,
// becomes a locked node of its parent at once; nothing of its listing has been counted, so it
// leaves no other trace.
void Walk::enter(NodePath real, NodePath display, std::uint64_t inode, std::uint64_t ownBytes,
                 double lastUsed, FolderPrefetch::Taken taken) {
  WalkListing& listing = taken.listing;
  if (!listing.complete) {
    attachLocked(display, lastUsed);
    return;
  }
  if (frames_.size() == depth_) frames_.emplace_back();
  Frame& frame = frames_[depth_++];
  frame.fd = std::move(listing.folder);
  frame.inode = inode;
  frame.real = std::move(real);
  frame.display = std::move(display);
  frame.next = 0;
  // A thread that read the folder may already have asked for every folder in it.
  frame.requested = taken.ahead.empty() ? 0 : listing.entries.size();
  frame.foldersLeft = static_cast<std::size_t>(
      std::ranges::count(listing.entries, WalkEntry::Kind::folder, &WalkEntry::kind));
  frame.tickets = std::move(taken.ahead);
  frame.taken = 0;
  frame.lost = false;
  // The name and display path are set when the folder is finished, from the frame.
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
                .markers = std::move(listing.markers)};
  frame.listing = std::move(listing);
  ++openFolders_;
  closeShallowestIfNeeded();
  requestAhead();
}

void Walk::closeShallowestIfNeeded() {
  while (openFolders_ > kMaxOpenFolders && shallowestOpen_ + 1 < depth_) {
    Frame& shallow = frames_[shallowestOpen_++];
    if (shallow.fd) {
      // Listings asked for below it still hold it open until they are read.
      shallow.fd.reset();
      --openFolders_;
    }
  }
}

void Walk::reopenParent(Frame& parent, Frame& child) {
  if (parent.fd || parent.lost) return;
  FileDescriptor up;
  if (child.fd)
    up = FileDescriptor(::openat(child.fd->get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  struct stat info {};
  if (up.valid() && ::fstat(up.get(), &info) == 0 &&
      static_cast<std::uint64_t>(info.st_dev) == rootDevice_ &&
      static_cast<std::uint64_t>(info.st_ino) == parent.inode) {
    parent.fd = std::make_shared<const FileDescriptor>(std::move(up));
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

void Walk::countFile(Frame& frame, const WalkEntry& entry) {
  if (entry.links >= 2) {
    const FileKey key{.device = rootDevice_, .inode = entry.inode};
    auto [it, inserted] = linksLeft_.try_emplace(key, 0);
    if (!inserted) {
      // A further link of a file already counted.
      if (it->second > 0) --it->second;
      return;
    }
    it->second = entry.links - 1;
  }
  bytes_ = checkedAdd(bytes_, entry.bytes, "scanned bytes");
  frame.node.bytes = checkedAdd(frame.node.bytes, entry.bytes, "folder size");
  if (entry.bytes < DiskScanner::keepBytes) {
    frame.node.restBytes = checkedAdd(frame.node.restBytes, entry.bytes, "remainder size");
    frame.node.restCount += 1;
    return;
  }
  const std::string_view name = frame.listing.name(entry);
  frame.node.children.push_back(
      {.name = std::string(name),
       .path = displayOf(NodePath::inFolder(frame.real, name), frame, name),
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

void Walk::handle(Frame& frame, std::size_t index) {
  ++items_;
  const WalkEntry& entry = frame.listing.entries[index];
  switch (entry.kind) {
    case WalkEntry::Kind::leftOut: return;
    case WalkEntry::Kind::file: countFile(frame, entry); return;
    case WalkEntry::Kind::folder: break;
  }
  --frame.foldersLeft;
  bytes_ = checkedAdd(bytes_, entry.bytes, "scanned bytes");
  const std::string_view name = frame.listing.name(entry);
  NodePath real = NodePath::inFolder(frame.real, name);
  NodePath display = displayOf(real, frame, name);
  if (frame.lost) {
    // A listing read ahead through the old descriptor is not used: what is left of a moved
    // folder is shown as private, however far the reading got.
    if (frame.taken < frame.tickets.size() && frame.tickets[frame.taken].first == index) {
      const auto unused = prefetch_->take(*frame.tickets[frame.taken++].second, buffer_);
    }
    attach(frame, lockedNode(display, entry.lastUsed));
    return;
  }
  emit(display);
  FolderPrefetch::Taken taken = listingOf(frame, index, name);
  enter(std::move(real), std::move(display), entry.inode, entry.bytes, entry.lastUsed,
        std::move(taken));
}

void Walk::finish() {
  Frame& frame = frames_[depth_ - 1];
  SizeNode::sortChildren(frame.node.children);
  SizeNode node = std::move(frame.node);
  node.path = std::move(frame.display);
  node.name = nameOf(node.path);
  frame.real = {};
  if (depth_ >= 2) reopenParent(frames_[depth_ - 2], frame);
  if (frame.fd) {
    frame.fd.reset();
    --openFolders_;
  }
  frame.listing = {};
  frame.tickets.clear();
  --depth_;
  if (shallowestOpen_ > depth_) shallowestOpen_ = depth_;
  if (depth_ == 0) {
    result_ = std::move(node);
  } else {
    attach(frames_[depth_ - 1], std::move(node));
    requestAhead();
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
  prefetch_.emplace(readerThreads_, rootDevice_, readerThreads_ * kRequestsPerThread);
  bytes_ = allocatedBytes(info);
  if (stripPrefix_ && !pathIsWithin(root, *stripPrefix_) && pathIsWithin(*stripPrefix_, root)) {
    displayJoins_ = false;
  }
  NodePath display(displayPath(root, stripPrefix_));
  emit(display);
  enter(NodePath(root), std::move(display), static_cast<std::uint64_t>(info.st_ino),
        allocatedBytes(info), static_cast<double>(info.st_mtim.tv_sec),
        {.listing = listForWalk(AT_FDCWD, root, rootDevice_, buffer_), .ahead = {}});
  while (depth_ > 0) {
    Frame& frame = frames_[depth_ - 1];
    if (frame.next == frame.listing.entries.size()) {
      finish();
      continue;
    }
    const std::size_t index = frame.next++;
    if (frame.listing.entries[index].kind == WalkEntry::Kind::folder && stop_.stop_requested()) {
      return std::unexpected(ScanError{.kind = ScanErrorKind::cancelled, .failure = {}});
    }
    handle(frame, index);
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

// Each node's category follows from its folder's trail and its own name, so a deep tree costs
// each name once; a node whose path is not its folder's path and a name is looked up whole.
void setCategories(SizeNode& tree, const std::string& home) {
  struct Pending {
    SizeNode* node;
    const SizeNode* parent;
    const FolderCatalog::CategoryTrail* parentTrail;
  };
  // One trail per folder with children, kept until the end: a deque never moves them.
  std::deque<FolderCatalog::CategoryTrail> trails;
  std::vector<Pending> pending{{&tree, nullptr, nullptr}};
  while (!pending.empty()) {
    const Pending at = pending.back();
    pending.pop_back();
    SizeNode& node = *at.node;
    FolderCatalog::CategoryTrail trail =
        at.parentTrail != nullptr && node.path.isInFolder(at.parent->path)
            ? at.parentTrail->below(node.path.lastAdded())
            : FolderCatalog::CategoryTrail(node.path.str(), home);
    node.category = node.isLocked ? StorageCategory::system : trail.category();
    if (node.children.empty()) continue;
    trails.push_back(std::move(trail));
    for (auto it = node.children.rbegin(); it != node.children.rend(); ++it) {
      pending.push_back({&*it, &node, &trails.back()});
    }
  }
}

}  // namespace

std::expected<WalkResult, ScanError> walkTree(const std::string& root,
                                              const std::optional<std::string>& stripPrefix,
                                              const ScanProgressHandler& progress,
                                              std::stop_token stop, std::size_t readerThreads) {
  Walk walk(stripPrefix, progress, std::move(stop), readerThreads);
  return walk.run(withoutTrailingSlashes(root));
}

std::expected<WalkResult, ScanError> DiskScanner::scan(
    const std::string& root, const std::optional<std::string>& stripPrefix,
    const ScanProgressHandler& progress, std::stop_token stop) const {
  struct stat info {};
  const DiskKind kind = ::stat(root.c_str(), &info) == 0
                            ? diskKind(sysRoot_, static_cast<std::uint64_t>(info.st_dev))
                            : DiskKind::unknown;
  const std::size_t readers = walkReaderThreads(kind, std::thread::hardware_concurrency());
  auto result = walkTree(root, stripPrefix, progress, std::move(stop), readers);
  if (result) setCategories(result->tree, home_);
  return result;
}

std::expected<WalkResult, ScanError> DiskScanner::rescan(
    const SizeNode& folder, const std::optional<std::string>& stripPrefix,
    const ScanProgressHandler& progress, std::stop_token stop) const {
  std::string real = folder.path;
  if (stripPrefix && !stripPrefix->empty()) {
    real = folder.path == "/" ? *stripPrefix : *stripPrefix + folder.path.str();
  }
  return scan(real, stripPrefix, progress, std::move(stop));
}

}  // namespace pellwin
