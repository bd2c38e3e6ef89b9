// The text `--check-storage --clean-plan` prints for a quick-clean plan: one line per group
// worth showing, then its items, then how long planning took. Pure: the caller plans and times.
#pragma once

#include <iosfwd>
#include <string>

#include "app/environment.h"
#include "core/clean/clean_plan.h"

namespace pellwin {

// A group line is title, size, and the detail with each skip's name and reason; its items
// follow, indented, as size, name and path, all separated by tabs. The visible groups come
// first in their order, then the groups that found nothing but had something to skip, so that
// a skipped source is never silent. The last line is "planned in %.1f s, nothing was changed".
[[nodiscard]] std::string cleanPlanReport(const CleanPlan& plan, double seconds);

// `--check-storage --clean-plan`: plans quick clean for this computer now, without changing
// anything, and prints the report.
[[nodiscard]] int runCleanPlan(const Environment& environment, std::ostream& out);

}  // namespace pellwin
