#include "core/monitor/snapshot_window.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

Snapshot at(double t, double interval, double busy, std::set<Resource> unavailable = {}) {
  return Snapshot{.timestamp = t,
                  .interval = interval,
                  .cpu = {.busyFraction = busy, .coreCount = 4},
                  .unavailable = std::move(unavailable)};
}

double busy(const Snapshot& s) { return s.cpu.busyFraction; }

TEST(SnapshotWindow, KeepsOnlyItsSpan) {
  SnapshotWindow window(600);
  window.append(at(1000, 2, 0));
  window.append(at(1600, 2, 0));
  EXPECT_EQ(window.snapshots().size(), 2u) << "exactly the span ago stays";
  window.append(at(1601, 1, 0));
  ASSERT_EQ(window.snapshots().size(), 2u);
  EXPECT_DOUBLE_EQ(window.snapshots().front().timestamp, 1600);
  EXPECT_DOUBLE_EQ(window.latest()->timestamp, 1601);

  window.replaceLatest(at(1601, 1, 0.5));
  EXPECT_DOUBLE_EQ(window.latest()->cpu.busyFraction, 0.5);
  EXPECT_EQ(window.snapshots().size(), 2u);
}

TEST(SnapshotWindow, AveragesByTimeOverTheMeasuredSnapshotsOnly) {
  SnapshotWindow window(600);
  EXPECT_EQ(window.latest(), nullptr);
  EXPECT_TRUE(window.recent(60).empty());
  EXPECT_EQ(window.average(60, {}, busy), 0);

  window.append(at(100, 2, 1.0));  // 60 s before the latest: left out
  window.append(at(130, 30, 0.2));
  window.append(at(140, 10, 0.9, {Resource::cpu}));  // not measured
  window.append(at(160, 20, 0.5, {Resource::heat}));
  EXPECT_EQ(window.recent(60).size(), 3u) << "only strictly later than latest − seconds";
  EXPECT_DOUBLE_EQ(window.covered(60), 60);
  EXPECT_DOUBLE_EQ(window.covered(60, {Resource::cpu}), 50);
  EXPECT_DOUBLE_EQ(window.average(60, {Resource::cpu}, busy), (0.2 * 30 + 0.5 * 20) / 50);
  EXPECT_DOUBLE_EQ(window.covered(61), 62);

  SnapshotWindow blind(600);
  blind.append(at(10, 2, 0.7, {Resource::cpu}));
  blind.append(at(12, 2, 0.7, {Resource::cpu, Resource::memory}));
  EXPECT_EQ(blind.average(60, {Resource::cpu}, busy), 0);
  EXPECT_EQ(blind.covered(60, {Resource::cpu}), 0);
}

TEST(Snapshot, LeanCopyKeepsOnlyBusyApps) {
  Snapshot full = at(10, 2, 0.5);
  full.apps = {AppUsage{.id = "a", .cpuCores = 0.95}, AppUsage{.id = "b", .cpuCores = 0.2},
               AppUsage{.id = "c", .cpuCores = 0.9}};
  const Snapshot lean = full.lean(0.9);
  ASSERT_EQ(lean.apps.size(), 2u);
  EXPECT_EQ(lean.apps[0].id, "a");
  EXPECT_EQ(lean.apps[1].id, "c");
  Snapshot withoutApps = full;
  withoutApps.apps.clear();
  Snapshot leanWithoutApps = lean;
  leanWithoutApps.apps.clear();
  EXPECT_EQ(leanWithoutApps, withoutApps) << "everything else is kept";
  EXPECT_EQ(full.busiestApp()->id, "a");
  EXPECT_EQ(Snapshot{}.busiestApp(), nullptr);
}

}  // namespace
}  // namespace pellwin
