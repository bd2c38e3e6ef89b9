#include "core/history/episode_tracker.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

using Displayed = std::map<Resource, Health>;
using Leads = std::map<Resource, Lead>;

Snapshot snapshotAt(double time, double interval = 2) {
  Snapshot snapshot;
  snapshot.timestamp = time;
  snapshot.interval = interval;
  return snapshot;
}

Displayed red(Resource resource) { return {{resource, Health::problem}}; }

// Feeds red CPU at `cpu` busy share every 2 s over [from, to]; returns every emitted row.
std::vector<EpisodeRow> feedRedCPU(EpisodeTracker& tracker, double from, double to,
                                   double busy = 0.95, const Leads& leads = {}) {
  std::vector<EpisodeRow> rows;
  for (double t = from; t <= to; t += 2) {
    Snapshot s = snapshotAt(t);
    s.cpu.busyFraction = busy;
    for (EpisodeRow& row : tracker.ingest(s, red(Resource::cpu), leads)) rows.push_back(row);
  }
  return rows;
}

TEST(EpisodeTracker, OpensAfterAMinuteOfRedAndClosesAtTheLastRedSnapshot) {
  EpisodeTracker tracker;
  EXPECT_TRUE(feedRedCPU(tracker, 0, 58).empty());
  const auto opened = feedRedCPU(tracker, 60, 60, 0.97);
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(opened[0], (EpisodeRow{.resource = Resource::cpu,
                                   .start = 0,
                                   .end = std::nullopt,
                                   .peak = 0.97,
                                   .peakText = "97%"}));
  EXPECT_TRUE(feedRedCPU(tracker, 62, 100, 0.9).empty());
  const auto closed = tracker.ingest(snapshotAt(102), {{Resource::cpu, Health::strain}}, {});
  ASSERT_EQ(closed.size(), 1u);
  EXPECT_EQ(closed[0].start, 0);
  EXPECT_EQ(closed[0].end, std::optional<double>(100));
  EXPECT_EQ(closed[0].peakText, "97%");

  // Red that ends before a minute leaves no trace, and so does a missing verdict.
  EXPECT_TRUE(feedRedCPU(tracker, 104, 160).empty());
  EXPECT_TRUE(tracker.ingest(snapshotAt(162), {}, {}).empty());
  EXPECT_TRUE(feedRedCPU(tracker, 164, 222).empty());
  EXPECT_TRUE(tracker.closeAll().empty()) << "a run that never opened is dropped";
}

TEST(EpisodeTracker, AGapClosesThePeriodAndRedAfterItNeedsAnotherMinute) {
  EpisodeTracker tracker;
  ASSERT_EQ(feedRedCPU(tracker, 0, 80).size(), 1u);
  const auto afterGap = feedRedCPU(tracker, 111, 111);
  ASSERT_EQ(afterGap.size(), 1u);
  EXPECT_EQ(afterGap[0].end, std::optional<double>(80));
  EXPECT_TRUE(feedRedCPU(tracker, 113, 169).empty());
  const auto reopened = feedRedCPU(tracker, 171, 171);
  ASSERT_EQ(reopened.size(), 1u);
  EXPECT_EQ(reopened[0].start, 111);
}

TEST(EpisodeTracker, GapClosesComeFirstThenRowsInResourceOrder) {
  EpisodeTracker tracker;
  const Displayed both = {{Resource::heat, Health::problem}, {Resource::memory, Health::problem}};
  std::vector<EpisodeRow> rows;
  for (double t = 0; t <= 60; t += 2) rows = tracker.ingest(snapshotAt(t), both, {});
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].resource, Resource::memory);
  EXPECT_EQ(rows[1].resource, Resource::heat);
  for (double t = 100; t <= 160; t += 2)
    rows = tracker.ingest(snapshotAt(t), red(Resource::cpu), {});
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].resource, Resource::cpu);
  EXPECT_EQ(
      tracker.closeAll(),
      (std::vector<EpisodeRow>{
          {.resource = Resource::cpu, .start = 100, .end = 160, .peak = 0, .peakText = "0%"}}));
}

