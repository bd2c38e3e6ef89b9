// What a quick-clean scan found, and the arithmetic the screen does on it: sizes, ticks,
// totals and the batches a run hands to the trash mover. Plain values; sums saturate at the
// 64-bit maximum instead of wrapping.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/enum_text.h"
#include "core/clean/clean_action.h"
#include "core/clean/clean_group.h"

namespace pellwin {

// The ids of the items the user ticked.
using CleanTicks = std::set<std::string>;

enum class CleanTickState { all, some, none };

[[nodiscard]] constexpr EnumTable<CleanTickState::none> textTable(CleanTickState) {
  return {{
      {CleanTickState::all, "all"},
      {CleanTickState::some, "some"},
      {CleanTickState::none, "none"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(CleanTickState state) { return enumText(state); }
[[nodiscard]] constexpr std::optional<CleanTickState> cleanTickStateFromRawValue(
    std::string_view raw) {
  return parseEnum<CleanTickState>(raw);
}

struct CleanItem {
  std::string path{};       // absolute
  std::string name{};       // the source's title, or the child's file name
  std::uint64_t bytes = 0;  // the space removing it frees
  [[nodiscard]] const std::string& id() const { return path; }
  friend bool operator==(const CleanItem&, const CleanItem&) = default;
};

struct CleanSkip {
  std::string name{};
  std::string reason{};  // from CleanerRunning::pause, such as "npm is running"
  friend bool operator==(const CleanSkip&, const CleanSkip&) = default;
};

struct CleanGroupPlan {
  CleanGroup group{};
  std::vector<CleanItem> items{};
  std::vector<CleanSkip> skipped{};

  [[nodiscard]] std::uint64_t bytes() const;
  [[nodiscard]] std::uint64_t tickedBytes(const CleanTicks& ticked) const;
  // A group without items counts as all ticked.
  [[nodiscard]] CleanTickState tickState(const CleanTicks& ticked) const;
  // "4 items, 1 skipped because it is open"; "in use" when every skip is a running tool.
  [[nodiscard]] std::string detail() const;
  friend bool operator==(const CleanGroupPlan&, const CleanGroupPlan&) = default;
};

struct CleanTotals {
  std::uint64_t deleteBytes = 0;  // ticked, in groups deleted for good
  std::uint64_t trashBytes = 0;   // ticked, in groups moved to the Trash
  int items = 0;                  // ticked items of both
  friend bool operator==(const CleanTotals&, const CleanTotals&) = default;
};

struct CleanBatch {
  CleanAction action = CleanAction::delete_;
  std::vector<CleanItem> items{};
  friend bool operator==(const CleanBatch&, const CleanBatch&) = default;
};

struct CleanPlan {
  std::vector<CleanGroupPlan> groups{};  // catalog order

  // Groups with at least one item, largest first, equal sizes by title.
  [[nodiscard]] std::vector<CleanGroupPlan> visibleGroups() const;
  [[nodiscard]] CleanTicks allItemIDs() const;
  [[nodiscard]] CleanTotals totals(const CleanTicks& ticked) const;
  // The ticked items gathered by their group's action: deletions first, then the Trash; an
  // action with nothing ticked has no batch.
  [[nodiscard]] std::vector<CleanBatch> batches(const CleanTicks& ticked) const;
  // The item with this id, if the plan has one.
  [[nodiscard]] const CleanItem* item(std::string_view id) const;
  friend bool operator==(const CleanPlan&, const CleanPlan&) = default;
};

}  // namespace pellwin
