// Walks a folder tree on one volume into a SizeNode tree of allocated sizes: every file's real
// blocks, each hard-linked file once, links never followed, other volumes neither counted nor
// shown, folders that cannot be read, or read only in part, kept as locked nodes, items under
// `keepBytes` folded into their folder's remainder, and categories from the folder catalog. Folders
// are opened relative to their parent's descriptor and the walk keeps its own stack, so neither
// path length nor depth limits it. A scan is blocking; run it off the UI thread. A few threads
// of its own read folders ahead of it, and it assembles the tree alone, in listing order.
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

#include "core/space/size_node.h"
#include "probe/system_error.h"

namespace pellwin {

struct ScanProgress {
  std::int64_t items = 0;     // directory entries listed so far in this walk
  std::uint64_t bytes = 0;    // allocated bytes counted so far
  std::string currentPath{};  // the folder being entered, as displayed
  friend bool operator==(const ScanProgress&, const ScanProgress&) = default;
};

// Called at most every 0.1 s, on the scanning thread; the first folder always reports.
using ScanProgressHandler = std::function<void(const ScanProgress&)>;

struct WalkResult {
  SizeNode tree{};
  // Some hard-linked file inside has links outside the tree: removing the tree frees less than
  // its size says.
  bool sharesLinksOutside = false;
};

enum class ScanErrorKind { rootNotFound, cancelled };

struct ScanError {
  ScanErrorKind kind = ScanErrorKind::rootNotFound;
  SystemError failure{};  // why the root could not be examined; empty for a cancellation

  // "No such file or directory: /x" style; "The scan was cancelled" for a cancellation.
  [[nodiscard]] std::string description() const;
};

// A path as shown to the user: without the strip prefix, and "/" when nothing remains.
[[nodiscard]] std::string displayPath(std::string_view path,
                                      const std::optional<std::string>& stripPrefix);

// The walk itself, without categories (every node but locked ones is left `other`): for callers
// that want sizes only. `DiskScanner::scan` is this plus the folder catalog's categories.
// `readerThreads` threads read folders ahead of the walk (none: the walk reads each itself);
// the result is the same whatever their number.
[[nodiscard]] std::expected<WalkResult, ScanError> walkTree(
    const std::string& root, const std::optional<std::string>& stripPrefix,
    const ScanProgressHandler& progress, std::stop_token stop = {}, std::size_t readerThreads = 0);

class DiskScanner {
 public:
  // Decimal bytes: an item smaller than this is folded into its folder's remainder.
  static constexpr std::uint64_t keepBytes = 1'000'000;

  // `home` is given to the folder catalog when categories are set. `sysRoot` is where the kind
  // of the scanned disk is found, which sets how many threads read folders (walk_readers.h);
  // without it the disk is taken as one that serves reads in parallel.
  explicit DiskScanner(std::string home, std::filesystem::path sysRoot = {})
      : home_(std::move(home)), sysRoot_(std::move(sysRoot)) {}

  // Walks from `root` (a link at the root itself is followed). Trailing slashes of `root` are
  // dropped. Cancelled through `stop` before any folder is entered; the partial tree is then
  // discarded.
  [[nodiscard]] std::expected<WalkResult, ScanError> scan(
      const std::string& root, const std::optional<std::string>& stripPrefix,
      const ScanProgressHandler& progress, std::stop_token stop = {}) const;

  // Walks one folder of an earlier tree again by the same rules; the strip prefix that tree was
  // scanned with is put back in front of the folder's display path. Splice the result in with
  // SizeNode::replacing.
  [[nodiscard]] std::expected<WalkResult, ScanError> rescan(
      const SizeNode& folder, const std::optional<std::string>& stripPrefix,
      const ScanProgressHandler& progress, std::stop_token stop = {}) const;

  [[nodiscard]] const std::string& home() const { return home_; }

 private:
  std::string home_;
  std::filesystem::path sysRoot_;
};

}  // namespace pellwin
