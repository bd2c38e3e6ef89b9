// Disk traffic of the whole machine (/proc/diskstats) and the free and total space of one
// volume (statvfs). Stateless; safe from any thread. Bytes throughout.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

// One line of /proc/diskstats. Sectors are always 512 bytes, whatever the device's block size.
struct DiskStatLine {
  std::string name{};
  std::uint64_t sectorsRead = 0;
  std::uint64_t sectorsWritten = 0;
  friend bool operator==(const DiskStatLine&, const DiskStatLine&) = default;
};

struct DiskTotals {
  std::uint64_t readBytes = 0;
  std::uint64_t writeBytes = 0;
  friend bool operator==(const DiskTotals&, const DiskTotals&) = default;
};

struct DiskSpace {
  std::uint64_t freeBytes = 0;  // what an ordinary user can still write
  std::uint64_t totalBytes = 0;
  friend bool operator==(const DiskSpace&, const DiskSpace&) = default;
};

// Lines that are too short or hold a malformed number are left out.
[[nodiscard]] std::vector<DiskStatLine> parseDiskstats(std::string_view text);

// Sums the lines of whole disks, as `isWholeDisk` tells them. Absent when no line is a whole
// disk or the sum overflows.
[[nodiscard]] std::optional<DiskTotals> sumWholeDisks(
    const std::vector<DiskStatLine>& lines,
    const std::function<bool(std::string_view)>& isWholeDisk);

namespace DiskReader {

// Cumulative bytes read and written since boot by the physical disks: the names in
// sysRoot/block with a device link. That leaves out partitions, loop, ram, zram, device-mapper
// and md devices, whose traffic the physical disks under them already count.
[[nodiscard]] std::optional<DiskTotals> totals(const std::filesystem::path& procRoot,
                                               const std::filesystem::path& sysRoot);

// Free (f_bavail) and total (f_blocks) space of the file system holding `volume`.
[[nodiscard]] std::optional<DiskSpace> space(const std::filesystem::path& volume);

}  // namespace DiskReader
}  // namespace pellwin
