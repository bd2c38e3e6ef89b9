#include "core/history/day_tally.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

using Displayed = std::map<Resource, Health>;

Snapshot snapshotAt(double time, double interval = 2) {
  Snapshot snapshot;
  snapshot.timestamp = time;
  snapshot.interval = interval;
  return snapshot;
}

Lead lead(const std::string& id, const std::string& name) {
  return Lead{.appID = id, .name = name, .value = ""};
}

// 3 June 2024 00:00 in a zone two hours east of UTC.
constexpr double kLocalMidnight = 1'717'372'800 - 7200;
const Calendar kEast = Calendar::fixed(7200);

const DayRow* find(const std::vector<DayRow>& rows, const std::string& day, Resource resource) {
  for (const DayRow& row : rows) {
    if (row.day == day && row.resource == resource) return &row;
  }
  return nullptr;
}

TEST(DayTally, CountsAmberAndRedTimeAndBlamesOnlyRed) {
  DayTally tally(kEast, {});
  const Displayed shown = {{Resource::memory, Health::problem},
                           {Resource::cpu, Health::strain},
                           {Resource::heat, Health::ok}};
  const std::map<Resource, Lead> leads = {{Resource::memory, lead("app:chrome", "Chrome")},
                                          {Resource::cpu, lead("app:slack", "Slack")}};
  EXPECT_TRUE(tally.ingest(snapshotAt(kLocalMidnight + 100), shown, leads, false).empty());
  EXPECT_TRUE(tally.ingest(snapshotAt(kLocalMidnight + 103, 3), shown, leads, false).empty());
  (void)tally.ingest(snapshotAt(kLocalMidnight + 104, -1), shown, leads, false);
  const auto rows = tally.ingest(snapshotAt(kLocalMidnight + 106), {}, {}, true);
  ASSERT_EQ(rows.size(), 5u) << "one row per resource once a minute closes";
  EXPECT_EQ(rows[0], (DayRow{.day = "2024-06-03",
                             .resource = Resource::memory,
                             .strainSeconds = 0,
                             .problemSeconds = 5,
                             .causes = {{.appID = "app:chrome", .name = "Chrome", .seconds = 5}}}));
  EXPECT_EQ(rows[1].strainSeconds, 5);
  EXPECT_TRUE(rows[1].causes.empty()) << "amber time never creates causes";
  EXPECT_EQ(rows[4].resource, Resource::heat);
  EXPECT_EQ(rows[4].strainSeconds + rows[4].problemSeconds, 0);
}

TEST(DayTally, LocalMidnightEmitsTheFinishedDayThenStartsFromZero) {
  DayTally tally(kEast, {});
  const Displayed red = {{Resource::cpu, Health::problem}};
  (void)tally.ingest(snapshotAt(kLocalMidnight - 2), red, {}, false);
  const auto rows = tally.ingest(snapshotAt(kLocalMidnight), red, {}, true);
  ASSERT_EQ(rows.size(), 10u) << "the finished day, then the new day's (empty) totals";
  EXPECT_EQ(find(rows, "2024-06-02", Resource::cpu)->problemSeconds, 2);
  EXPECT_EQ(find(rows, "2024-06-03", Resource::cpu)->problemSeconds, 0);
  EXPECT_EQ(rows[0].day, "2024-06-02");
  const auto next = tally.currentRows();
  EXPECT_EQ(find(next, "2024-06-03", Resource::cpu)->problemSeconds, 2);
}

TEST(DayTally, KeepsTheFiveAppsWithTheMostRedTime) {
  DayTally tally(Calendar(), {});
  const Displayed red = {{Resource::cpu, Health::problem}};
  const std::vector<std::pair<Lead, int>> ticks = {{lead("a", "Alpha"), 1}, {lead("b", "Beta"), 5},
                                                   {lead("c", "Gamma"), 3}, {lead("d", "Delta"), 3},
                                                   {lead("e", "Eps"), 4},   {lead("f", "Zeta"), 2},
                                                   {lead("b", "Beta 2"), 1}};
  double t = 1000;
  for (const auto& [l, count] : ticks) {
    for (int i = 0; i < count; ++i) {
      (void)tally.ingest(snapshotAt(t += 2), red, {{Resource::cpu, l}}, false);
    }
  }
  const auto rows = tally.currentRows();
  std::vector<std::string> names;
  for (const Cause& c : rows[1].causes)
    names.push_back(c.name + " " + std::to_string(int(c.seconds)));
  EXPECT_EQ(names, (std::vector<std::string>{"Beta 2 12", "Eps 8", "Delta 6", "Gamma 6", "Zeta 4"}))
      << "most seconds first, equal seconds by name; the name follows the latest lead";
}

TEST(DayTally, ARestartContinuesTheSeededDay) {
  const std::vector<DayRow> seed = {
      {.day = "2024-06-03",
       .resource = Resource::cpu,
       .strainSeconds = 30,
       .problemSeconds = 100,
       .causes = {{.appID = "x", .name = "X", .seconds = 100}}},
      {.day = "2024-06-02", .resource = Resource::cpu, .problemSeconds = 999}};
  DayTally tally(kEast, seed);
  (void)tally.ingest(snapshotAt(kLocalMidnight + 3600), {{Resource::cpu, Health::problem}},
                     {{Resource::cpu, lead("x", "X")}}, false);
  const auto rows = tally.currentRows();
  EXPECT_EQ(rows[1], (DayRow{.day = "2024-06-03",
                             .resource = Resource::cpu,
                             .strainSeconds = 30,
                             .problemSeconds = 102,
                             .causes = {{.appID = "x", .name = "X", .seconds = 102}}}));
  (void)tally.ingest(snapshotAt(kLocalMidnight + 86400), {}, {}, false);
  EXPECT_EQ(tally.currentRows()[1].problemSeconds, 0) << "the next day starts empty";
}

}  // namespace
}  // namespace pellwin
