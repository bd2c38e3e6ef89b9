#include "core/history/minute_rollup.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

using Displayed = std::map<Resource, Health>;

AppUsage app(std::string id, std::string name, double cores, std::uint64_t bytes) {
  return AppUsage{
      .id = std::move(id), .name = std::move(name), .footprintBytes = bytes, .cpuCores = cores};
}

Snapshot snapshotAt(double time, double interval, double busy = 0.5,
                    std::vector<AppUsage> apps = {}) {
  Snapshot snapshot;
  snapshot.timestamp = time;
  snapshot.interval = interval;
  snapshot.cpu.busyFraction = busy;
  snapshot.apps = std::move(apps);
  return snapshot;
}

constexpr double kMinute = 1'717'416'000;  // a whole minute of the epoch

TEST(MinuteRollup, ClosesAMinuteWhenTheNextOneStartsWithTimeWeightedStats) {
  MinuteRollup rollup;
  EXPECT_TRUE(rollup.ingest(snapshotAt(kMinute + 10, 10, 0.2), {{Resource::cpu, Health::ok}})
                  .minutes.empty());
  (void)rollup.ingest(snapshotAt(kMinute + 40, 30, 0.6), {{Resource::cpu, Health::problem}});
  (void)rollup.ingest(snapshotAt(kMinute + 59.9, 5, 1.0), {{Resource::cpu, Health::strain}});
  const auto output = rollup.ingest(snapshotAt(kMinute + 61, 1.1), {});
  ASSERT_EQ(output.minutes.size(), 1u);
  const MinuteRow& row = output.minutes[0];
  EXPECT_EQ(row.minute, kMinute);
  EXPECT_DOUBLE_EQ(row.covered, 45);
  const Stat cpu = row.stats.at(HistoryMetric::cpuBusy);
  EXPECT_DOUBLE_EQ(cpu.average, (0.2 * 10 + 0.6 * 30 + 1.0 * 5) / 45);
  EXPECT_EQ(cpu.low, 0.2);
  EXPECT_EQ(cpu.high, 1.0);
  EXPECT_EQ(row.worst, (Displayed{{Resource::cpu, Health::problem}}));
  EXPECT_EQ(row.stats.size(), allHistoryMetrics.size());
}

TEST(MinuteRollup, OverlappingSnapshotsCapCoverageAndUnmeasuredMetricsStayOut) {
  MinuteRollup rollup;
  for (double t = 5; t <= 60; t += 5) {
    Snapshot s = snapshotAt(kMinute + t - 0.5, 6.25);  // 12 × 6.25 s = 75 s in one minute
    s.unavailable = {Resource::diskActivity};
    (void)rollup.ingest(s, {});
  }
  const auto output = rollup.flush();
  ASSERT_EQ(output.minutes.size(), 1u);
  EXPECT_EQ(output.minutes[0].covered, 60);
  EXPECT_FALSE(output.minutes[0].stats.contains(HistoryMetric::diskRead));
  EXPECT_FALSE(output.minutes[0].stats.contains(HistoryMetric::diskTraffic));
  EXPECT_TRUE(output.minutes[0].stats.contains(HistoryMetric::diskFree));
  EXPECT_TRUE(output.minutes[0].worst.empty()) << "nothing shown, nothing recorded";

  MinuteRollup zero;
  (void)zero.ingest(snapshotAt(kMinute + 1, -3, 0.5, {app("a", "A", 1, 1)}), {});
  const auto empty = zero.flush();
  ASSERT_EQ(empty.minutes.size(), 1u);
  EXPECT_EQ(empty.minutes[0].covered, 0);
  EXPECT_TRUE(empty.minutes[0].stats.empty());
  EXPECT_TRUE(empty.apps.empty()) << "a minute with nothing covered ranks no apps";
}

