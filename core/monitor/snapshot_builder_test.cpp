#include "core/monitor/snapshot_builder.h"

#include <gtest/gtest.h>

#include <optional>

namespace pellwin {
namespace {

SystemSample sampleAt(double t) {
  SystemSample s = SystemSample::at(t);
  s.bootTime = 1000;
  s.physicalMemoryBytes = 16ULL << 30;
  s.pageSize = 4096;
  return s;
}

ProcessSample process(std::int32_t pid, std::string path, std::uint64_t cpuNanos,
                      std::uint64_t readBytes = 0, std::uint64_t writeBytes = 0,
                      std::uint64_t wakeups = 0) {
  ProcessSample p{.pid = pid, .path = std::move(path)};
  p.name = p.path.substr(p.path.rfind('/') + 1);
  p.cpuTimeNanos = cpuNanos;
  p.diskReadBytes = readBytes;
  p.diskWriteBytes = writeBytes;
  p.wakeups = wakeups;
  return p;
}

const AppUsage* app(const Snapshot& s, std::string_view id) {
  for (const AppUsage& a : s.apps) {
    if (a.id == id) return &a;
  }
  return nullptr;
}

TEST(SnapshotBuilder, GivesNoSnapshotAcrossGapsOrBackwardsClocksButMovesOn) {
  SnapshotBuilder builder;
  EXPECT_FALSE(builder.ingest(sampleAt(2000)).has_value()) << "the first reading only primes";
  EXPECT_FALSE(builder.ingest(sampleAt(2031)).has_value()) << "31 s apart: slept";
  const auto afterGap = builder.ingest(sampleAt(2033));
  ASSERT_TRUE(afterGap.has_value()) << "the reading after the gap became the previous one";
  EXPECT_DOUBLE_EQ(afterGap->interval, 2.0);
  EXPECT_DOUBLE_EQ(afterGap->timestamp, 2033);

  EXPECT_FALSE(builder.ingest(sampleAt(2033)).has_value()) << "same time";
  EXPECT_FALSE(builder.ingest(sampleAt(2030)).has_value()) << "clock went back";
  const auto thirty = builder.ingest(sampleAt(2060));
  ASSERT_TRUE(thirty.has_value()) << "exactly 30 s still counts";
  EXPECT_DOUBLE_EQ(thirty->interval, 30.0);
  EXPECT_DOUBLE_EQ(thirty->uptime, 1060);
}

TEST(SnapshotBuilder, WorksOutMemoryFromPages) {
  SnapshotBuilder builder;
  SystemSample first = sampleAt(0);
  first.swapIns = 100;
  first.swapOuts = 500;
  (void)builder.ingest(first);

  SystemSample second = sampleAt(2);
  second.internalPages = 1'000'000;
  second.purgeablePages = 200'000;
  second.wiredPages = 300'000;
  second.compressorPages = 50'000;
  second.swapIns = 100 + 1000;
  second.swapOuts = 400;  // went backwards
  second.swapUsedBytes = 123;
  second.pressureLevel = 2;
  const auto s = builder.ingest(second);
  ASSERT_TRUE(s.has_value());
  EXPECT_EQ(s->memory.totalBytes, 16ULL << 30);
  EXPECT_EQ(s->memory.usedBytes, (800'000ULL + 300'000 + 50'000) * 4096);
  EXPECT_EQ(s->memory.compressedBytes, 50'000ULL * 4096);
  EXPECT_EQ(s->memory.swapUsedBytes, 123u);
  EXPECT_EQ(s->memory.pressureLevel, 2);
  EXPECT_DOUBLE_EQ(s->memory.swapInBytesPerSecond, 1000.0 * 4096 / 2);
  EXPECT_DOUBLE_EQ(s->memory.swapOutBytesPerSecond, 0) << "a counter going back is no traffic";
  EXPECT_EQ(s->systemRemainderBytes, 300'000ULL * 4096);

  SystemSample third = sampleAt(4);
  third.internalPages = 10;
  third.purgeablePages = 20;     // more purgeable than internal: no app pages at all
  third.wiredPages = 5'000'000;  // more than installed: capped
  const auto capped = builder.ingest(third);
  ASSERT_TRUE(capped.has_value());
  EXPECT_EQ(capped->memory.usedBytes, 16ULL << 30);
  EXPECT_DOUBLE_EQ(capped->memory.usedFraction(), 1.0);

  SystemSample fourth = sampleAt(6);
  fourth.internalPages = 10;
  fourth.purgeablePages = 20;
  fourth.wiredPages = 7;
  const auto floored = builder.ingest(fourth);
  ASSERT_TRUE(floored.has_value());
  EXPECT_EQ(floored->memory.usedBytes, 7u * 4096);
}

TEST(SnapshotBuilder, WorksOutCpuAndDiskRates) {
  SnapshotBuilder builder;
  SystemSample first = sampleAt(0);
  first.cpuBusyTicks = 1000;
  first.cpuTotalTicks = 4000;
  first.diskReadBytes = 1'000'000;
  first.diskWriteBytes = 5'000'000;
  (void)builder.ingest(first);

  SystemSample second = sampleAt(4);
  second.cpuBusyTicks = 1300;
  second.cpuTotalTicks = 5000;
  second.coreCount = 8;
  second.diskReadBytes = 9'000'000;
  second.diskWriteBytes = 1'000;  // a disk went away: counts as no traffic
  second.diskFreeBytes = 40;
  second.diskTotalBytes = 100;
  second.thermal = ThermalLevel::serious;
  second.lowPowerMode = true;
  second.battery = BatteryReading{.percent = 55, .onBattery = true};
  const auto s = builder.ingest(second);
  ASSERT_TRUE(s.has_value());
  EXPECT_DOUBLE_EQ(s->cpu.busyFraction, 0.3);
  EXPECT_EQ(s->cpu.coreCount, 8);
  EXPECT_DOUBLE_EQ(s->disk.readBytesPerSecond, 2'000'000);
  EXPECT_DOUBLE_EQ(s->disk.writeBytesPerSecond, 0);
  EXPECT_EQ(s->disk.freeBytes, 40u);
  EXPECT_EQ(s->disk.totalBytes, 100u);
  EXPECT_EQ(s->thermal, ThermalLevel::serious);
  EXPECT_TRUE(s->lowPowerMode);
  EXPECT_EQ(s->battery, second.battery);

  const struct {
    const char* why;
    std::uint64_t busy, total;
    double expected;
  } cases[] = {
      {"total did not grow", 2000, 5000, 0},
      {"busy grew more than total: capped", 9000, 5500, 1.0},
      {"busy went backwards", 100, 6000, 0},
  };
  double t = 4;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    SystemSample next = sampleAt(t += 2);
    next.cpuBusyTicks = c.busy;
    next.cpuTotalTicks = c.total;
    const auto snapshot = builder.ingest(next);
    ASSERT_TRUE(snapshot.has_value());
    EXPECT_DOUBLE_EQ(snapshot->cpu.busyFraction, c.expected);
  }
}

TEST(SnapshotBuilder, CounterResourcesMissingInEitherReadingAreUnavailableWithZeroRates) {
  SnapshotBuilder builder;
  SystemSample first = sampleAt(0);
  first.unavailable = {Resource::cpu, Resource::diskSpace, Resource::heat};
  first.diskReadBytes = 0;
  (void)builder.ingest(first);

  SystemSample second = sampleAt(2);
  second.unavailable = {Resource::diskActivity};
  second.cpuBusyTicks = 50;
  second.cpuTotalTicks = 100;
  second.diskReadBytes = 1000;
  second.swapIns = 10;
  const auto s = builder.ingest(second);
  ASSERT_TRUE(s.has_value());
  EXPECT_EQ(s->unavailable, (std::set<Resource>{Resource::cpu, Resource::diskActivity}))
      << "disk space and heat only depend on the newer reading";
  EXPECT_DOUBLE_EQ(s->cpu.busyFraction, 0);
  EXPECT_DOUBLE_EQ(s->disk.readBytesPerSecond, 0);
  EXPECT_GT(s->memory.swapInBytesPerSecond, 0) << "memory was read both times";

  SystemSample third = sampleAt(4);
  third.unavailable = {Resource::memory};
  third.swapIns = 20;
  const auto m = builder.ingest(third);
  ASSERT_TRUE(m.has_value());
  EXPECT_EQ(m->unavailable, (std::set<Resource>{Resource::memory, Resource::diskActivity}));
  EXPECT_DOUBLE_EQ(m->memory.swapInBytesPerSecond, 0);
}

TEST(SnapshotBuilder, RatesNeedTheSameProgramUnderTheSamePid) {
  SnapshotBuilder builder([](std::string_view) { return std::optional<std::string>(); });
  SystemSample first = sampleAt(0);
  first.processes = {
      process(1, "/usr/bin/busy", 1'000'000'000, 100, 100, 0),
      process(1, "/usr/bin/shadow", 0),  // a second entry for pid 1: the first one wins
      process(2, "/usr/bin/old", 5'000'000'000),
      process(3, "/usr/bin/shrinks", 9'000'000'000, 900, 900, 900),
      process(5, "/usr/bin/cc1plus", 1'000'000'000),
  };
  first.processes.back().startTime = 1500;
  (void)builder.ingest(first);

  SystemSample second = sampleAt(2);
  second.processes = {
      process(1, "/usr/bin/busy", 3'000'000'000, 4100, 2100, 5000),
      process(2, "/usr/bin/new", 9'000'000'000),  // pid reused by another program
      process(3, "/usr/bin/shrinks", 1, 1, 1, 1),
      process(4, "/usr/bin/newcomer", 7'000'000'000),
      process(5, "/usr/bin/cc1plus", 3'000'000'000),  // the same program started again
  };
  second.processes.back().startTime = 1501;
  const auto s = builder.ingest(second);
  ASSERT_TRUE(s.has_value());
  ASSERT_EQ(s->apps.size(), 5u);

  const AppUsage* busy = app(*s, "proc:busy");
  ASSERT_NE(busy, nullptr);
  EXPECT_DOUBLE_EQ(busy->cpuCores, 1.0);
  EXPECT_DOUBLE_EQ(busy->diskBytesPerSecond, 2000 + 1000);
  // One core, 2,500 wake-ups, 2 KB/s read and 1 KB/s written a second.
  EXPECT_NEAR(busy->energyImpact, 150.000114, 1e-9);
  for (const char* id : {"proc:new", "proc:shrinks", "proc:newcomer", "proc:cc1plus"}) {
    SCOPED_TRACE(id);
    const AppUsage* other = app(*s, id);
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->cpuCores, 0);
    EXPECT_EQ(other->diskBytesPerSecond, 0);
    EXPECT_EQ(other->energyImpact, 0);
  }
  EXPECT_EQ(s->apps.front().id, "proc:busy") << "busiest first";
}

}  // namespace
}  // namespace pellwin
