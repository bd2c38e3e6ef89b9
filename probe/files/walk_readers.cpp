#include "probe/files/walk_readers.h"

#include <sys/sysmacros.h>

#include <algorithm>
#include <string>
#include <system_error>

#include "probe/proc_file.h"

namespace pellwin {

namespace {

// Drivers whose disks keep the kernel's default rotational flag: the host never says what is
// behind them, and it is an SSD more often than not.
bool rotationalFlagIsDefault(const std::filesystem::path& disk) {
  std::error_code error;
  const auto driver = std::filesystem::read_symlink(disk / "device" / "driver", error);
  if (error) return false;
  const std::string name = driver.filename().string();
  return name == "virtio_blk" || name == "vbd";
}

}  // namespace

DiskKind diskKind(const std::filesystem::path& sysRoot, std::uint64_t device) {
  const auto major = ::major(static_cast<dev_t>(device));
  const auto minor = ::minor(static_cast<dev_t>(device));
  // Major 0 numbers file systems that have no block device of their own.
  if (major == 0 || sysRoot.empty()) return DiskKind::unknown;
  std::error_code error;
  auto disk = std::filesystem::canonical(
      sysRoot / "dev" / "block" / (std::to_string(major) + ":" + std::to_string(minor)), error);
  if (error) return DiskKind::unknown;
  // A partition keeps its queue settings in the whole disk, the folder above it.
  if (std::filesystem::exists(disk / "partition", error)) disk = disk.parent_path();
  const auto flag = readAttribute(disk / "queue" / "rotational");
  if (flag == "0") return DiskKind::solid;
  if (flag != "1" || rotationalFlagIsDefault(disk)) return DiskKind::unknown;
  return DiskKind::rotating;
}

std::size_t walkReaderThreads(DiskKind kind, unsigned processors) {
  if (kind == DiskKind::rotating) return 0;
  return std::clamp<std::size_t>(std::size_t{8} * processors, 8, 16);
}

}  // namespace pellwin
