#include "probe/files/walk_readers.h"

#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

// A sys tree as the kernel lays it out: /sys/dev/block/MAJ:MIN links to the device's folder,
// a partition's folder sits inside its disk's, and the driver is a link under `device`.
void addDisk(const fs::path& sys, const std::string& name, const std::string& number,
             const std::string& rotational, const std::string& driver) {
  const fs::path disk = sys / "devices" / "virtual" / name;
  write(disk / "queue" / "rotational", rotational);
  fs::create_directories(sys / "bus" / driver);
  fs::create_directories(disk / "device");
  fs::create_directory_symlink(sys / "bus" / driver, disk / "device" / "driver");
  fs::create_directories(sys / "dev" / "block");
  fs::create_directory_symlink(disk, sys / "dev" / "block" / number);
}

void addPartition(const fs::path& sys, const std::string& disk, const std::string& name,
                  const std::string& number) {
  const fs::path folder = sys / "devices" / "virtual" / disk / name;
  write(folder / "partition", "1\n");
  fs::create_directory_symlink(folder, sys / "dev" / "block" / number);
}

TEST(DiskKind, ComesFromTheWholeDisksRotationalFlagWhenTheDiskCanKnowIt) {
  testing::ScratchFolder scratch;
  const fs::path sys = scratch.path() / "sys";
  addDisk(sys, "sda", "8:0", "1\n", "sd");
  addPartition(sys, "sda", "sda2", "8:2");
  addDisk(sys, "nvme0n1", "259:0", "0\n", "nvme");
  addPartition(sys, "nvme0n1", "nvme0n1p1", "259:1");
  addDisk(sys, "vda", "254:0", "1\n", "virtio_blk");
  addDisk(sys, "xvda", "202:0", "1\n", "vbd");
  addDisk(sys, "odd", "250:0", "yes\n", "sd");
  const struct {
    const char* why;
    unsigned major;
    unsigned minor;
    DiskKind expected;
  } cases[] = {
      {"a rotating disk's partition", 8, 2, DiskKind::rotating},
      {"a rotating disk itself", 8, 0, DiskKind::rotating},
      {"a solid-state disk's partition", 259, 1, DiskKind::solid},
      {"virtio keeps the kernel's default flag", 254, 0, DiskKind::unknown},
      {"so does Xen", 202, 0, DiskKind::unknown},
      {"a flag that is neither 0 nor 1", 250, 0, DiskKind::unknown},
      {"a device sys does not know", 8, 16, DiskKind::unknown},
      {"no block device (btrfs, tmpfs)", 0, 45, DiskKind::unknown},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(diskKind(sys, makedev(c.major, c.minor)), c.expected);
  }
  EXPECT_EQ(diskKind({}, makedev(8, 0)), DiskKind::unknown);
}

TEST(WalkReaderThreads, NoneOnARotatingDiskAndAFewPerProcessorOtherwise) {
  const struct {
    const char* why;
    DiskKind kind;
    unsigned processors;
    std::size_t expected;
  } cases[] = {
      {"rotating", DiskKind::rotating, 8, 0},
      {"one processor still waits on several reads", DiskKind::solid, 1, 8},
      {"two processors", DiskKind::unknown, 2, 16},
      {"four processors, capped", DiskKind::solid, 4, 16},
      {"capped", DiskKind::solid, 64, 16},
      {"processors unknown (0)", DiskKind::solid, 0, 8},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(walkReaderThreads(c.kind, c.processors), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
