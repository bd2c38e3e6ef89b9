#include "app/clean_plan_report.h"

#include "core/format.h"
#include "core/printable_text.h"

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

}  // namespace pellwin
