#include "core/history/weekly_report.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "core/base/checked_math.h"
#include "core/base/format.h"
#include "core/history/day_strip.h"

namespace pellwin {

namespace {

// Less than a minute of red either way, or a tenth of last week's, is no change worth telling.
constexpr double kLeastChangeSeconds = 60;
constexpr double kLeastChangeShare = 0.1;
constexpr std::size_t kAppChangesShown = 3;

std::string keyOr(std::optional<std::string> key) { return key.value_or(std::string()); }

bool within(const std::string& day, const std::string& first, const std::string& last) {
  return day >= first && day <= last;
}

std::string changeText(std::string_view what, double now, double before) {
  return std::string(what) + ": " + (now >= 1 ? Format::elapsed(now) : "no") + " red, " +
         (now > before ? "up" : "down") + " from " +
         (before >= 1 ? Format::elapsed(before) : "none");
}

struct Change {
  double size = 0;
  std::string text;
};

WeekTrend trendOf(double now, double before, bool previousRecorded) {
  if (!previousRecorded) return WeekTrend::firstWeek;
  const double least = std::max(kLeastChangeSeconds, kLeastChangeShare * before);
  if (now - before >= least) return WeekTrend::slower;
  if (before - now >= least) return WeekTrend::faster;
  return WeekTrend::same;
}

std::string trendText(WeekTrend trend) {
  switch (trend) {
    case WeekTrend::slower: return "This week was slower than last week:";
    case WeekTrend::faster: return "This week was faster than last week:";
    case WeekTrend::same: return "This week was about the same as last week.";
    case WeekTrend::firstWeek: return "There is no earlier week to compare with yet.";
  }
  return {};
}

std::vector<std::string> changesOf(const std::vector<ResourceWeek>& resources,
                                   const std::vector<CauseTotal>& now,
                                   const std::vector<CauseTotal>& before) {
  std::vector<Change> byResource;
  for (const ResourceWeek& r : resources) {
    const double size = std::fabs(r.problemSeconds - r.previousProblemSeconds);
    if (size >= kLeastChangeSeconds) {
      byResource.push_back({size, changeText(r.title, r.problemSeconds, r.previousProblemSeconds)});
    }
  }
  struct AppWeeks {
    std::string name;
    double now = 0;
    double before = 0;
  };
  std::map<std::string, AppWeeks> apps;  // by app ID
  for (const CauseTotal& cause : now) apps[cause.appID] = {cause.name, cause.seconds, 0};
  for (const CauseTotal& cause : before) {
    AppWeeks& app = apps[cause.appID];
    if (app.name.empty()) app.name = cause.name;
    app.before = cause.seconds;
  }
  std::vector<Change> byApp;
  for (const auto& [appID, app] : apps) {
    const double size = std::fabs(app.now - app.before);
    if (size >= kLeastChangeSeconds)
      byApp.push_back({size, changeText(app.name, app.now, app.before)});
  }
  const auto biggestFirst = [](const Change& a, const Change& b) { return a.size > b.size; };
  std::stable_sort(byResource.begin(), byResource.end(), biggestFirst);
  std::stable_sort(byApp.begin(), byApp.end(), biggestFirst);
  if (byApp.size() > kAppChangesShown) byApp.resize(kAppChangesShown);
  std::vector<std::string> lines;
  for (Change& change : byResource) lines.push_back(std::move(change.text));
  for (Change& change : byApp) lines.push_back(std::move(change.text));
  return lines;
}

std::uint64_t bytesOf(std::int64_t stored) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(stored, 0));
}

std::uint64_t freedOf(const CleanRow& row) {
  return saturatingAdd(bytesOf(row.bytesDeleted), bytesOf(row.bytesTrashed));
}