TEST(EpisodeTracker, PeaksAreTheWorstReadingWrittenInEachResourcesUnit) {
  struct Case {
    const char* why;
    Resource resource;
    std::vector<std::function<void(Snapshot&)>> readings;
    double peak;
    const char* text;
  };
  const Case cases[] = {
      {"swap traffic, the highest",
       Resource::memory,
       {[](Snapshot& s) { s.memory.swapInBytesPerSecond = 3e6; },
        [](Snapshot& s) {
          s.memory.swapInBytesPerSecond = 20e6;
          s.memory.swapOutBytesPerSecond = 4e6;
        },
        [](Snapshot& s) { s.memory.swapOutBytesPerSecond = 1e6; }},
       24e6,
       "24 MB/s"},
      {"free space, the lowest",
       Resource::diskSpace,
       {[](Snapshot& s) { s.disk.freeBytes = 9'000'000'000; },
        [](Snapshot& s) { s.disk.freeBytes = 4'200'000'000; },
        [](Snapshot& s) { s.disk.freeBytes = 8'000'000'000; }},
       4.2e9,
       "4.2 GB"},
      {"disk traffic, read plus write",
       Resource::diskActivity,
       {[](Snapshot& s) {
         s.disk.readBytesPerSecond = 400e3;
         s.disk.writeBytesPerSecond = 120e3;
       }},
       520e3,
       "520 KB/s"},
      {"heat level 2",
       Resource::heat,
       {[](Snapshot& s) { s.thermal = ThermalLevel::fair; },
        [](Snapshot& s) { s.thermal = ThermalLevel::serious; }},
       2,
       "Hot"},
      {"heat level 3",
       Resource::heat,
       {[](Snapshot& s) { s.thermal = ThermalLevel::critical; }},
       3,
       "Very hot"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    EpisodeTracker tracker;
    double t = 0;
    for (const auto& set : c.readings) {
      Snapshot s = snapshotAt(t);
      set(s);
      (void)tracker.ingest(s, red(c.resource), {});
      t += 2;
    }
    // Unmeasured snapshots extend the run without touching the peak.
    std::vector<EpisodeRow> rows;
    for (; t <= 70; t += 2) {
      Snapshot s = snapshotAt(t);
      s.unavailable = {c.resource};
      s.disk.freeBytes = 1;
      s.cpu.busyFraction = 1;
      for (EpisodeRow& row : tracker.ingest(s, red(c.resource), {})) rows.push_back(row);
    }
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].peak, c.peak);
    EXPECT_EQ(rows[0].peakText, c.text);
  }
  EXPECT_EQ(EpisodeTracker::peakText(Resource::heat, 1.5), "Normal");
  EXPECT_EQ(EpisodeTracker::peakText(Resource::heat, 1), "Warm");
  EXPECT_EQ(EpisodeTracker::peakText(Resource::diskSpace, -5), "0 MB");
}

TEST(EpisodeTracker, TheTopAppLedLongestAndShowsItsFigureAtItsWorstMoment) {
  const Lead chrome{.appID = "app:chrome", .name = "Google Chrome", .value = "40%"};
  const Lead chromeLater{.appID = "app:chrome", .name = "Google Chrome", .value = "45%"};
  const Lead slack{.appID = "app:slack", .name = "Slack", .value = "30%"};
  {
    SCOPED_TRACE("more seconds wins; the figure is the one at the worst reading it led");
    EpisodeTracker tracker;
    feedRedCPU(tracker, 0, 10, 0.92, {{Resource::cpu, slack}});
    feedRedCPU(tracker, 12, 20, 0.99, {{Resource::cpu, chrome}});
    feedRedCPU(tracker, 22, 40, 0.95, {{Resource::cpu, chromeLater}});
    feedRedCPU(tracker, 42, 50, 0.99, {{Resource::cpu, chromeLater}});
    const auto rows = feedRedCPU(tracker, 52, 60, 0.91, {{Resource::cpu, slack}});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].topApp, "Google Chrome");
    EXPECT_EQ(rows[0].topValue, "40%") << "an equal reading keeps the earlier text";
  }
  {
    SCOPED_TRACE("equal seconds: the name that sorts first");
    EpisodeTracker tracker;
    const Lead zed{.appID = "app:a", .name = "Zed", .value = "1%"};
    const Lead arc{.appID = "app:z", .name = "Arc", .value = "2%"};
    for (double t = 0; t <= 60; t += 2) {
      const Lead& lead = static_cast<int>(t / 2) % 2 == 0 ? zed : arc;
      Snapshot s = snapshotAt(t, t == 58 ? 4 : 2);  // 16 × 2 s against 14 × 2 s + 4 s
      (void)tracker.ingest(s, red(Resource::cpu), {{Resource::cpu, lead}});
    }
    const auto rows = tracker.closeAll();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].topApp, "Arc");
    EXPECT_EQ(rows[0].topValue, "2%");
  }
  {
    SCOPED_TRACE("a lead whose reading was never measured keeps its first figure");
    EpisodeTracker tracker;
    for (double t = 0; t <= 60; t += 2) {
      Snapshot s = snapshotAt(t);
      s.unavailable = {Resource::cpu};
      const Lead lead{.appID = "x", .name = "X", .value = t == 0 ? "first" : "later"};
      (void)tracker.ingest(s, red(Resource::cpu), {{Resource::cpu, lead}});
    }
    const auto rows = tracker.closeAll();
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].topValue, "first");
    EXPECT_EQ(rows[0].peak, 0);
  }
  {
    SCOPED_TRACE("no lead at all");
    EpisodeTracker tracker;
    const auto rows = feedRedCPU(tracker, 0, 60);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].topApp, std::nullopt);
    EXPECT_EQ(rows[0].topValue, std::nullopt);
  }
}

}  // namespace
}  // namespace pellwin
