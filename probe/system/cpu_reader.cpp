#include "probe/system/cpu_reader.h"

#include <array>

#include "core/base/checked_math.h"
#include "probe/key_value_text.h"
#include "probe/text_number.h"

namespace pellwin {

namespace {

// Columns of the "cpu" line, in order. guest and guest_nice are already inside user and nice,
// so they are never added (proc(5)).
enum Column { user, nice, system, idle, iowait, irq, softirq, steal, columnCount };

std::optional<CPUTicks> parseCPULine(std::string_view rest) {
  std::array<std::uint64_t, columnCount> value{};
  int count = 0;
  while (count < columnCount) {
    const auto word = nextWord(rest);
    if (word.empty()) break;
    const auto number = parseUnsigned(word);
    if (!number) return std::nullopt;
    value[static_cast<std::size_t>(count++)] = *number;
  }
  // Kernels before 2.6 had only the first four columns; later ones are then 0.
  if (count < 4) return std::nullopt;
  std::optional<std::uint64_t> busy = 0;
  for (const Column c : {user, nice, system, irq, softirq, steal}) {
    if (busy) busy = checkedSum(*busy, value[c]);
  }
  const auto idleAll = checkedSum(value[idle], value[iowait]);
  const auto total = busy && idleAll ? checkedSum(*busy, *idleAll) : std::nullopt;
  if (!total) return std::nullopt;
  return CPUTicks{.busy = *busy, .total = *total};
}

bool isProcessorLine(std::string_view line) {
  if (!line.starts_with("cpu") || line.size() < 4) return false;
  const char digit = line[3];
  return digit >= '0' && digit <= '9';
}

}  // namespace

std::optional<CPUTicks> parseCPUTicks(std::string_view procStat) {
  std::optional<CPUTicks> ticks;
  bool sawMachineLine = false;
  int processors = 0;
  forEachLine(procStat, [&](std::string_view line) {
    if (line.starts_with("cpu ") && !sawMachineLine) {
      sawMachineLine = true;
      ticks = parseCPULine(line.substr(4));
    } else if (isProcessorLine(line)) {
      ++processors;
    }
  });
  if (!ticks || processors == 0) return std::nullopt;
  ticks->processorCount = processors;
  return ticks;
}

std::optional<double> parseBootTime(std::string_view procStat) {
  std::optional<double> boot;
  forEachKeyValue(procStat, ' ', [&](std::string_view key, std::string_view value) {
    if (key != "btime") return;
    if (const auto seconds = parseUnsigned(value)) boot = static_cast<double>(*seconds);
  });
  return boot;
}

}  // namespace pellwin
