// The machine's CPU tick counters and boot time, parsed from the text of /proc/stat (read once
// per reading by the system reader). Ticks are USER_HZ ticks summed over all processors,
// cumulative since boot. Pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace pellwin {

struct CPUTicks {
  std::uint64_t busy = 0;   // user + nice + system + irq + softirq + steal
  std::uint64_t total = 0;  // busy + idle + iowait
  int processorCount = 0;   // the cpuN lines: the online processors
  friend bool operator==(const CPUTicks&, const CPUTicks&) = default;
};

// Absent without a "cpu" line of at least four numbers, a malformed or overflowing number on
// it, or without any "cpuN" line.
[[nodiscard]] std::optional<CPUTicks> parseCPUTicks(std::string_view procStat);
// The "btime" line: seconds since 1970.
[[nodiscard]] std::optional<double> parseBootTime(std::string_view procStat);

}  // namespace pellwin
