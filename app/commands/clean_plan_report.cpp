#include "app/commands/clean_plan_report.h"

#include <chrono>
#include <ostream>

#include "app/models/quick_clean.h"
#include "app/system_calendar.h"
#include "core/base/format.h"
#include "core/base/printable_text.h"

namespace pellwin {

namespace {

void appendGroup(const CleanGroupPlan& group, std::string& out) {
  out += group.group.title + "\t" + Format::disk(group.bytes()) + "\t" + group.detail();
  for (std::size_t i = 0; i < group.skipped.size(); ++i) {
    out += (i == 0 ? ": " : "; ") + printableText(group.skipped[i].name) + ", " +
           printableText(group.skipped[i].reason);
  }
  out += "\n";
  for (const CleanItem& item : group.items) {
    // File names are bytes: a newline or an escape sequence in one must not break the line.
    out += "  " + Format::disk(item.bytes) + "\t" + printableText(item.name) + "\t" +
           printableText(item.path) + "\n";
  }
}

}  // namespace

std::string cleanPlanReport(const CleanPlan& plan, double seconds) {
  std::string out;
  for (const CleanGroupPlan& group : plan.visibleGroups()) appendGroup(group, out);
  for (const CleanGroupPlan& group : plan.groups) {
    if (group.items.empty() && !group.skipped.empty()) appendGroup(group, out);
  }
  out += "planned in " + Format::fixed(seconds, 1) + " s, nothing was changed\n";
  return out;
}

int runCleanPlan(const Environment& environment, std::ostream& out) {
  const auto started = std::chrono::steady_clock::now();
  const double now = systemNow();
  const CleanPlan plan = plannedClean(environment, readRunningSet(environment, now), now);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
  out << cleanPlanReport(plan, took.count());
  return 0;
}

}  // namespace pellwin
