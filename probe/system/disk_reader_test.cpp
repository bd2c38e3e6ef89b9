#include "probe/system/disk_reader.h"

#include <gtest/gtest.h>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

constexpr const char* diskstats =
    " 253       0 vda 1000 5 2000 300 500 7 4000 600 0 900 900 0 0 0 0 10 20\n"
    " 253       1 vda1 900 5 1800 300 400 7 3900 600 0 900 900\n"
    " 259       0 nvme0n1 10 0 100 1 20 0 200 2 0 3 3\n"
    " 259       1 nvme0n1p1 10 0 100 1 20 0 200 2 0 3 3\n"
    "   7       0 loop0 50 0 60 1 0 0 0 0 0 1 1\n"
    " 251       0 zram0 70 0 80 1 90 0 100 1 0 1 1\n"
    " 254       0 dm-0 800 0 1600 100 400 0 3200 50 0 500 500\n"
    " 104       0 cciss/c0d0 1 0 2 0 3 0 4 0 0 0 0\n"
    " 8 0 sdz 1 0 notanumber 0 3 0 4\n"
    " 8 16 sdy 1 0\n";

TEST(ParseDiskstats, KeepsWellFormedLines) {
  const auto lines = parseDiskstats(diskstats);
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0], (DiskStatLine{.name = "vda", .sectorsRead = 2000, .sectorsWritten = 4000}));
  EXPECT_EQ(lines[7].name, "cciss/c0d0");
}

TEST(DiskReader, SumsWholePhysicalDisksOnlyInBytes) {
  testing::ScratchFolder root;
  root.write("proc/diskstats", diskstats);
  // Whole disks have a device link; partitions live below their disk; virtual devices have
  // no device.
  for (const char* disk : {"vda", "nvme0n1", "cciss!c0d0"}) {
    fs::create_directories(root / "sys/block" / disk / "device");
  }
  fs::create_directories(root / "sys/block/vda/vda1");
  for (const char* virtualDisk : {"loop0", "zram0", "dm-0"}) {
    fs::create_directories(root / "sys/block" / virtualDisk);
  }
  const auto totals = DiskReader::totals(root / "proc", root / "sys");
  ASSERT_TRUE(totals.has_value());
  EXPECT_EQ(totals->readBytes, (2000u + 100 + 2) * 512);
  EXPECT_EQ(totals->writeBytes, (4000u + 200 + 4) * 512);

  testing::ScratchFolder empty;
  EXPECT_FALSE(DiskReader::totals(empty / "proc", empty / "sys").has_value());
  empty.write("proc/diskstats", diskstats);  // no whole disk known to sysfs
  EXPECT_FALSE(DiskReader::totals(empty / "proc", empty / "sys").has_value());
}

TEST(SumWholeDisks, RefusesASumPast64Bits) {
  const std::vector<DiskStatLine> lines = {
      {.name = "a", .sectorsRead = 36028797018963967u, .sectorsWritten = 0},
      {.name = "b", .sectorsRead = 36028797018963967u, .sectorsWritten = 0}};
  EXPECT_FALSE(sumWholeDisks(lines, [](std::string_view) { return true; }).has_value());
  EXPECT_TRUE(sumWholeDisks({lines[0]}, [](std::string_view) { return true; }).has_value());
}

TEST(DiskReader, ReadsTheSpaceOfAVolume) {
  testing::ScratchFolder folder;
  const auto space = DiskReader::space(folder.path());
  ASSERT_TRUE(space.has_value());
  EXPECT_GT(space->totalBytes, 0u);
  EXPECT_LE(space->freeBytes, space->totalBytes);
  EXPECT_FALSE(DiskReader::space(folder / "missing").has_value());
}

}  // namespace
}  // namespace pellwin
