#include "core/monitor/diagnoser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace pellwin {
namespace {

constexpr std::uint64_t kGiB = 1ULL << 30;

Snapshot calm(double t, double interval) {
  return Snapshot{.timestamp = t,
                  .interval = interval,
                  .memory = {.totalBytes = 16 * kGiB, .usedBytes = 6 * kGiB},
                  .cpu = {.busyFraction = 0.1, .coreCount = 8},
                  .disk = {.freeBytes = 200'000'000'000, .totalBytes = 500'000'000'000},
                  .uptime = 3600};
}

// Snapshots every `interval` seconds covering `seconds`, each changed by `change` (which gets
// the snapshot's index), newest last.
SnapshotWindow stretch(double seconds, double interval,
                       const std::function<void(Snapshot&, int)>& change = {}) {
  SnapshotWindow window(600);
  const int count = static_cast<int>(std::lround(seconds / interval));
  for (int i = 0; i < count; ++i) {
    Snapshot s = calm(10'000 + interval * (i + 1), interval);
    if (change) change(s, i);
    window.append(std::move(s));
  }
  return window;
}

AppUsage app(std::string id, double cores, std::uint64_t bytes = 0, double disk = 0) {
  return AppUsage{.id = "proc:" + id,
                  .name = std::move(id),
                  .processCount = 1,
                  .footprintBytes = bytes,
                  .cpuCores = cores,
                  .diskBytesPerSecond = disk};
}

Health rawHealth(Resource resource, const SnapshotWindow& window) {
  const Diagnoser diagnoser;
  return diagnoser.health(resource, window, *window.latest());
}

TEST(Diagnoser, MemoryIsJudgedByPressureThenSwapTrafficThenSwapInUse) {
  const struct {
    const char* why;
    SnapshotWindow window;
    Health expected;
  } cases[] = {
      {"critical pressure", stretch(2, 2, [](Snapshot& s, int) { s.memory.pressureLevel = 4; }),
       Health::problem},
      {"10 MB/s of swap traffic over 30 s",
       stretch(30, 2,
               [](Snapshot& s, int) {
                 s.memory.swapInBytesPerSecond = 6e6;
                 s.memory.swapOutBytesPerSecond = 4e6;
               }),
       Health::problem},
      {"the same traffic over only 28 s is not yet enough",
       stretch(28, 2,
               [](Snapshot& s, int) {
                 s.memory.swapInBytesPerSecond = 6e6;
                 s.memory.swapOutBytesPerSecond = 4e6;
               }),
       Health::ok},
      {"traffic in snapshots that could not read memory is left out",
       stretch(60, 2,
               [](Snapshot& s, int i) {
                 if (i < 20) s.unavailable = {Resource::memory};
                 s.memory.swapInBytesPerSecond = i < 20 ? 1e9 : 0;
               }),
       Health::ok},
      {"warning pressure", stretch(2, 2, [](Snapshot& s, int) { s.memory.pressureLevel = 2; }),
       Health::strain},
      {"a quarter of memory in swap and swap moved lately",
       stretch(300, 2,
               [](Snapshot& s, int i) {
                 s.memory.swapUsedBytes = 4 * kGiB + 1;
                 if (i == 0) s.memory.swapOutBytesPerSecond = 1;
               }),
       Health::strain},
      {"exactly a quarter in swap is not more than a quarter",
       stretch(300, 2,
               [](Snapshot& s, int) {
                 s.memory.swapUsedBytes = 4 * kGiB;
                 s.memory.swapOutBytesPerSecond = 1;
               }),
       Health::ok},
      {"swap in use but idle for five minutes",
       stretch(300, 2, [](Snapshot& s, int) { s.memory.swapUsedBytes = 8 * kGiB; }), Health::ok},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(rawHealth(Resource::memory, c.window), c.expected);
  }
}

TEST(Diagnoser, CpuNeedsCoverageAndOneBusyAppAloneIsOnlyStrain) {
  const auto busy = [](double share) {
    return [share](Snapshot& s, int) { s.cpu.busyFraction = share; };
  };
  const auto hog = [](Snapshot& s, int) { s.apps = {app("yes", 1.0)}; };
  const struct {
    const char* why;
    SnapshotWindow window;
    Health expected;
  } cases[] = {
      {"90% with 30 s covered", stretch(30, 2, busy(0.9)), Health::problem},
      {"90% with 29 s covered", stretch(29, 1, busy(0.9)), Health::ok},
      {"70%", stretch(60, 2, busy(0.7)), Health::strain},
      {"69%", stretch(60, 2, busy(0.69)), Health::ok},
      {"69.5% is rounded to 70% before it is judged", stretch(60, 2, busy(0.695)), Health::strain},
      {"69.49% is rounded to 69%", stretch(60, 2, busy(0.6949)), Health::ok},
      {"one app on a full core for five minutes", stretch(300, 2, hog), Health::strain},
      {"the same app for less than 95% of five minutes", stretch(284, 2, hog), Health::ok},
      {"samples without the CPU are left out of the average",
       stretch(60, 2,
               [](Snapshot& s, int i) {
                 s.cpu.busyFraction = i % 2 == 0 ? 0.95 : 0.0;
                 if (i % 2 == 1) s.unavailable = {Resource::cpu};
               }),
       Health::problem},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(rawHealth(Resource::cpu, c.window), c.expected);
  }
}

TEST(Diagnoser, BusyAverageIsRoundedToHundredthsHalfToEven) {
  const Diagnoser diagnoser;
  const auto busy = [](double share) {
    return stretch(60, 2, [share](Snapshot& s, int) { s.cpu.busyFraction = share; });
  };
  EXPECT_DOUBLE_EQ(diagnoser.busyAverage(busy(0.125)), 0.12);
  EXPECT_DOUBLE_EQ(diagnoser.busyAverage(busy(0.375)), 0.38);
  EXPECT_DOUBLE_EQ(diagnoser.busyAverage(busy(0.5)), 0.5);
  EXPECT_DOUBLE_EQ(diagnoser.busyAverage(SnapshotWindow(600)), 0);
}

TEST(Diagnoser, CountsAHogOncePerSnapshotAndNamesTheBusiestQualifyingApp) {
  const Diagnoser diagnoser;
  // Listed twice per snapshot but busy in only 80% of them: doubling would make it 160%.
  const auto twice = stretch(300, 2, [](Snapshot& s, int i) {
    const double cores = i % 5 == 0 ? 0.1 : 1.0;
    s.apps = {app("yes", cores), app("yes", cores)};
  });
  EXPECT_FALSE(diagnoser.cpuHog(twice).has_value());

  const auto two = stretch(300, 2, [](Snapshot& s, int i) {
    s.apps = {app("steady", 0.95), app("flaky", i % 3 == 0 ? 0.2 : 1.5)};
    if (i == 149) s.apps = {app("quiet", 0), app("steady", 0.95), app("flaky", 1.5)};
  });
  const auto found = diagnoser.cpuHog(two);
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->id, "proc:steady") << "the busier app now is not busy often enough";

  EXPECT_FALSE(diagnoser.cpuHog(SnapshotWindow(600)).has_value());
}

TEST(Diagnoser, DiskSpaceAndActivityAndHeatFollowTheirLimits) {
  const auto disk = [](std::uint64_t free, std::uint64_t total) {
    return stretch(2, 2, [=](Snapshot& s, int) {
      s.disk.freeBytes = free;
      s.disk.totalBytes = total;
    });
  };
  const auto traffic = [](double read, double swapIn, double seconds) {
    return stretch(seconds, 2, [=](Snapshot& s, int) {
      s.disk.readBytesPerSecond = read;
      s.memory.swapInBytesPerSecond = swapIn;
    });
  };
  const auto thermal = [](ThermalLevel level) {
    return stretch(2, 2, [=](Snapshot& s, int) { s.thermal = level; });
  };
  const struct {
    const char* why;
    Resource resource;
    SnapshotWindow window;
    Health expected;
  } cases[] = {
      {"4.9% free of a big disk", Resource::diskSpace, disk(49'000'000'000, 1'000'000'000'000),
       Health::problem},
      {"exactly 10 GB free but under 5%", Resource::diskSpace,
       disk(10'000'000'000, 1'000'000'000'000), Health::problem},
      {"under 10 GB though plenty in share", Resource::diskSpace,
       disk(9'999'999'999, 20'000'000'000), Health::problem},
      {"unknown size: only the byte limits count", Resource::diskSpace, disk(20'000'000'000, 0),
       Health::strain},
      {"unknown size and plenty free", Resource::diskSpace, disk(31'000'000'000, 0), Health::ok},
      {"14% free", Resource::diskSpace, disk(140'000'000'000, 1'000'000'000'000), Health::strain},
      {"15% and over 30 GB free", Resource::diskSpace, disk(150'000'000'000, 1'000'000'000'000),
       Health::ok},
      {"100 MB/s", Resource::diskActivity, traffic(1e8, 0, 30), Health::strain},
      {"100 MB/s over too short a time", Resource::diskActivity, traffic(1e8, 0, 28), Health::ok},
      {"paging does not count against the disk", Resource::diskActivity, traffic(1.5e8, 6e7, 60),
       Health::ok},
      {"a very busy disk is never a problem", Resource::diskActivity, traffic(1e10, 0, 60),
       Health::strain},
      {"warm", Resource::heat, thermal(ThermalLevel::fair), Health::ok},
      {"hot", Resource::heat, thermal(ThermalLevel::serious), Health::strain},
      {"very hot", Resource::heat, thermal(ThermalLevel::critical), Health::problem},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(rawHealth(c.resource, c.window), c.expected);
  }
}

TEST(Diagnoser, LeavesUnreadableResourcesOutOfTheHealthMap) {
  const Diagnoser diagnoser;
  EXPECT_TRUE(diagnoser.health(SnapshotWindow(600)).empty());
  const auto window = stretch(60, 2, [](Snapshot& s, int) {
    s.thermal = ThermalLevel::critical;
    s.unavailable = {Resource::heat, Resource::diskActivity};
  });
  const auto health = diagnoser.health(window);
  EXPECT_EQ(health, (std::map<Resource, Health>{{Resource::memory, Health::ok},
                                                {Resource::cpu, Health::ok},
                                                {Resource::diskSpace, Health::ok}}));
}

TEST(Diagnoser, TipsComeInOrderWhenTheirConditionsHold) {
  const Diagnoser diagnoser;
  const auto window = stretch(300, 2, [](Snapshot& s, int) {
    s.lowPowerMode = true;
    s.uptime = 15 * 86400 + 86399;
    s.memory.swapUsedBytes = 5 * kGiB;
  });
  const auto tips = diagnoser.tips(window);
  ASSERT_EQ(tips.size(), 3u);
  EXPECT_EQ(tips[0], Tip::lowPowerMode());
  EXPECT_EQ(tips[1], Tip::longUptime(15));
  EXPECT_EQ(tips[2], Tip::idleSwap(5 * kGiB));
  EXPECT_EQ(tips[0].text(), "Low Power Mode is on, which caps speed");
  EXPECT_EQ(tips[0].symbol(), "battery.25");
  EXPECT_EQ(tips[1].text(), "On for 15 days. A restart clears memory that spilled to disk");
  EXPECT_EQ(tips[1].symbol(), "arrow.clockwise");
  EXPECT_EQ(tips[2].text(),
            "5.0 GB of memory that spilled to disk is idle. Harmless now, and a restart clears it");
  EXPECT_EQ(tips[2].symbol(), "memorychip");

  const auto young = stretch(284, 2, [](Snapshot& s, int) {
    s.uptime = 14 * 86400 - 1;
    s.memory.swapUsedBytes = 5 * kGiB;
  });
  EXPECT_TRUE(diagnoser.tips(young).empty()) << "too young, and too little time to call swap idle";
  EXPECT_TRUE(diagnoser.tips(SnapshotWindow(600)).empty());
}

}  // namespace
}  // namespace pellwin
