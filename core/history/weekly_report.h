// The weekly report: what slowed the machine most over the last seven local days, how the week
// compares with the seven days before, amber and red time per resource for both, and the
// week's cleanups. Every text a screen or the terminal shows is here, ready to print; the
// figures beside them are for scripts and charts. Pure; times are seconds since 1970.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/calendar.h"
#include "core/base/enum_text.h"
#include "core/history/cause_total.h"
#include "core/history/clean_row.h"
#include "core/history/day_row.h"

namespace pellwin {

// This week is today and the six local days before it; last week the seven days before those.
// Days are local calendar dates, so a week that holds a change of clocks is 167 or 169 hours.
struct ReportWeeks {
  std::string firstDay{};  // "%04d-%02d-%02d"
  std::string lastDay{};   // today
  std::string previousFirstDay{};
  std::string previousLastDay{};
  double start = 0;          // the first moment of `firstDay`
  double end = 0;            // now
  double previousStart = 0;  // the first moment of `previousFirstDay`
  friend bool operator==(const ReportWeeks&, const ReportWeeks&) = default;
};

[[nodiscard]] ReportWeeks reportWeeks(double now, const Calendar& calendar);

enum class WeekTrend { slower, faster, same, firstWeek };

[[nodiscard]] constexpr EnumTable<WeekTrend::firstWeek> textTable(WeekTrend) {
  return {{
      {WeekTrend::slower, "slower"},
      {WeekTrend::faster, "faster"},
      {WeekTrend::same, "same"},
      {WeekTrend::firstWeek, "firstWeek"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(WeekTrend trend) { return enumText(trend); }

struct ResourceWeek {
  Resource resource = Resource::memory;
  std::string title{};  // "Memory"
  double strainSeconds = 0;
  double problemSeconds = 0;
  double previousStrainSeconds = 0;
  double previousProblemSeconds = 0;
  std::string text{};                // "12 min red, 1 h 5 min amber" or "all clear"
  std::string previousText{};        // the same for last week
  std::vector<CauseTotal> causes{};  // this week's causes of its red time
  friend bool operator==(const ResourceWeek&, const ResourceWeek&) = default;
};

struct CleanupLine {
  CleanRow row{};
  std::uint64_t freedBytes = 0;  // deleted plus moved to the Trash
  std::string whenText{};        // "Mon 3 Jun 9:05 AM"
  std::string text{};            // "Browser caches: 1.2 GB freed, 340 items"
  friend bool operator==(const CleanupLine&, const CleanupLine&) = default;
};

struct WeeklyReport {
  ReportWeeks weeks{};
  std::string periodText{};  // "Mon 27 May – Sun 2 Jun"
  bool recorded = false;     // any day of either week has rows

  std::string causesHeading{};       // "What slowed your Mac most"
  std::vector<CauseTotal> causes{};  // over every resource, most red time first
  std::string causesEmptyText{};     // said when `causes` is empty

  double redSeconds = 0;  // all resources' red time this week
  double previousRedSeconds = 0;
  WeekTrend trend = WeekTrend::firstWeek;
  std::string trendText{};             // "This week was slower than last week:" and the like
  std::vector<std::string> changes{};  // what changed, biggest change first

  std::vector<ResourceWeek> resources{};  // one per resource, in resource order

  std::vector<CleanupLine> cleanups{};  // newest first
  std::uint64_t freedBytes = 0;
  std::string cleanupsText{};  // "2 cleanups freed 3.2 GB" or "No cleanups this week"
  friend bool operator==(const WeeklyReport&, const WeeklyReport&) = default;
};

// `days` may hold rows of any days: only those of the two weeks count. `cleans` are this week's
// cleanups (any order).
[[nodiscard]] WeeklyReport weeklyReport(const ReportWeeks& weeks, const std::vector<DayRow>& days,
                                        const std::vector<CleanRow>& cleans,
                                        const Calendar& calendar);

}  // namespace pellwin