CleanupLine cleanupLine(const CleanRow& row, const Calendar& calendar) {
  const LocalTime at = calendar.local(row.time);
  const std::uint64_t freed = freedOf(row);
  return CleanupLine{.row = row,
                     .freedBytes = freed,
                     .whenText = dateLabel(at) + " " + clockLabel(at),
                     .text = row.rules + ": " + Format::disk(freed) + " freed, " +
                             std::to_string(row.items) + (row.items == 1 ? " item" : " items")};
}

std::string cleanupsText(std::size_t count, std::uint64_t freed) {
  if (count == 0) return "No cleanups this week";
  return std::to_string(count) + (count == 1 ? " cleanup freed " : " cleanups freed ") +
         Format::disk(freed);
}

}  // namespace

ReportWeeks reportWeeks(double now, const Calendar& calendar) {
  ReportWeeks weeks{.lastDay = calendar.dayKey(now), .end = now};
  weeks.firstDay = keyOr(addingDays(weeks.lastDay, -6));
  weeks.previousLastDay = keyOr(addingDays(weeks.lastDay, -7));
  weeks.previousFirstDay = keyOr(addingDays(weeks.lastDay, -13));
  weeks.start = calendar.startOfDay(weeks.firstDay).value_or(now);
  weeks.previousStart = calendar.startOfDay(weeks.previousFirstDay).value_or(weeks.start);
  return weeks;
}

WeeklyReport weeklyReport(const ReportWeeks& weeks, const std::vector<DayRow>& days,
                          const std::vector<CleanRow>& cleans, const Calendar& calendar) {
  WeeklyReport report{
      .weeks = weeks,
      .periodText = dayKeyLabel(weeks.firstDay) + " – " + dayKeyLabel(weeks.lastDay),
      .causesHeading = "What slowed your Mac most",
      .causesEmptyText = "Nothing stayed red this week."};
  std::vector<DayRow> thisWeek;
  std::vector<DayRow> lastWeek;
  for (const DayRow& row : days) {
    if (within(row.day, weeks.firstDay, weeks.lastDay)) thisWeek.push_back(row);
    if (within(row.day, weeks.previousFirstDay, weeks.previousLastDay)) lastWeek.push_back(row);
  }
  report.recorded = !thisWeek.empty() || !lastWeek.empty();
  report.causes = causeTotals(thisWeek);

  for (Resource resource : allResources) {
    ResourceWeek week{.resource = resource, .title = std::string(title(resource))};
    for (const DayRow& row : thisWeek) {
      if (row.resource != resource) continue;
      week.strainSeconds += row.strainSeconds;
      week.problemSeconds += row.problemSeconds;
    }
    for (const DayRow& row : lastWeek) {
      if (row.resource != resource) continue;
      week.previousStrainSeconds += row.strainSeconds;
      week.previousProblemSeconds += row.problemSeconds;
    }
    week.text = redAndAmberText(week.problemSeconds, week.strainSeconds);
    week.previousText = redAndAmberText(week.previousProblemSeconds, week.previousStrainSeconds);
    week.causes = causeTotals(thisWeek, resource);
    report.redSeconds += week.problemSeconds;
    report.previousRedSeconds += week.previousProblemSeconds;
    report.resources.push_back(std::move(week));
  }

  report.trend = trendOf(report.redSeconds, report.previousRedSeconds, !lastWeek.empty());
  report.trendText = trendText(report.trend);
  if (report.trend == WeekTrend::slower || report.trend == WeekTrend::faster) {
    report.changes = changesOf(report.resources, report.causes, causeTotals(lastWeek));
  }

  std::vector<CleanRow> sorted = cleans;
  std::stable_sort(sorted.begin(), sorted.end(), [](const CleanRow& a, const CleanRow& b) {
    return a.time != b.time ? a.time > b.time : a.id > b.id;
  });
  for (const CleanRow& row : sorted) {
    report.cleanups.push_back(cleanupLine(row, calendar));
    report.freedBytes = saturatingAdd(report.freedBytes, report.cleanups.back().freedBytes);
  }
  report.cleanupsText = cleanupsText(report.cleanups.size(), report.freedBytes);
  return report;
}

}  // namespace pellwin
