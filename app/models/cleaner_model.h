// The quick-clean screen's state without any UI: scan, tick, confirm, run, show the summary.
// Every public call, and every change, happens on the owner's thread. The scan and the run
// happen on a worker thread; their results come back through the `post` function the owner
// hands in, which must run the given step on the owner's thread (the Qt event loop in the app,
// a queue the test drains in tests).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "core/base/enum_text.h"
#include "core/clean/clean_plan.h"
#include "core/clean/clean_summary.h"
#include "core/space/trash_item.h"

namespace pellwin {

class CleanerModel {
 public:
  enum class Phase { idle, scanning, ready, cleaning, done };

  struct Services {
    // Reads what runs now and plans every group. Called on the worker thread.
    std::function<CleanPlan()> scan;
    // Removes one batch: deletes or trashes each item, one result per item. Worker thread.
    std::function<std::vector<TrashResult>(const CleanBatch&)> remove;
    // Records a finished run in history, as HistoryRecorder::logClean takes it. Owner's thread.
    std::function<void(std::string_view rules, std::uint64_t bytesDeleted,
                       std::uint64_t bytesTrashed, int items)>
        logClean;
    // Runs a step on the owner's thread, later. May be called from the worker thread.
    std::function<void(std::function<void()>)> post;
    // Told after every change of the visible state, on the owner's thread. Optional.
    std::function<void()> changed;
  };

  // How many groups are listed before "Show all" is needed.
  static constexpr std::size_t groupsBeforeShowAll = 4;

  // `isFixture`: built-in demonstration data for previews; its runs are never logged.
  explicit CleanerModel(Services services, bool isFixture = false);
  // Waits for the worker; a result posted after this is dropped.
  ~CleanerModel();
  CleanerModel(const CleanerModel&) = delete;
  CleanerModel& operator=(const CleanerModel&) = delete;

  // From idle, ready or done: phase scanning, then ready with everything ticked.
  void scan();
  void toggle(const std::string& itemID);
  // Unticks the group's items when all are ticked, else ticks them all.
  void toggleGroup(const std::string& groupID);
  void toggleCollapsed(const std::string& groupID);
  void setShowingAll(bool showingAll);
  // Puts up the confirmation sheet; only when ready with something ticked.
  void requestClean();
  void cancelClean();
  // The user confirmed: removes the ticked items, then phase done with the summary.
  void clean();

  [[nodiscard]] Phase phase() const;
  [[nodiscard]] const std::optional<CleanSummary>& summary() const;  // present when done
  [[nodiscard]] const std::optional<CleanPlan>& plan() const;
  [[nodiscard]] const CleanTicks& ticked() const;
  [[nodiscard]] const std::set<std::string>& collapsed() const;
  [[nodiscard]] bool showingAll() const;
  [[nodiscard]] bool confirming() const;
  [[nodiscard]] CleanTotals totals() const;
  // The visible groups as listed now: the first few, or all of them when showing all.
  [[nodiscard]] std::vector<CleanGroupPlan> listedGroups() const;
  [[nodiscard]] std::vector<std::string> confirmationText() const;

 private:
  struct State;
  void startWork(std::function<void()> work);

  Services services_;
  bool isFixture_;
  std::shared_ptr<State> state_;
  std::thread worker_;
};

[[nodiscard]] constexpr EnumTable<CleanerModel::Phase::done> textTable(CleanerModel::Phase) {
  using enum CleanerModel::Phase;
  return {{
      {idle, "idle"},
      {scanning, "scanning"},
      {ready, "ready"},
      {cleaning, "cleaning"},
      {done, "done"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(CleanerModel::Phase phase) {
  return enumText(phase);
}

}  // namespace pellwin
