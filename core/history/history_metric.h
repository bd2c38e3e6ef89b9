// The recorded numeric metrics of history, in their fixed order. A case's raw value is the name
// of its column in the history file, so adding a case changes the file's layout.
#pragma once

#include <array>
#include <optional>
#include <string_view>

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

inline constexpr std::array<HistoryMetric, 13> allHistoryMetrics = {
    HistoryMetric::memoryUsed, HistoryMetric::compressed, HistoryMetric::swapUsed,
    HistoryMetric::swapIn,     HistoryMetric::swapOut,    HistoryMetric::swapTraffic,
    HistoryMetric::pressure,   HistoryMetric::cpuBusy,    HistoryMetric::diskFree,
    HistoryMetric::diskRead,   HistoryMetric::diskWrite,  HistoryMetric::diskTraffic,
    HistoryMetric::thermal};

[[nodiscard]] std::string_view rawValue(HistoryMetric metric);
[[nodiscard]] std::optional<HistoryMetric> historyMetricFromRawValue(std::string_view raw);

// The resource whose reading the metric comes from: a snapshot that could not measure that
// resource has no value for the metric.
[[nodiscard]] Resource resourceOf(HistoryMetric metric);

}  // namespace pellwin
