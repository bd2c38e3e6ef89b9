// The outcome of one quick-clean run as the user reads it, made from the trash mover's
// results, plus the fixed sentences the quick-clean screen shows around a plan and a run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/clean/clean_plan.h"
#include "core/space/trash_item.h"

namespace pellwin {

struct CleanSummary {
  std::uint64_t freed = 0;              // bytes deleted for good
  std::uint64_t trashed = 0;            // bytes moved to the Trash
  int cleaned = 0;                      // items removed either way
  std::vector<std::string> problems{};  // one sentence per item that failed or was left alone

  // Items are named as the plan shows them. An item that was already gone is neither cleaned
  // nor a problem.
  [[nodiscard]] static CleanSummary from(const CleanPlan& plan,
                                         const std::vector<TrashResult>& results);
  friend bool operator==(const CleanSummary&, const CleanSummary&) = default;
};

namespace CleanerTexts {

inline constexpr const char* scanning = "Looking through your caches and logs";
inline constexpr const char* emptyTitle = "Nothing to clean";
inline constexpr const char* emptyMessage =
    "Your caches and logs are already small, or the apps that use them are open.";
inline constexpr const char* confirmButton = "Clean up";
inline constexpr const char* cancelButton = "Cancel";
inline constexpr const char* confirmNote = "Nothing happens until you confirm";

// The confirmation sheet's sentences: one for what is deleted for good, one for what goes to
// the Trash, each only when it has bytes.
[[nodiscard]] std::vector<std::string> confirmation(const CleanTotals& totals);
// The line beside a group that says where its items go.
[[nodiscard]] std::string actionNote(CleanAction action);
[[nodiscard]] std::string skipRow(const CleanSkip& skip);
// What the run freed and what waits in the Trash, or that nothing was cleaned.
[[nodiscard]] std::vector<std::string> result(const CleanSummary& summary);

}  // namespace CleanerTexts
}  // namespace pellwin
