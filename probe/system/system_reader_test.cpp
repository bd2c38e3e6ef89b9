#include "probe/system/system_reader.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "testing/proc_fixture.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

// A whole machine in a folder: every group readable, with hand-checked values.
void writeMachine(const ScratchFolder& root) {
  root.write("proc/meminfo",
             "MemTotal: 8000000 kB\nMemFree: 1000000 kB\nMemAvailable: 5000000 kB\n"
             "SwapTotal: 2000000 kB\nSwapFree: 1500000 kB\nSUnreclaim: 100000 kB\n"
             "KernelStack: 20000 kB\nPageTables: 30000 kB\nPercpu: 4000 kB\n"
             "Unevictable: 6000 kB\nZswap: 40000 kB\n");
  root.write("proc/vmstat", "pswpin 123\npswpout 456\n");
  root.write("proc/stat",
             "cpu  100 20 30 400 50 6 7 8 9 10\ncpu0 50 10 15 200 25 3 3 4 9 10\n"
             "cpu1 50 10 15 200 25 3 4 4 0 0\nbtime 1700000000\n");
  root.write("proc/diskstats",
             " 253 0 vda 1 0 2000 0 1 0 4000 0 0 0 0\n 253 1 vda1 1 0 1000 0 1 0 1000 0 0 0 0\n");
  fs::create_directories(root / "sys/block/vda/device");
  root.write("sys/block/zram0/mm_stat", "0 0 8192000 0 0 0 0 0 0\n");
  root.write("sys/class/power_supply/BAT0/type", "Battery\n");
  root.write("sys/class/power_supply/BAT0/status", "Discharging\n");
  root.write("sys/class/power_supply/BAT0/capacity", "57\n");
  root.write("sys/class/power_supply/BAT0/time_to_empty_now", "5400\n");
  root.write("sys/class/thermal/thermal_zone0/type", "x86_pkg_temp\n");
  root.write("sys/class/thermal/thermal_zone0/temp", "85000\n");
  root.write("sys/class/thermal/thermal_zone0/trip_point_0_type", "passive\n");
  root.write("sys/class/thermal/thermal_zone0/trip_point_0_temp", "90000\n");
  root.write("sys/firmware/acpi/platform_profile", "low-power\n");
  testing::writeProcess(root, {.pid = 4242, .comm = "editor", .userTicks = 300});
  fs::create_directories(root / "volume");
}

struct Machine {
  ScratchFolder root;
  double now = 1'700'001'000;
  SystemReader reader;
  Machine()
      : reader(SystemReader::Roots{.proc = root / "proc",
                                   .sys = root / "sys",
                                   .volume = root / "volume",
                                   .systemBus = "unix:path=" + (root / "no-bus").string()},
               SystemReader::Options{
                   .clock = [this] { return now; }, .pageSize = 4096, .ticksPerSecond = 100}) {
    writeMachine(root);
  }
};

