#include "app/models/space_map_model.h"

#include <algorithm>
#include <limits>
#include <unordered_set>
#include <utility>

#include "core/base/checked_math.h"
#include "core/base/path_text.h"
#include "core/space/folder_catalog.h"
#include "core/space/project_advisor.h"
#include "core/space/space_map_texts.h"

namespace pellwin {

// One tree as the screen shows it, with what is worked out from it once. Made on the worker and
// never changed afterwards, so the owner and a later job can share it without copying the tree.
struct SpaceMapModel::Shown {
  CachedScan scan;
  // How display paths map back to the disk's; none when they are the same.
  std::optional<std::string> stripPrefix;
  bool fromCache = false;
  RebuildPlan plan;
  std::int64_t lockedFolders = 0;

  static std::shared_ptr<const Shown> make(CachedScan scan, std::optional<std::string> stripPrefix,
                                           bool fromCache, std::string_view home) {
    auto shown = std::make_shared<Shown>();
    shown->plan = ProjectAdvisor::plan(scan.tree, home);
    scan.tree.forEach([&](const SizeNode& node) {
      if (node.isLocked) ++shown->lockedFolders;
    });
    shown->scan = std::move(scan);
    shown->stripPrefix = std::move(stripPrefix);
    shown->fromCache = fromCache;
    return shown;
  }

