// The recorded numeric metrics of history, in their fixed order. A case's raw value is the name
// of its column in the history file, so adding a case changes the file's layout.
#pragma once

#include <optional>
#include <string_view>

#include "core/base/enum_text.h"
#include "core/monitor/resource.h"

namespace pellwin {

enum class HistoryMetric {
  memoryUsed,   // bytes in use
  compressed,   // bytes of compressed memory
  swapUsed,     // bytes of swap in use
  swapIn,       // bytes per second
  swapOut,      // bytes per second
  swapTraffic,  // swap in plus out, bytes per second
  pressure,     // memory pressure level (1, 2 or 4)
  cpuBusy,      // busy share of all cores, 0 to 1
  diskFree,     // free bytes
  diskRead,     // bytes per second
  diskWrite,    // bytes per second
  diskTraffic,  // read plus write, bytes per second
  thermal,      // thermal level 0 to 3
};

[[nodiscard]] constexpr EnumTable<HistoryMetric::thermal> textTable(HistoryMetric) {
  return {{
      {HistoryMetric::memoryUsed, "memoryUsed"},
      {HistoryMetric::compressed, "compressed"},
      {HistoryMetric::swapUsed, "swapUsed"},
      {HistoryMetric::swapIn, "swapIn"},
      {HistoryMetric::swapOut, "swapOut"},
      {HistoryMetric::swapTraffic, "swapTraffic"},
      {HistoryMetric::pressure, "pressure"},
      {HistoryMetric::cpuBusy, "cpuBusy"},
      {HistoryMetric::diskFree, "diskFree"},
      {HistoryMetric::diskRead, "diskRead"},
      {HistoryMetric::diskWrite, "diskWrite"},
      {HistoryMetric::diskTraffic, "diskTraffic"},
      {HistoryMetric::thermal, "thermal"},
  }};
}

inline constexpr auto allHistoryMetrics = enumCases<HistoryMetric>();

[[nodiscard]] constexpr std::string_view rawValue(HistoryMetric metric) { return enumText(metric); }
[[nodiscard]] constexpr std::optional<HistoryMetric> historyMetricFromRawValue(
    std::string_view raw) {
  return parseEnum<HistoryMetric>(raw);
}

// The resource whose reading the metric comes from: a snapshot that could not measure that
// resource has no value for the metric.
[[nodiscard]] Resource resourceOf(HistoryMetric metric);

}  // namespace pellwin