TEST(SystemReader, FillsEveryGroupFromTheRoots) {
  Machine machine;
  const SystemSample sample = machine.reader.read();
  EXPECT_TRUE(sample.unavailable.empty());
  EXPECT_EQ(sample.timestamp, machine.now);
  EXPECT_EQ(sample.physicalMemoryBytes, 8'192'000'000u);
  EXPECT_EQ(sample.pageSize, 4096u);
  EXPECT_EQ(sample.freePages, 250'000u);
  EXPECT_EQ(sample.wiredPages, 160'000u * 1024 / 4096);
  EXPECT_EQ(sample.compressorPages, (40'960'000u + 8'192'000u) / 4096);
  EXPECT_EQ((sample.internalPages + sample.wiredPages + sample.compressorPages) * 4096,
            3'000'000u * 1024);
  EXPECT_EQ(sample.swapIns, 123u);
  EXPECT_EQ(sample.swapOuts, 456u);
  EXPECT_EQ(sample.swapUsedBytes, 500'000u * 1024);
  EXPECT_EQ(sample.pressureLevel, 1);
  EXPECT_EQ(sample.cpuBusyTicks, 171u);
  EXPECT_EQ(sample.cpuTotalTicks, 621u);
  EXPECT_EQ(sample.coreCount, 2);
  EXPECT_GT(sample.diskTotalBytes, 0u);
  EXPECT_EQ(sample.diskReadBytes, 2000u * 512);  // the disk, not its partition
  EXPECT_EQ(sample.diskWriteBytes, 4000u * 512);
  EXPECT_EQ(sample.thermal, ThermalLevel::fair);  // within 10 °C of passive
  EXPECT_TRUE(sample.lowPowerMode);
  EXPECT_EQ(sample.bootTime, 1'700'000'000.0);
  ASSERT_EQ(sample.processes.size(), 1u);
  EXPECT_EQ(sample.processes[0].cpuTimeNanos, 3'000'000'000u);
  EXPECT_EQ(sample.battery, (BatteryReading{.percent = 57, .onBattery = true, .minutesLeft = 90}));
}

TEST(SystemReader, AFailedGroupKeepsItsDefaultsAndTheOthersStillRead) {
  Machine machine;
  fs::remove(machine.root / "proc/vmstat");  // the swap counters: memory is all or nothing
  fs::remove(machine.root / "proc/diskstats");
  machine.root.write("proc/stat", "btime 1700000000\n");  // no CPU lines
  fs::remove_all(machine.root / "sys/class");
  fs::remove_all(machine.root / "volume");
  const SystemSample sample = machine.reader.read();

  EXPECT_EQ(sample.unavailable, (std::set<Resource>{Resource::memory, Resource::cpu,
                                                    Resource::diskSpace, Resource::diskActivity}));
  const SystemSample fresh = SystemSample::at(machine.now);
  EXPECT_EQ(sample.physicalMemoryBytes, 0u);
  EXPECT_EQ(sample.pageSize, 16384u);
  EXPECT_EQ(sample.freePages, 0u);
  EXPECT_EQ(sample.pressureLevel, 1);
  EXPECT_EQ(sample.cpuTotalTicks, fresh.cpuTotalTicks);
  EXPECT_EQ(sample.coreCount, 1);
  EXPECT_EQ(sample.diskTotalBytes, 0u);
  EXPECT_EQ(sample.diskReadBytes, 0u);
  EXPECT_EQ(sample.thermal, ThermalLevel::nominal);  // heat is never unavailable
  EXPECT_FALSE(sample.battery.has_value());
  EXPECT_EQ(sample.bootTime, 1'700'000'000.0);
  EXPECT_EQ(sample.processes.size(), 1u);

  fs::remove(machine.root / "proc/stat");
  EXPECT_EQ(machine.reader.read().bootTime, machine.now);  // no boot time: the timestamp
}

TEST(SystemReader, AsksForDiskSpaceAtMostEveryThirtySeconds) {
  Machine machine;
  fs::remove_all(machine.root / "volume");
  auto spaceRead = [&](double at) {
    machine.now = at;
    return !machine.reader.read().unavailable.contains(Resource::diskSpace);
  };
  EXPECT_FALSE(spaceRead(1000));
  fs::create_directories(machine.root / "volume");
  EXPECT_TRUE(spaceRead(1001));  // a failure kept nothing: the next reading asks again

  fs::remove_all(machine.root / "volume");
  EXPECT_TRUE(spaceRead(1030.9));  // under 30 s old: the figures stand unasked
  EXPECT_FALSE(spaceRead(1031));   // 30 s: asked again, and the volume is gone

  fs::create_directories(machine.root / "volume");
  EXPECT_TRUE(spaceRead(1040));
  fs::remove_all(machine.root / "volume");
  EXPECT_FALSE(spaceRead(1039));  // the clock went back: the figures are not trusted
}

TEST(SystemReader, KeepsDiskFiguresWithinThirtySecondsEvenIfTheDiskChanged) {
  Machine machine;
  const SystemSample first = machine.reader.read();
  machine.root.write("volume/big", std::string(8 << 20, 'x'));
  machine.now += 29;
  const SystemSample second = machine.reader.read();
  EXPECT_EQ(second.diskFreeBytes, first.diskFreeBytes);
  EXPECT_EQ(second.diskTotalBytes, first.diskTotalBytes);
}

}  // namespace
}  // namespace pellwin
