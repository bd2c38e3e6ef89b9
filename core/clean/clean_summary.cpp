#include "core/clean/clean_summary.h"

#include "core/base/checked_math.h"
#include "core/base/format.h"

namespace pellwin {

namespace {

std::string nameOf(const CleanPlan& plan, const std::string& path) {
  if (const CleanItem* item = plan.item(path)) return item->name;
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

CleanSummary CleanSummary::from(const CleanPlan& plan, const std::vector<TrashResult>& results) {
  CleanSummary summary;
  for (const TrashResult& result : results) {
    switch (result.outcome) {
      case TrashResult::Outcome::deleted:
        summary.freed = saturatingAdd(summary.freed, result.bytes);
        ++summary.cleaned;
        break;
      case TrashResult::Outcome::moved:
        summary.trashed = saturatingAdd(summary.trashed, result.bytes);
        ++summary.cleaned;
        break;
      case TrashResult::Outcome::failed:
        summary.problems.push_back(nameOf(plan, result.path) + " wasn't cleaned. " + result.reason);
        break;
      case TrashResult::Outcome::refused:
        summary.problems.push_back(nameOf(plan, result.path) + " was left alone. " + result.reason);
        break;
      case TrashResult::Outcome::alreadyGone: break;
    }
  }
  return summary;
}

namespace CleanerTexts {

std::vector<std::string> confirmation(const CleanTotals& totals) {
  std::vector<std::string> sentences;
  if (totals.deleteBytes > 0) {
    sentences.push_back("Delete " + Format::disk(totals.deleteBytes) +
                        ". This can't be undone, and the files rebuild on their own.");
  }
  if (totals.trashBytes > 0) {
    sentences.push_back(
        "Move " + Format::disk(totals.trashBytes) +
        " to the Trash. You can put it back, and emptying the Trash frees the space.");
  }
  return sentences;
}

std::string actionNote(CleanAction action) {
  switch (action) {
    case CleanAction::delete_: return "Deleted for good. It rebuilds on its own.";
    case CleanAction::trash: return "Moved to the Trash, so you can get it back.";
  }
  return "";
}

std::string skipRow(const CleanSkip& skip) { return "Left alone because " + skip.reason; }

std::vector<std::string> result(const CleanSummary& summary) {
  if (summary.cleaned == 0) return {"Nothing was cleaned."};
  std::vector<std::string> lines;
  if (summary.freed > 0 || summary.trashed == 0)
    lines.push_back("Freed " + Format::disk(summary.freed));
  if (summary.trashed > 0) {
    lines.push_back(Format::disk(summary.trashed) + " is in the Trash; empty the Trash to free " +
                    (summary.freed > 0 ? "that space too." : "the space."));
  }
  return lines;
}

}  // namespace CleanerTexts
}  // namespace pellwin
