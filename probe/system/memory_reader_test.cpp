#include "probe/system/memory_reader.h"

#include <gtest/gtest.h>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

// A meminfo with every field the reader uses, hand-checked against the expectations below.
constexpr const char* meminfoText =
    "MemTotal:        8000000 kB\n"
    "MemFree:         1000000 kB\n"
    "MemAvailable:    5000000 kB\n"
    "Buffers:          100000 kB\n"
    "SwapTotal:       2000000 kB\n"
    "SwapFree:        1500000 kB\n"
    "Zswap:             40000 kB\n"
    "Unevictable:        6000 kB\n"
    "SUnreclaim:       100000 kB\n"
    "KernelStack:       20000 kB\n"
    "PageTables:        30000 kB\n"
    "Percpu:             4000 kB\n"
    "HugePages_Total:      10\n"
    "HugePages_Free:        4\n"
    "Hugepagesize:       2048 kB";  // no final line end

TEST(ParseMeminfo, RejectsInputThatWouldMisreportMemory) {
  const struct {
    const char* why;
    const char* text;
  } cases[] = {
      {"empty", ""},
      {"no MemAvailable (kernels before 3.14)",
       "MemTotal: 10 kB\nMemFree: 1 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n"},
      {"digits then letters",
       "MemTotal: 12x kB\nMemFree: 1 kB\nMemAvailable: 1 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n"},
      {"a number too big for 64 bits",
       "MemTotal: 99999999999999999999 kB\nMemFree: 1 kB\nMemAvailable: 1 kB\nSwapTotal: 0 kB\n"
       "SwapFree: 0 kB\n"},
      {"no memory at all",
       "MemTotal: 0 kB\nMemFree: 0 kB\nMemAvailable: 0 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_FALSE(parseMeminfo(c.text).has_value());
  }
}

TEST(MemoryCounters, MakeUsedMemoryComeToTotalLessAvailable) {
  const auto meminfo = parseMeminfo(meminfoText);
  ASSERT_TRUE(meminfo.has_value());
  const auto counters = memoryCounters(*meminfo, SwapTraffic{.pagesIn = 123, .pagesOut = 456},
                                       8'192'000, MemoryPressure{}, 4096);
  ASSERT_TRUE(counters.has_value());
  EXPECT_EQ(counters->physicalMemoryBytes, 8'192'000'000u);
  EXPECT_EQ(counters->freePages, 250'000u);
  // SUnreclaim + KernelStack + PageTables + Percpu + Unevictable + 6 huge pages of 2 MB.
  EXPECT_EQ(counters->wiredPages, 172'288u * 1024 / 4096);
  // Zswap's pool plus the zram device's RAM.
  EXPECT_EQ(counters->compressorPages, (40'960'000u + 8'192'000u) / 4096);
  EXPECT_EQ(counters->purgeablePages, 0u);
  const std::uint64_t usedPages =
      counters->internalPages + counters->wiredPages + counters->compressorPages;
  EXPECT_EQ(usedPages * 4096, 3'000'000u * 1024);  // MemTotal − MemAvailable
  EXPECT_EQ(counters->swapIns, 123u);
  EXPECT_EQ(counters->swapOuts, 456u);
  EXPECT_EQ(counters->swapUsedBytes, 500'000u * 1024);
  EXPECT_EQ(counters->pressureLevel, 1);

  // Kernel memory larger than what is used leaves no app pages rather than wrapping around.
  Meminfo tight = *meminfo;
  tight.availableKB = tight.totalKB - 1000;
  const auto floored = memoryCounters(tight, {}, 0, std::nullopt, 4096);
  ASSERT_TRUE(floored.has_value());
  EXPECT_EQ(floored->internalPages, 0u);
  EXPECT_FALSE(memoryCounters(*meminfo, {}, 0, std::nullopt, 0).has_value());
}

TEST(MemoryPressureLevel, WarnsOnStallsOnlyWhenMemoryIsReallyTaken) {
  const Meminfo base{.totalKB = 1000, .availableKB = 400, .swapTotalKB = 1000, .swapFreeKB = 900};
  auto with = [&](std::uint64_t available, std::uint64_t swapFree) {
    Meminfo m = base;
    m.availableKB = available;
    m.swapFreeKB = swapFree;
    return m;
  };
  const struct {
    const char* why;
    Meminfo meminfo;
    std::optional<MemoryPressure> pressure;
    int level;
  } cases[] = {
      {"calm", base, MemoryPressure{.someAvg10 = 1, .fullAvg10 = 0}, 1},
      {"full stalls: thrashing", base, MemoryPressure{.someAvg10 = 20, .fullAvg10 = 10}, 4},
      {"some stalls at 40", base, MemoryPressure{.someAvg10 = 40, .fullAvg10 = 0}, 4},
      {"some stalls at 10", base, MemoryPressure{.someAvg10 = 10, .fullAvg10 = 0}, 2},
      {"full stalls at 2", base, MemoryPressure{.someAvg10 = 0, .fullAvg10 = 2}, 2},
      {"stalls with half of memory free: a big file copy", with(600, 900),
       MemoryPressure{.someAvg10 = 15, .fullAvg10 = 3}, 1},
      {"no PSI, under 10 % available", with(90, 900), std::nullopt, 2},
      {"no PSI, under 3 % available with swap left", with(20, 900), std::nullopt, 2},
      {"under 3 % available and swap nearly full", with(20, 50), std::nullopt, 4},
      {"under 3 % available and no swap", Meminfo{.totalKB = 1000, .availableKB = 20}, std::nullopt,
       4},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(memoryPressureLevel(c.meminfo, c.pressure), c.level);
  }
}

TEST(ParseMemoryFiles, ReadsVmstatPressureAndZram) {
  EXPECT_EQ(parseVmstat("nr_free_pages 12\npswpin 7\npswpout 9\npgfault 1"),
            (SwapTraffic{.pagesIn = 7, .pagesOut = 9}));
  EXPECT_FALSE(parseVmstat("nr_free_pages 12\npswpin 7\n").has_value());
  EXPECT_EQ(parseMemoryPressure("some avg10=12.50 avg60=1.00 avg300=0.00 total=123\n"
                                "full avg10=0.25 avg60=0.00 avg300=0.00 total=4\n"),
            (MemoryPressure{.someAvg10 = 12.5, .fullAvg10 = 0.25}));
  EXPECT_FALSE(parseMemoryPressure("").has_value());
  EXPECT_FALSE(parseMemoryPressure("some avg10=x avg60=1.00\nfull avg10=0.25\n").has_value());
  EXPECT_EQ(parseZramMemoryUsed("  4096  1024  8192  0  8192  0  0  0  0\n"), 8192u);
  EXPECT_FALSE(parseZramMemoryUsed("4096 1024").has_value());
}

TEST(MemoryReader, ReadsTheGroupOrNothing) {
  testing::ScratchFolder root;
  root.write("proc/meminfo", meminfoText);
  root.write("proc/vmstat", "pswpin 123\npswpout 456\n");
  root.write("proc/pressure/memory",
             "some avg10=12.50 avg60=0 avg300=0 total=1\n"
             "full avg10=0.00 avg60=0 avg300=0 total=0\n");
  root.write("sys/block/zram0/mm_stat", "16384 4096 8192000 0 8192000 0 0 0 0\n");
  root.write("sys/block/zram1/mm_stat", "");  // set up but never used
  const auto counters = MemoryReader::read(root / "proc", root / "sys", 4096);
  ASSERT_TRUE(counters.has_value());
  EXPECT_EQ(counters->compressorPages, 12'000u);
  EXPECT_EQ(counters->pressureLevel, 1);  // stalls, but more than half of memory available

  std::filesystem::remove(root / "proc/pressure/memory");
  EXPECT_TRUE(MemoryReader::read(root / "proc", root / "sys", 4096).has_value());
  std::filesystem::remove(root / "proc/vmstat");
  EXPECT_FALSE(MemoryReader::read(root / "proc", root / "sys", 4096).has_value());
}

}  // namespace
}  // namespace pellwin
