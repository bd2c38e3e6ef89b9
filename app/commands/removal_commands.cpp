#include "app/commands/removal_commands.h"

#include <unistd.h>

#include <filesystem>
#include <ostream>

#include "app/models/quick_clean.h"
#include "app/removal_guards.h"
#include "app/system_calendar.h"
#include "core/base/printable_text.h"
#include "core/clean/clean_summary.h"
#include "probe/files/freedesktop_trash.h"
#include "probe/files/live_removal_disk.h"
#include "probe/files/trasher.h"
#include "store/history_store.h"

namespace pellwin {

int runCleanNow(const Environment& environment, const std::string& historyFile, std::ostream& out) {
  const double now = systemNow();
  const CleanPlan plan = plannedClean(environment, readRunningSet(environment, now), now);
  std::vector<TrashResult> results;
  for (const CleanBatch& batch : plan.batches(plan.allItemIDs())) {
    std::vector<TrashResult> part = removeBatch(environment, batch);
    results.insert(results.end(), std::make_move_iterator(part.begin()),
                   std::make_move_iterator(part.end()));
  }
  const CleanSummary summary = CleanSummary::from(plan, results);
  for (const std::string& line : CleanerTexts::result(summary)) out << line << "\n";
  for (const std::string& problem : summary.problems) out << printableText(problem) << "\n";
  // A run that removed nothing leaves no row, as on the screen: the log is of space given back.
  if (summary.cleaned > 0) {
    if (auto store = HistoryStore::open(historyFile)) {
      std::ignore = store->logClean(systemNow(), "quick clean", summary.freed, summary.trashed,
                                    summary.cleaned);
    }
  }
  return summary.problems.empty() ? 0 : 1;
}

std::string trashResultLine(const TrashResult& result) {
  std::string line = std::string(rawValue(result.outcome)) + ": " + printableText(result.path);
  if (!result.reason.empty()) line += ": " + printableText(result.reason);
  return line;
}

int runTrashItems(const std::vector<std::string>& paths, const Environment& environment,
                  std::ostream& out) {
  std::vector<TrashItem> items;
  for (const std::string& path : paths) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    items.push_back({.path = error ? path : absolute.string(), .bytes = 0});
  }
  LiveRemovalDisk disk(FreedesktopTrash(applicationSupport(environment), ::getuid()));
  const Trasher trasher(environment.home, removalGuards(environment), disk);
  bool allMoved = true;
  for (const TrashResult& result : trasher.trash(items)) {
    out << trashResultLine(result) << "\n";
    allMoved = allMoved && result.outcome == TrashResult::Outcome::moved;
  }
  return allMoved ? 0 : 1;
}

}  // namespace pellwin
