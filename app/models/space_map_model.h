// The space map's state without any UI. Opening shows the last scan from the scan cache at once,
// with its date; a scan (home, another folder, or the whole disk) runs on a worker, reports
// progress at most every 0.1 s and can be cancelled; a finished tree is saved to the cache. The
// delete list refuses what the removal rules refuse, with their sentence; after a confirmation its
// items go to the Trash, or for good where the folder catalog allows it, and the tree and the
// cache lose what went, without a rescan.
//
// What a screen reads: the phase and progress; the tree with its date, root and access notice;
// the focus (the zoomed folder) with its rings, breadcrumb, biggest files and category totals;
// the developer projects with their rebuildable folders; the delete list with its total, the
// refusals of what could not be added, the confirmation with its warnings; the result sentence
// of each removed item.
//
// Every public call, and every change, happens on the owner's thread. Loading, scanning, saving
// and removing run on a worker thread, one job at a time; their results come back through the
// `post` function the owner hands in, which must run the given step on the owner's thread. The
// pointers handed out live until the next change of the tree (a scan, a removal).
#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "core/base/enum_text.h"
#include "core/clean/clean_action.h"
#include "core/space/category_totals.h"
#include "core/space/rebuild_plan.h"
#include "core/space/removal_selection.h"
#include "core/space/size_node.h"
#include "core/space/sunburst_layout.h"
#include "core/space/trash_item.h"
#include "probe/files/disk_scanner.h"
#include "probe/files/full_disk_access.h"
#include "probe/files/scan_cache.h"

namespace pellwin {

class SpaceMapModel {
 public:
  enum class Phase {
    idle,      // not opened yet
    loading,   // reading the cache
    scanning,  // a walk runs; the previous tree, if any, stays shown
    ready,     // nothing runs; a tree is shown unless none was ever found
    removing,  // the delete list is being removed
  };

  struct Services {
    // Whether the program may read the folders the system keeps private. Worker thread.
    std::function<FullDiskAccess::State()> access;
    // The last finished scan, or none. Worker thread.
    std::function<std::optional<CachedScan>()> loadCache;
    // Replaces the cached scan; a failure is not shown, the next save tries again. Worker.
    std::function<void(const CachedScan&)> saveCache;
    // Walks the root, calling the handler with progress, and stops soon after `stop` is
    // requested with a `cancelled` error. Worker thread.
    std::function<std::expected<WalkResult, ScanError>(const ScanRoot&, const ScanProgressHandler&,
                                                       std::stop_token)>
        scan;
    // Removes the items by the action, re-checking each on disk: one result per item, in
    // order. Worker thread.
    std::function<std::vector<TrashResult>(const std::vector<TrashItem>&, CleanAction)> remove;
    // Seconds since 1970: the date a scan is saved with. Worker thread.
    std::function<double()> now;
    // Seconds on a clock that never goes back: spaces out progress reports. Worker thread.
    std::function<double()> steadyNow;
    // Runs a step on the owner's thread, later. Called from the worker thread.
    std::function<void(std::function<void()>)> post;
    // Told after every change of the visible state, on the owner's thread. Optional.
    std::function<void()> changed;
  };

  // The fewest seconds between two progress reports reaching the owner.
  static constexpr double progressInterval = 0.1;

  // A path that could not be added to the delete list, and why.
  struct Refused {
    std::string path{};
    std::string name{};
    std::string reason{};
    friend bool operator==(const Refused&, const Refused&) = default;
  };

  // What the last removal did: one result and one sentence per item, in the list's order.
  struct Report {
    CleanAction action = CleanAction::trash;
    std::vector<TrashResult> results{};
    std::vector<std::string> sentences{};
    std::uint64_t freedBytes = 0;  // moved and deleted items (moved ones free it once emptied)
    friend bool operator==(const Report&, const Report&) = default;
  };

  // `home` bounds what may be removed; `guards` are what this machine protects beyond the fixed
  // rules (the same the remove service's trasher is given).
  SpaceMapModel(std::string home, RemovalGuards guards, Services services);
  [[nodiscard]] const std::string& home() const { return home_; }
  // Cancels a running scan and waits for the worker; a result posted after this is dropped.
  ~SpaceMapModel();
  SpaceMapModel(const SpaceMapModel&) = delete;
  SpaceMapModel& operator=(const SpaceMapModel&) = delete;

  // From idle: loads the cache and shows it; with no cache, scans the root the access state
  // gives (home, unless whole-disk access was granted).
  void open();
  // From ready (or idle): a fresh scan of that root. Ignored while something runs.
  void scan(const ScanRoot& root);
  void scanHome();
  void scanFolder(const std::string& path);
  void scanWholeDisk();
  // Asks the running scan to stop; the phase goes back to ready, showing the tree shown before,
  // once the worker has stopped. Nothing is saved.
  void cancelScan();