TEST(MinuteRollup, RanksTheFiveBusiestAppsByCPUThenByMemoryThenByDisk) {
  MinuteRollup rollup;
  std::vector<AppUsage> apps = {app("app:f", "F", 0.1, 0),    app("app:e", "E", 0.2, 100),
                                app("app:d", "D", 0.3, 50),   app("app:c2", "C", 0.4, 0),
                                app("app:c1", "C", 0.4, 0),   app("app:b", "B", 0.4, 0),
                                app("pid:9", "idle", 0, 5000)};
  apps[1].diskBytesPerSecond = 1e6;
  apps[6].diskBytesPerSecond = 3e6;
  (void)rollup.ingest(snapshotAt(kMinute + 20, 20, 0.5, apps), {});
  auto later = apps;
  later[0].cpuCores = 2.0;  // F is busy in the second half only
  (void)rollup.ingest(snapshotAt(kMinute + 40, 20, 0.5, later), {});
  const auto output = rollup.flush();

  std::vector<std::string> cpu, memory, disk;
  for (const MinuteAppRow& row : output.apps) {
    (row.rank == AppRank::cpu      ? cpu
     : row.rank == AppRank::memory ? memory
                                   : disk)
        .push_back(row.appID);
    if (row.appID == "pid:9" && row.rank == AppRank::disk) {
      EXPECT_DOUBLE_EQ(row.value, 3e6) << "bytes per second, time-weighted";
    }
    if (row.appID == "app:f" && row.rank == AppRank::cpu) {
      EXPECT_DOUBLE_EQ(row.value, 1.05) << "(0.1 × 20 + 2.0 × 20) ÷ 40";
      EXPECT_EQ(row.position, 1);
    }
  }
  EXPECT_EQ(cpu, (std::vector<std::string>{"app:f", "app:b", "app:c1", "app:c2", "app:d"}))
      << "equal totals: name first, then app ID; an app without CPU is left out";
  EXPECT_EQ(memory, (std::vector<std::string>{"pid:9", "app:e", "app:d"}));
  EXPECT_EQ(disk, (std::vector<std::string>{"pid:9", "app:e"}));
  EXPECT_EQ(output.apps.front().rank, AppRank::cpu);
  EXPECT_EQ(output.apps.back().rank, AppRank::disk);
  EXPECT_EQ(output.apps.back().position, 2);
}

TEST(MinuteRollup, SamplesCoverAboutFiveSecondsAndAGapClosesOnlyTheSample) {
  MinuteRollup rollup;
  std::vector<SampleRow> samples;
  auto keep = [&](MinuteRollupOutput o) {
    samples.insert(samples.end(), o.samples.begin(), o.samples.end());
    return o;
  };
  // Three 2-second ticks make one sample; the third closes it at 6 s ≥ 4.5 s.
  (void)keep(rollup.ingest(snapshotAt(kMinute + 2, 2, 0.1), {{Resource::cpu, Health::ok}}));
  (void)keep(rollup.ingest(snapshotAt(kMinute + 4, 2, 0.4), {{Resource::cpu, Health::strain}}));
  ASSERT_TRUE(samples.empty());
  (void)keep(rollup.ingest(snapshotAt(kMinute + 6, 2, 0.7), {{Resource::cpu, Health::ok}}));
  ASSERT_EQ(samples.size(), 1u);
  EXPECT_EQ(samples[0].time, kMinute + 6);
  EXPECT_EQ(samples[0].span, 6);
  EXPECT_DOUBLE_EQ(samples[0].values.at(HistoryMetric::cpuBusy), 0.4);
  EXPECT_EQ(samples[0].health.at(Resource::cpu), Health::strain);

  (void)keep(rollup.ingest(snapshotAt(kMinute + 8, 2), {}));
  const auto gap = keep(rollup.ingest(snapshotAt(kMinute + 39, 2), {}));
  ASSERT_EQ(samples.size(), 2u) << "the pending sample closes at the gap";
  EXPECT_EQ(samples[1].time, kMinute + 8);
  EXPECT_EQ(samples[1].span, 2);
  EXPECT_TRUE(gap.minutes.empty()) << "the minute stays open";
  const auto flushed = rollup.flush();
  ASSERT_EQ(flushed.minutes.size(), 1u);
  EXPECT_EQ(flushed.minutes[0].covered, 10) << "time asleep is not covered";
  EXPECT_EQ(flushed.samples.size(), 1u);
  EXPECT_TRUE(rollup.flush().minutes.empty());
}

}  // namespace
}  // namespace pellwin
