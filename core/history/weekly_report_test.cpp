#include "core/history/weekly_report.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

// Europe/Berlin in 2024: summer time from 31 March 01:00 UTC.
Calendar berlin() {
  return Calendar({{.from = 0, .seconds = 3600}, {.from = 1711846800, .seconds = 7200}});
}

constexpr double kNow = 1712052000;  // Tue 2 April 2024, 12:00 in Berlin

DayRow day(const char* key, Resource resource, double red, std::vector<Cause> causes = {},
           double amber = 0) {
  return DayRow{.day = key,
                .resource = resource,
                .strainSeconds = amber,
                .problemSeconds = red,
                .causes = std::move(causes)};
}

TEST(ReportWeeks, AreSevenLocalDaysEvenWhenTheClocksChange) {
  const ReportWeeks weeks = reportWeeks(kNow, berlin());
  EXPECT_EQ(weeks.lastDay, "2024-04-02");
  EXPECT_EQ(weeks.firstDay, "2024-03-27");
  EXPECT_EQ(weeks.previousLastDay, "2024-03-26");
  EXPECT_EQ(weeks.previousFirstDay, "2024-03-20");
  EXPECT_EQ(weeks.start, 1711494000) << "local midnight of 27 March is 23:00 UTC the day before";
  EXPECT_EQ(weeks.previousStart, 1710889200);
  EXPECT_EQ(weeks.start - weeks.previousStart, 7 * 86400) << "last week had no change of clocks";
  const double nextWeekStart = *berlin().startOfDay("2024-04-03");
  EXPECT_EQ(nextWeekStart - weeks.start, 167 * 3600) << "this week lost an hour on 31 March";
  EXPECT_EQ(weeks.end, kNow);
}

TEST(WeeklyReport, SumsEachWeekFromItsOwnDaysAndSaysWhatChanged) {
  const std::vector<DayRow> rows = {
      day("2024-03-19", Resource::memory, 99999),  // before both weeks
      day("2024-03-20", Resource::cpu, 300, {{"pid:6122", "python3.12", 300}}),
      day("2024-03-26", Resource::memory, 600, {{"app:chrome", "Google Chrome", 500}}, 60),
      day("2024-03-27", Resource::memory, 3600,
          {{"app:chrome", "Google Chrome", 3000}, {"app:slack", "Slack", 600}}, 7200),
      day("2024-04-02", Resource::heat, 30, {{"app:claude", "Claude", 30}}),
      day("2024-04-03", Resource::memory, 99999),  // tomorrow, from a clock that ran ahead
  };
  const std::vector<CleanRow> cleans = {
      {.id = 1,
       .time = 1711533600,
       .rules = "Browser caches",
       .bytesDeleted = 1'200'000'000,
       .items = 340},
      {.id = 2, .time = 1711965600, .rules = "Old logs", .bytesTrashed = 300'000'000, .items = 1},
  };
  const WeeklyReport report = weeklyReport(reportWeeks(kNow, berlin()), rows, cleans, berlin());

  EXPECT_TRUE(report.recorded);
  EXPECT_EQ(report.periodText, "Wed 27 Mar – Tue 2 Apr");
  EXPECT_EQ(report.causesHeading, "What slowed your Mac most");
  ASSERT_EQ(report.causes.size(), 3u);
  EXPECT_EQ(report.causes[0].name, "Google Chrome");
  EXPECT_EQ(report.causes[0].seconds, 3000) << "last week's 500 seconds are not this week's";
  EXPECT_EQ(report.redSeconds, 3630);
  EXPECT_EQ(report.previousRedSeconds, 900);
  EXPECT_EQ(report.trend, WeekTrend::slower);
  EXPECT_EQ(report.trendText, "This week was slower than last week:");
  EXPECT_EQ(report.changes, (std::vector<std::string>{
                                "Memory: 1 h red, up from 10 min",
                                "CPU: no red, down from 5 min",
                                "Google Chrome: 50 min red, up from 8 min",
                                "Slack: 10 min red, up from none",
                                "python3.12: no red, down from 5 min",
                            }));

  ASSERT_EQ(report.resources.size(), allResources.size());
  const ResourceWeek& memory = report.resources[0];
  EXPECT_EQ(memory.problemSeconds, 3600);
  EXPECT_EQ(memory.strainSeconds, 7200);
  EXPECT_EQ(memory.previousProblemSeconds, 600);
  EXPECT_EQ(memory.text, "1 h red, 2 h amber");
  EXPECT_EQ(memory.previousText, "10 min red, 1 min amber");
  EXPECT_EQ(memory.causes.size(), 2u);
  EXPECT_EQ(report.resources[4].text, "30 s red");

  ASSERT_EQ(report.cleanups.size(), 2u);
  EXPECT_EQ(report.cleanups[0].text, "Old logs: 300 MB freed, 1 item") << "newest first";
  EXPECT_EQ(report.cleanups[0].whenText, "Mon 1 Apr 12:00 PM");
  EXPECT_EQ(report.cleanups[1].text, "Browser caches: 1.2 GB freed, 340 items");
  EXPECT_EQ(report.freedBytes, 1'500'000'000u);
  EXPECT_EQ(report.cleanupsText, "2 cleanups freed 1.5 GB");
}

TEST(WeeklyReport, ComparesOnlyWithAWeekThatWasRecorded) {
  const ReportWeeks weeks = reportWeeks(kNow, berlin());
  const struct {
    const char* why;
    std::vector<DayRow> rows;
    WeekTrend trend;
    const char* text;
  } cases[] = {
      {"nothing before this week",
       {day("2024-03-28", Resource::cpu, 600)},
       WeekTrend::firstWeek,
       "There is no earlier week to compare with yet."},
      {"a little more red is about the same",
       {day("2024-03-28", Resource::cpu, 1050), day("2024-03-21", Resource::cpu, 1000)},
       WeekTrend::same,
       "This week was about the same as last week."},
      {"a tenth less is faster",
       {day("2024-03-28", Resource::cpu, 900), day("2024-03-21", Resource::cpu, 1000)},
       WeekTrend::faster,
       "This week was faster than last week:"},
      {"recorded weeks without red",
       {day("2024-03-28", Resource::cpu, 0), day("2024-03-21", Resource::cpu, 0)},
       WeekTrend::same,
       "This week was about the same as last week."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const WeeklyReport report = weeklyReport(weeks, c.rows, {}, berlin());
    EXPECT_EQ(report.trend, c.trend);
    EXPECT_EQ(report.trendText, c.text);
    EXPECT_EQ(report.changes.empty(), c.trend != WeekTrend::faster);
  }
  const WeeklyReport empty = weeklyReport(weeks, {}, {}, berlin());
  EXPECT_FALSE(empty.recorded);
  EXPECT_TRUE(empty.causes.empty());
  EXPECT_EQ(empty.causesEmptyText, "Nothing stayed red this week.");
  EXPECT_EQ(empty.cleanupsText, "No cleanups this week");
}

}  // namespace
}  // namespace pellwin