  [[nodiscard]] Phase phase() const;
  // A cancel was asked for and the walk has not stopped yet.
  [[nodiscard]] bool isCancelling() const;
  // The latest report of the running scan; none before the first and when no scan runs.
  [[nodiscard]] const std::optional<ScanProgress>& progress() const;
  // Why the last scan found nothing ("No such file or directory: /x"); none after a success
  // or a cancellation.
  [[nodiscard]] const std::optional<std::string>& scanProblem() const;

  // The tree shown, or null before any scan or cache.
  [[nodiscard]] const SizeNode* tree() const;
  // When the shown tree was scanned (seconds since 1970), the path scanned, the access state
  // then, and whether it came from the cache rather than a scan made since opening.
  [[nodiscard]] std::optional<double> scannedAt() const;
  [[nodiscard]] std::string scannedRoot() const;
  [[nodiscard]] FullDiskAccess::State access() const;
  [[nodiscard]] bool isFromCache() const;
  // How many kept folders of the tree could not be read, and that in words; none without any.
  [[nodiscard]] std::int64_t lockedFolders() const;
  [[nodiscard]] std::optional<std::string> accessNotice() const;

  // Zooming. The focus starts at the tree's root; a folder of the tree that is not locked may
  // be zoomed into (a click on its arc, or on the breadcrumb to go back). After a new tree the
  // focus stays when its path is still there, else moves to the nearest folder above it that is,
  // or to the root.
  void zoomInto(std::string_view path);
  void zoomOut();
  [[nodiscard]] const SizeNode* focus() const;
  // From the root down to the focus, both included.
  [[nodiscard]] std::vector<const SizeNode*> breadcrumb() const;
  // The rings around the focus.
  [[nodiscard]] std::vector<SunburstArc> arcs(int maxRings, double minDegrees) const;
  // The largest files anywhere under the focus.
  [[nodiscard]] std::vector<SizeNode> biggestFiles(std::size_t limit) const;
  // The categories under the focus with their bytes, in display order.
  [[nodiscard]] std::vector<CategoryTotal> categoryTotals() const;
  // The sentence for a node of the tree (hover or details): the locked folder's, or the folder
  // catalog's explanation of that folder; none otherwise.
  [[nodiscard]] std::optional<std::string> explanation(std::string_view path) const;

  // The developer projects of the whole tree with their rebuildable folders and model files.
  [[nodiscard]] const RebuildPlan& rebuildPlan() const;

  // The delete list. Adding a path of the tree (an arc, a biggest file, a rebuildable folder)
  // returns the rules' refusal, which is also kept in `refusals`; a path not in the tree is
  // ignored. Ignored while removing.
  std::optional<RemovalRefusal> addToDeleteList(std::string_view path);
  // Every rebuildable folder and model file of the plan; the refusals as above.
  void addRebuildPlanToDeleteList();
  std::optional<RemovalRefusal> toggleInDeleteList(std::string_view path);
  void removeFromDeleteList(std::string_view path);
  // Empties the list and its refusals.
  void clearDeleteList();
  void dismissRefusal(std::string_view path);
  [[nodiscard]] const RemovalSelection& deleteList() const;
  // Whether a node is in the list, itself or through a folder above it.
  [[nodiscard]] bool isInDeleteList(const SizeNode& node) const;
  [[nodiscard]] const std::vector<Refused>& refusals() const;

  // Deleting for good is offered only when the folder catalog lets every item go that way.
  [[nodiscard]] bool canDeleteForGood() const;
  // Puts up the confirmation; only from ready with a non-empty list, and for deleting for good
  // only when `canDeleteForGood`.
  void requestRemoval(CleanAction action);
  void cancelRemoval();
  // The action awaiting confirmation, or none.
  [[nodiscard]] std::optional<CleanAction> confirming() const;
  // What confirming does, then each distinct warning about the items, in list order.
  [[nodiscard]] std::vector<std::string> confirmationText() const;
  // The user confirmed: removes the list's items, then drops from the tree what is gone (moved,
  // deleted, or already gone), saves the tree to the cache, empties the list and shows the
  // report.
  void confirmRemoval();
  [[nodiscard]] const std::optional<Report>& lastRemoval() const;

 private:
  struct Shown;
  struct State;
  void startWork(std::function<void()> work);
  void startScan(ScanRoot root);
  void adopt(std::shared_ptr<const Shown> shown);
  void notify() const;

  std::string home_;
  RemovalGuards guards_;
  Services services_;
  std::shared_ptr<State> state_;
  std::stop_source stop_;
  std::thread worker_;
};

[[nodiscard]] constexpr EnumTable<SpaceMapModel::Phase::removing> textTable(SpaceMapModel::Phase) {
  using enum SpaceMapModel::Phase;
  return {{
      {idle, "idle"},
      {loading, "loading"},
      {scanning, "scanning"},
      {ready, "ready"},
      {removing, "removing"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(SpaceMapModel::Phase phase) {
  return enumText(phase);
}

}  // namespace pellwin
