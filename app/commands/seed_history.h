// The "--seed-history PATH" mode: fills a scratch history file with one synthetic day, run
// through the whole live pipeline (window, diagnoser, stabilizer, alert policy, leads, rollup),
// plus totals for the weeks before it. Refuses the real history file.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/day_row.h"
#include "core/monitor/snapshot.h"
#include "store/history_store.h"

namespace pellwin::SeedHistory {

inline constexpr int moments = 17280;  // one every 5 s
inline constexpr int gapFirst = 8001;  // moments gapFirst..gapLast are skipped
inline constexpr int gapLast = 8540;
inline constexpr int earlierDays = 21;  // three weeks before the seeded day

// Seeds `path` and prints one line to `out`; returns the exit status: 2 when `path` is empty,
// is the real history file `realStore` (compared after resolving both), or holds anything but
// an empty file or a history file of this program; 1 when the store fails, else 0.
// `now` is the current time; the day runs over the 86,395 s before it.
[[nodiscard]] int run(const std::filesystem::path& path, const std::filesystem::path& realStore,
                      double now, const Calendar& calendar, std::ostream& out, std::ostream& err);

// The synthetic snapshot of moment `index` at `time`: a fixed cast of apps and deterministic
// curves that slow the machine down by memory, CPU, disk space, disk activity and heat.
[[nodiscard]] Snapshot snapshot(int index, double time);

// Plausible totals of the day `offset` days before the seeded one, one row per resource.
[[nodiscard]] std::vector<DayRow> dayRows(int offset, const std::string& day);

// Writes `earlierDays` days of totals before the earliest of `timelineDays`.
[[nodiscard]] SQLiteResult<void> writeEarlierDays(const HistoryStore& store,
                                                  const std::vector<std::string>& timelineDays,
                                                  const Calendar& calendar, double start);

}  // namespace pellwin::SeedHistory
