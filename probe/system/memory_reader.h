// The memory group of a machine reading, from /proc/meminfo, /proc/vmstat,
// /proc/pressure/memory and the zram devices in /sys/block. All or nothing: when a required
// counter is missing the whole group is absent. Page counts are in pages of `pageSize` bytes.
// Parsers are pure; read() takes the roots so tests point it at fixture trees.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace pellwin {

// /proc/meminfo fields in kB, as the kernel prints them. The first five are required; the rest
// read 0 on kernels that lack them (SecPageTables arrived in 6.0, Zswap in 5.19).
struct Meminfo {
  std::uint64_t totalKB = 0;
  std::uint64_t freeKB = 0;
  std::uint64_t availableKB = 0;
  std::uint64_t swapTotalKB = 0;
  std::uint64_t swapFreeKB = 0;
  std::uint64_t sUnreclaimKB = 0;
  std::uint64_t kernelStackKB = 0;
  std::uint64_t pageTablesKB = 0;
  std::uint64_t secPageTablesKB = 0;
  std::uint64_t percpuKB = 0;
  std::uint64_t unevictableKB = 0;
  std::uint64_t zswapKB = 0;
  std::uint64_t hugePagesTotal = 0;
  std::uint64_t hugePagesFree = 0;
  std::uint64_t hugePageSizeKB = 0;
  friend bool operator==(const Meminfo&, const Meminfo&) = default;
};

// Cumulative pages swapped in and out since boot (/proc/vmstat pswpin, pswpout).
struct SwapTraffic {
  std::uint64_t pagesIn = 0;
  std::uint64_t pagesOut = 0;
  friend bool operator==(const SwapTraffic&, const SwapTraffic&) = default;
};

// The ten-second averages of /proc/pressure/memory, in percent of wall time.
struct MemoryPressure {
  double someAvg10 = 0;
  double fullAvg10 = 0;
  friend bool operator==(const MemoryPressure&, const MemoryPressure&) = default;
};

// The memory fields of a SystemSample.
struct MemoryCounters {
  std::uint64_t physicalMemoryBytes = 0;
  std::uint64_t pageSize = 0;
  std::uint64_t freePages = 0;
  std::uint64_t internalPages = 0;
  std::uint64_t purgeablePages = 0;
  std::uint64_t wiredPages = 0;
  std::uint64_t compressorPages = 0;
  std::uint64_t swapIns = 0;
  std::uint64_t swapOuts = 0;
  std::uint64_t swapUsedBytes = 0;
  int pressureLevel = 1;
  friend bool operator==(const MemoryCounters&, const MemoryCounters&) = default;
};

// Absent when MemTotal (or any of the five required fields) is missing or malformed, or
// MemTotal is 0.
[[nodiscard]] std::optional<Meminfo> parseMeminfo(std::string_view text);
[[nodiscard]] std::optional<SwapTraffic> parseVmstat(std::string_view text);
// Absent when either line or its avg10 is missing (PSI off: the file is absent or empty).
[[nodiscard]] std::optional<MemoryPressure> parseMemoryPressure(std::string_view text);
// The third field of a zram device's mm_stat: the RAM the compressed store really takes, bytes.
[[nodiscard]] std::optional<std::uint64_t> parseZramMemoryUsed(std::string_view mmStat);

// 4 critical, 2 warning, 1 normal, from PSI when there is some and from the room left in memory.
[[nodiscard]] int memoryPressureLevel(const Meminfo& meminfo,
                                      const std::optional<MemoryPressure>& pressure);

// Combines the parsed files into the sample's fields. Absent when a figure overflows 64 bits
// or the page size is 0.
[[nodiscard]] std::optional<MemoryCounters> memoryCounters(
    const Meminfo& meminfo, const SwapTraffic& swap, std::uint64_t zramBytes,
    const std::optional<MemoryPressure>& pressure, std::uint64_t pageSize);

namespace MemoryReader {

// Reads the files under the roots. meminfo and vmstat are required; pressure and zram are not.
[[nodiscard]] std::optional<MemoryCounters> read(const std::filesystem::path& procRoot,
                                                 const std::filesystem::path& sysRoot,
                                                 std::uint64_t pageSize);

}  // namespace MemoryReader
}  // namespace pellwin
