#include "core/clean/clean_plan.h"

#include <algorithm>
#include <limits>

#include "core/base/checked_math.h"

namespace pellwin {

std::uint64_t CleanGroupPlan::bytes() const {
  std::uint64_t total = 0;
  for (const CleanItem& item : items) total = saturatingAdd(total, item.bytes);
  return total;
}

std::uint64_t CleanGroupPlan::tickedBytes(const CleanTicks& ticked) const {
  std::uint64_t total = 0;
  for (const CleanItem& item : items) {
    if (ticked.contains(item.id())) total = saturatingAdd(total, item.bytes);
  }
  return total;
}

CleanTickState CleanGroupPlan::tickState(const CleanTicks& ticked) const {
  const auto count = std::count_if(items.begin(), items.end(), [&](const CleanItem& item) {
    return ticked.contains(item.id());
  });
  if (count == static_cast<std::ptrdiff_t>(items.size())) return CleanTickState::all;
  return count == 0 ? CleanTickState::none : CleanTickState::some;
}

std::string CleanGroupPlan::detail() const {
  std::string text = std::to_string(items.size()) + (items.size() == 1 ? " item" : " items");
  if (skipped.empty()) return text;
  const bool allRunning = std::all_of(skipped.begin(), skipped.end(), [](const CleanSkip& skip) {
    return skip.reason.ends_with("is running");
  });
  text += ", " + std::to_string(skipped.size()) + " skipped because ";
  text += skipped.size() == 1 ? "it is" : "they are";
  text += allRunning ? " in use" : " open";
  return text;
}

std::vector<CleanGroupPlan> CleanPlan::visibleGroups() const {
  std::vector<CleanGroupPlan> visible;
  std::copy_if(groups.begin(), groups.end(), std::back_inserter(visible),
               [](const CleanGroupPlan& group) { return !group.items.empty(); });
  std::stable_sort(visible.begin(), visible.end(),
                   [](const CleanGroupPlan& a, const CleanGroupPlan& b) {
                     if (a.bytes() != b.bytes()) return a.bytes() > b.bytes();
                     return a.group.title < b.group.title;
                   });
  return visible;
}

CleanTicks CleanPlan::allItemIDs() const {
  CleanTicks ids;
  for (const CleanGroupPlan& group : groups) {
    for (const CleanItem& item : group.items) ids.insert(item.id());
  }
  return ids;
}

CleanTotals CleanPlan::totals(const CleanTicks& ticked) const {
  CleanTotals totals;
  for (const CleanGroupPlan& group : groups) {
    for (const CleanItem& item : group.items) {
      if (!ticked.contains(item.id())) continue;
      std::uint64_t& sum =
          group.group.action == CleanAction::delete_ ? totals.deleteBytes : totals.trashBytes;
      sum = saturatingAdd(sum, item.bytes);
      ++totals.items;
    }
  }
  return totals;
}

std::vector<CleanBatch> CleanPlan::batches(const CleanTicks& ticked) const {
  std::vector<CleanBatch> batches;
  for (CleanAction action : {CleanAction::delete_, CleanAction::trash}) {
    CleanBatch batch{.action = action};
    for (const CleanGroupPlan& group : groups) {
      if (group.group.action != action) continue;
      for (const CleanItem& item : group.items) {
        if (ticked.contains(item.id())) batch.items.push_back(item);
      }
    }
    if (!batch.items.empty()) batches.push_back(std::move(batch));
  }
  return batches;
}

const CleanItem* CleanPlan::item(std::string_view id) const {
  for (const CleanGroupPlan& group : groups) {
    for (const CleanItem& item : group.items) {
      if (item.id() == id) return &item;
    }
  }
  return nullptr;
}

}  // namespace pellwin
