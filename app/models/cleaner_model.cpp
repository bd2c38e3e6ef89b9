#include "app/models/cleaner_model.h"

#include <utility>

namespace pellwin {

struct CleanerModel::State {
  Phase phase = Phase::idle;
  std::optional<CleanSummary> summary;
  std::optional<CleanPlan> plan;
  CleanTicks ticked;
  std::set<std::string> collapsed;
  bool showingAll = false;
  bool confirming = false;
};

CleanerModel::CleanerModel(Services services, bool isFixture)
    : services_(std::move(services)), isFixture_(isFixture), state_(std::make_shared<State>()) {}

CleanerModel::~CleanerModel() {
  if (worker_.joinable()) worker_.join();
}

void CleanerModel::startWork(std::function<void()> work) {
  // The previous job has already posted its result (the phase allowed a new one), so this
  // join only waits for its thread to return.
  if (worker_.joinable()) worker_.join();
  worker_ = std::thread(std::move(work));
}

void CleanerModel::scan() {
  State& s = *state_;
  if (s.phase == Phase::scanning || s.phase == Phase::cleaning) return;
  s.phase = Phase::scanning;
  s.summary.reset();
  s.confirming = false;
  if (services_.changed) services_.changed();
  startWork([scanPlan = services_.scan, post = services_.post, changed = services_.changed,
             weak = std::weak_ptr<State>(state_)] {
    CleanPlan plan = scanPlan();
    post([weak, changed, plan = std::move(plan)]() mutable {
      const auto state = weak.lock();
      if (!state) return;
      state->ticked = plan.allItemIDs();
      state->plan = std::move(plan);
      state->phase = Phase::ready;
      if (changed) changed();
    });
  });
}

void CleanerModel::toggle(const std::string& itemID) {
  State& s = *state_;
  if (s.phase != Phase::ready || !s.plan || !s.plan->item(itemID)) return;
  if (!s.ticked.erase(itemID)) s.ticked.insert(itemID);
  if (services_.changed) services_.changed();
}

void CleanerModel::toggleGroup(const std::string& groupID) {
  State& s = *state_;
  if (s.phase != Phase::ready || !s.plan) return;
  for (const CleanGroupPlan& group : s.plan->groups) {
    if (group.group.id != groupID) continue;
    const bool untick = group.tickState(s.ticked) == CleanTickState::all;
    for (const CleanItem& item : group.items) {
      if (untick) {
        s.ticked.erase(item.id());
      } else {
        s.ticked.insert(item.id());
      }
    }
  }
  if (services_.changed) services_.changed();
}

void CleanerModel::toggleCollapsed(const std::string& groupID) {
  State& s = *state_;
  if (!s.collapsed.erase(groupID)) s.collapsed.insert(groupID);
  if (services_.changed) services_.changed();
}

void CleanerModel::setShowingAll(bool showingAll) {
  state_->showingAll = showingAll;
  if (services_.changed) services_.changed();
}

void CleanerModel::requestClean() {
  State& s = *state_;
  if (s.phase != Phase::ready || totals().items == 0) return;
  s.confirming = true;
  if (services_.changed) services_.changed();
}

void CleanerModel::cancelClean() {
  state_->confirming = false;
  if (services_.changed) services_.changed();
}

void CleanerModel::clean() {
  State& s = *state_;
  s.confirming = false;
  if (s.phase != Phase::ready || !s.plan || totals().items == 0) {
    if (services_.changed) services_.changed();
    return;
  }
  std::vector<CleanBatch> batches = s.plan->batches(s.ticked);
  s.phase = Phase::cleaning;
  if (services_.changed) services_.changed();
  auto finish = [weak = std::weak_ptr<State>(state_), changed = services_.changed,
                 logClean =
                     isFixture_ ? nullptr : services_.logClean](std::vector<TrashResult> results) {
    const auto state = weak.lock();
    if (!state) return;
    CleanSummary summary = CleanSummary::from(*state->plan, results);
    // A run that removed nothing leaves no row: the log is of space given back.
    if (logClean && summary.cleaned > 0) {
      logClean("quick clean", summary.freed, summary.trashed, summary.cleaned);
    }
    state->summary = std::move(summary);
    state->phase = Phase::done;
    if (changed) changed();
  };
  startWork([remove = services_.remove, post = services_.post, finish = std::move(finish),
             batches = std::move(batches)] {
    std::vector<TrashResult> results;
    for (const CleanBatch& batch : batches) {
      std::vector<TrashResult> part = remove(batch);
      results.insert(results.end(), std::make_move_iterator(part.begin()),
                     std::make_move_iterator(part.end()));
    }
    post([finish, results = std::move(results)]() mutable { finish(std::move(results)); });
  });
}

CleanerModel::Phase CleanerModel::phase() const { return state_->phase; }
const std::optional<CleanSummary>& CleanerModel::summary() const { return state_->summary; }
const std::optional<CleanPlan>& CleanerModel::plan() const { return state_->plan; }
const CleanTicks& CleanerModel::ticked() const { return state_->ticked; }
const std::set<std::string>& CleanerModel::collapsed() const { return state_->collapsed; }
bool CleanerModel::showingAll() const { return state_->showingAll; }
bool CleanerModel::confirming() const { return state_->confirming; }

CleanTotals CleanerModel::totals() const {
  return state_->plan ? state_->plan->totals(state_->ticked) : CleanTotals{};
}

std::vector<CleanGroupPlan> CleanerModel::listedGroups() const {
  if (!state_->plan) return {};
  std::vector<CleanGroupPlan> groups = state_->plan->visibleGroups();
  if (!state_->showingAll && groups.size() > groupsBeforeShowAll)
    groups.resize(groupsBeforeShowAll);
  return groups;
}

std::vector<std::string> CleanerModel::confirmationText() const {
  return CleanerTexts::confirmation(totals());
}

}  // namespace pellwin