  // The path on disk of a node shown at `displayPath`.
  [[nodiscard]] std::string diskPath(const std::string& displayPath) const {
    if (!stripPrefix) return displayPath;
    return displayPath == "/" ? *stripPrefix : *stripPrefix + displayPath;
  }
};

struct SpaceMapModel::State {
  Phase phase = Phase::idle;
  std::shared_ptr<const Shown> shown;
  std::optional<ScanProgress> progress;
  std::optional<std::string> scanProblem;
  bool cancelling = false;
  std::string focusPath;
  RemovalSelection selection;
  std::vector<Refused> refusals;
  std::optional<CleanAction> confirming;
  std::optional<Report> lastRemoval;
};

namespace {

const RebuildPlan noPlan{};

// The strip prefix a cached scan of `root` was made with: only the whole disk has one.
std::optional<std::string> stripPrefixOf(const std::string& root) {
  const ScanRoot wholeDisk = ScanRoot::wholeDisk();
  return root == wholeDisk.path ? wholeDisk.stripPrefix : std::nullopt;
}

}  // namespace

SpaceMapModel::SpaceMapModel(std::string home, RemovalGuards guards, Services services)
    : home_(std::move(home)),
      guards_(std::move(guards)),
      services_(std::move(services)),
      state_(std::make_shared<State>()) {}

SpaceMapModel::~SpaceMapModel() {
  stop_.request_stop();
  if (worker_.joinable()) worker_.join();
}

void SpaceMapModel::notify() const {
  if (services_.changed) services_.changed();
}

void SpaceMapModel::startWork(std::function<void()> work) {
  // Every job posts its result last, and a new job is only started once that result was
  // applied, so this join only waits for the previous thread to return.
  if (worker_.joinable()) worker_.join();
  worker_ = std::thread(std::move(work));
}

void SpaceMapModel::open() {
  State& s = *state_;
  if (s.phase != Phase::idle) return;
  s.phase = Phase::loading;
  notify();
  startWork([services = services_, home = home_, weak = std::weak_ptr<State>(state_), this] {
    const FullDiskAccess::State access = services.access();
    std::shared_ptr<const Shown> shown;
    if (std::optional<CachedScan> cached = services.loadCache()) {
      std::optional<std::string> prefix = stripPrefixOf(cached->root);
      shown = Shown::make(std::move(*cached), std::move(prefix), true, home);
    }
    services.post([weak, access, shown = std::move(shown), home, this]() mutable {
      const auto state = weak.lock();
      if (!state) return;
      if (shown) {
        state->phase = Phase::ready;
        adopt(std::move(shown));
        return;
      }
      state->phase = Phase::ready;
      startScan(ScanRoot::forAccess(access, home));
    });
  });
}

void SpaceMapModel::scan(const ScanRoot& root) {
  const Phase phase = state_->phase;
  if (phase != Phase::ready && phase != Phase::idle) return;
  startScan(root);
}

void SpaceMapModel::scanHome() { scan(ScanRoot{.path = home_}); }
void SpaceMapModel::scanFolder(const std::string& path) { scan(ScanRoot{.path = path}); }
void SpaceMapModel::scanWholeDisk() { scan(ScanRoot::wholeDisk()); }

void SpaceMapModel::startScan(ScanRoot root) {
  State& s = *state_;
  s.phase = Phase::scanning;
  s.progress.reset();
  s.scanProblem.reset();
  s.cancelling = false;
  s.confirming.reset();
  stop_ = std::stop_source();
  notify();
  auto finish = [weak = std::weak_ptr<State>(state_),
                 this](std::expected<std::shared_ptr<const Shown>, ScanError> result) {
    const auto state = weak.lock();
    if (!state) return;
    state->phase = Phase::ready;
    state->progress.reset();
    // A walk that was complete before it saw the request to stop has been saved already, so it
    // is shown even when the user cancelled: the screen and the cache never disagree.
    state->cancelling = false;
    if (!result) {
      if (result.error().kind != ScanErrorKind::cancelled)
        state->scanProblem = result.error().description();
      notify();
      return;
    }
    adopt(std::move(*result));
  };
  startWork([services = services_, home = home_, root = std::move(root), stop = stop_.get_token(),
             weak = std::weak_ptr<State>(state_), finish = std::move(finish)]() mutable {
    const FullDiskAccess::State access = services.access();
    auto lastReport = std::make_shared<double>(-std::numeric_limits<double>::infinity());
    // The walk already spaces its reports; this keeps the promise to the owner whatever scanner
    // is plugged in, since each report costs the owner's thread a step.
    const ScanProgressHandler progress = [services, weak, lastReport](const ScanProgress& p) {
      const double now = services.steadyNow();
      if (now - *lastReport < progressInterval) return;
      *lastReport = now;
      services.post([weak, p, changed = services.changed] {
        const auto state = weak.lock();
        if (!state || state->phase != Phase::scanning) return;
        state->progress = p;
        if (changed) changed();
      });
    };
    auto walked = services.scan(root, progress, stop);
    std::expected<std::shared_ptr<const Shown>, ScanError> result;
    if (!walked) {
      result = std::unexpected(walked.error());
    } else if (stop.stop_requested()) {
      result = std::unexpected(ScanError{.kind = ScanErrorKind::cancelled});
    } else {
      CachedScan scan{.tree = std::move(walked->tree),
                      .scannedAt = services.now(),
                      .root = root.path,
                      .access = access};
      result = Shown::make(std::move(scan), root.stripPrefix, false, home);
      services.saveCache((*result)->scan);
    }
    services.post([finish = std::move(finish), result = std::move(result)]() mutable {
      finish(std::move(result));
    });
  });
}

void SpaceMapModel::cancelScan() {
  State& s = *state_;
  if (s.phase != Phase::scanning || s.cancelling) return;
  s.cancelling = true;
  stop_.request_stop();
  notify();
}

void SpaceMapModel::adopt(std::shared_ptr<const Shown> shown) {
  State& s = *state_;
  s.shown = std::move(shown);
  const SizeNode& tree = s.shown->scan.tree;
  // The focus stays where it was, or on the nearest folder above it that is still there.
  while (!s.focusPath.empty() && tree.find(s.focusPath) == nullptr) {
    const auto slash = s.focusPath.find_last_of('/');
    s.focusPath =
        slash == std::string::npos || slash == 0 ? std::string() : s.focusPath.substr(0, slash);
  }
  if (s.focusPath.empty() || !tree.path.contains(s.focusPath)) s.focusPath = tree.path;
  s.selection.reconcile(tree, home_, guards_);
  std::erase_if(s.refusals, [&](const Refused& r) { return tree.find(r.path) == nullptr; });
  notify();
}

SpaceMapModel::Phase SpaceMapModel::phase() const { return state_->phase; }
bool SpaceMapModel::isCancelling() const { return state_->cancelling; }
const std::optional<ScanProgress>& SpaceMapModel::progress() const { return state_->progress; }
const std::optional<std::string>& SpaceMapModel::scanProblem() const { return state_->scanProblem; }

const SizeNode* SpaceMapModel::tree() const {
  return state_->shown ? &state_->shown->scan.tree : nullptr;
}

std::optional<double> SpaceMapModel::scannedAt() const {
  if (!state_->shown) return std::nullopt;
  return state_->shown->scan.scannedAt;
}

std::string SpaceMapModel::scannedRoot() const {
  return state_->shown ? state_->shown->scan.root : std::string();
}

FullDiskAccess::State SpaceMapModel::access() const {
  return state_->shown ? state_->shown->scan.access : FullDiskAccess::State::unknown;
}

bool SpaceMapModel::isFromCache() const { return state_->shown && state_->shown->fromCache; }

std::int64_t SpaceMapModel::lockedFolders() const {
  return state_->shown ? state_->shown->lockedFolders : 0;
}

std::optional<std::string> SpaceMapModel::accessNotice() const {
  return SpaceMapTexts::accessNotice(lockedFolders(), access() == FullDiskAccess::State::denied);
}

void SpaceMapModel::zoomInto(std::string_view path) {
  const SizeNode* root = tree();
  if (root == nullptr) return;
  const SizeNode* node = root->find(path);
  if (node == nullptr || !node->isDirectory || node->isLocked) return;
  state_->focusPath = node->path;
  notify();
}

void SpaceMapModel::zoomOut() {
  const auto chain = breadcrumb();
  if (chain.size() < 2) return;
  state_->focusPath = chain[chain.size() - 2]->path;
  notify();
}

const SizeNode* SpaceMapModel::focus() const {
  const SizeNode* root = tree();
  return root == nullptr ? nullptr : root->find(state_->focusPath);
}

std::vector<const SizeNode*> SpaceMapModel::breadcrumb() const {
  const SizeNode* root = tree();
  return root == nullptr ? std::vector<const SizeNode*>{} : root->chain(state_->focusPath);
}

std::vector<SunburstArc> SpaceMapModel::arcs(int maxRings, double minDegrees) const {
  const SizeNode* at = focus();
  return at == nullptr ? std::vector<SunburstArc>{}
                       : SunburstLayout::arcs(*at, maxRings, minDegrees);
}

std::vector<SizeNode> SpaceMapModel::biggestFiles(std::size_t limit) const {
  const SizeNode* at = focus();
  return at == nullptr ? std::vector<SizeNode>{} : at->biggestFiles(limit);
}

std::vector<CategoryTotal> SpaceMapModel::categoryTotals() const {
  const SizeNode* at = focus();
  return at == nullptr ? std::vector<CategoryTotal>{} : pellwin::categoryTotals(*at);
}

std::optional<std::string> SpaceMapModel::explanation(std::string_view path) const {
  const SizeNode* root = tree();
  const SizeNode* node = root == nullptr ? nullptr : root->find(path);
  if (node == nullptr) return std::nullopt;
  if (node->isLocked) return std::string(SpaceMapTexts::lockedDetails);
  return FolderCatalog::explanation(node->path.str(), home_);
}

const RebuildPlan& SpaceMapModel::rebuildPlan() const {
  return state_->shown ? state_->shown->plan : noPlan;
}

std::optional<RemovalRefusal> SpaceMapModel::addToDeleteList(std::string_view path) {
  State& s = *state_;
  const SizeNode* root = tree();
  const SizeNode* node = root == nullptr ? nullptr : root->find(path);
  if (node == nullptr || s.phase == Phase::removing) return std::nullopt;
  std::erase_if(s.refusals, [&](const Refused& r) { return r.path == node->path; });
  auto refused = s.selection.add(*node, home_, guards_);
  if (refused)
    s.refusals.push_back({.path = node->path, .name = node->name, .reason = refused->reason});
  notify();
  return refused;
}

void SpaceMapModel::addRebuildPlanToDeleteList() {
  const RebuildPlan plan = rebuildPlan();
  for (const auto* items : {&plan.items, &plan.models}) {
    for (const RebuildItem& item : *items) (void)addToDeleteList(item.path);
  }
}

std::optional<RemovalRefusal> SpaceMapModel::toggleInDeleteList(std::string_view path) {
  State& s = *state_;
  if (s.phase == Phase::removing) return std::nullopt;
  if (s.selection.contains(path)) {
    s.selection.remove(path);
    notify();
    return std::nullopt;
  }
  return addToDeleteList(path);
}

void SpaceMapModel::removeFromDeleteList(std::string_view path) {
  if (state_->phase == Phase::removing) return;
  state_->selection.remove(path);
  notify();
}

void SpaceMapModel::clearDeleteList() {
  if (state_->phase == Phase::removing) return;
  state_->selection.clear();
  state_->refusals.clear();
  state_->confirming.reset();
  notify();
}

void SpaceMapModel::dismissRefusal(std::string_view path) {
  std::erase_if(state_->refusals, [&](const Refused& r) { return r.path == path; });
  notify();
}

const RemovalSelection& SpaceMapModel::deleteList() const { return state_->selection; }

bool SpaceMapModel::isInDeleteList(const SizeNode& node) const {
  // Asked for every arc while painting, so it compares paths instead of copying the covering
  // items' subtrees.
  return std::ranges::any_of(state_->selection.items(), [&](const SizeNode& item) {
    return item.path.contains(node.path.str());
  });
}

const std::vector<SpaceMapModel::Refused>& SpaceMapModel::refusals() const {
  return state_->refusals;
}

bool SpaceMapModel::canDeleteForGood() const {
  const auto& items = state_->selection.items();
  return !items.empty() && std::ranges::all_of(items, [&](const SizeNode& item) {
    return FolderCatalog::isCleanable(item.path.str(), home_);
  });
}

void SpaceMapModel::requestRemoval(CleanAction action) {
  State& s = *state_;
  if (s.phase != Phase::ready || s.selection.isEmpty()) return;
  if (action == CleanAction::delete_ && !canDeleteForGood()) return;
  s.confirming = action;
  notify();
}

void SpaceMapModel::cancelRemoval() {
  state_->confirming.reset();
  notify();
}

std::optional<CleanAction> SpaceMapModel::confirming() const { return state_->confirming; }

std::vector<std::string> SpaceMapModel::confirmationText() const {
  const State& s = *state_;
  if (!s.confirming) return {};
  std::vector<std::string> lines{
      *s.confirming == CleanAction::delete_
          ? SpaceMapTexts::deleteConfirmation(s.selection.count(), s.selection.totalBytes())
          : SpaceMapTexts::trashConfirmation(s.selection.count(), s.selection.totalBytes())};
  for (const SizeNode& item : s.selection.items()) {
    for (std::string& caution : RemovalSelection::cautions(item, home_, std::nullopt)) {
      if (std::ranges::find(lines, caution) == lines.end()) lines.push_back(std::move(caution));
    }
  }
  return lines;
}

void SpaceMapModel::confirmRemoval() {
  State& s = *state_;
  const std::optional<CleanAction> action = std::exchange(s.confirming, std::nullopt);
  if (!action || s.phase != Phase::ready || s.selection.isEmpty() || !s.shown) {
    notify();
    return;
  }
  std::vector<TrashItem> items;
  std::vector<std::string> shownPaths;
  for (const SizeNode& item : s.selection.items()) {
    items.push_back({.path = s.shown->diskPath(item.path), .bytes = item.bytes});
    shownPaths.push_back(item.path);
  }
  s.phase = Phase::removing;
  notify();
  auto finish = [weak = std::weak_ptr<State>(state_), action = *action, this](
                    std::vector<TrashResult> results, std::shared_ptr<const Shown> shown) {
    const auto state = weak.lock();
    if (!state) return;
    Report report{.action = action};
    for (TrashResult& result : results) {
      report.sentences.push_back(SpaceMapTexts::result(result));
      if (result.freedSpace()) report.freedBytes = saturatingAdd(report.freedBytes, result.bytes);
      report.results.push_back(std::move(result));
    }
    state->lastRemoval = std::move(report);
    state->selection.clear();
    state->refusals.clear();
    state->phase = Phase::ready;
    adopt(std::move(shown));
  };
  startWork([services = services_, home = home_, items = std::move(items),
             shownPaths = std::move(shownPaths), before = s.shown, action = *action,
             finish = std::move(finish)]() mutable {
    std::vector<TrashResult> results = services.remove(items, action);
    std::unordered_set<std::string> gone;
    for (std::size_t i = 0; i < results.size() && i < shownPaths.size(); ++i) {
      using enum TrashResult::Outcome;
      const auto outcome = results[i].outcome;
      if (outcome == moved || outcome == deleted || outcome == alreadyGone)
        gone.insert(shownPaths[i]);
    }
    std::shared_ptr<const Shown> after = before;
    if (!gone.empty()) {
      // The rest of the tree is as it was scanned, so only what went is taken out; the cache
      // gets the same tree, dated now, so it never shows the removed items again.
      const CachedScan& was = before->scan;
      CachedScan scan{.version = was.version,
                      .tree = was.tree.removing(gone),
                      .scannedAt = services.now(),
                      .root = was.root,
                      .access = was.access};
      after = Shown::make(std::move(scan), before->stripPrefix, before->fromCache, home);
      services.saveCache(after->scan);
    }
    services.post(
        [finish = std::move(finish), results = std::move(results),
         after = std::move(after)]() mutable { finish(std::move(results), std::move(after)); });
  });
}

const std::optional<SpaceMapModel::Report>& SpaceMapModel::lastRemoval() const {
  return state_->lastRemoval;
}

}  // namespace pellwin
