// `tovrin --report [--json]`: the weekly report of the Report screen, printed from the history
// file, or as one JSON object for scripts. Reads only; never creates a history file.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/weekly_report.h"

namespace pellwin::ReportCommand {

// The report as lines of text, without line ends. Names from processes are made printable.
[[nodiscard]] std::vector<std::string> lines(const WeeklyReport& report);

// The report as JSON: the weeks, the causes, the comparison, each resource's time and the
// cleanups, with raw numbers (seconds, bytes) and the texts the screen shows. Indented by two.
[[nodiscard]] std::string json(const WeeklyReport& report);

// Prints the report of the weeks around `now` from the file at `path`; returns 0, or 1 with one
// line on `err` when there is no such file or it cannot be read.
[[nodiscard]] int run(const std::filesystem::path& path, double now, const Calendar& calendar,
                      bool asJSON, std::ostream& out, std::ostream& err);

}  // namespace pellwin::ReportCommand
