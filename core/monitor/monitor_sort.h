// The measures the monitor's app list can be ordered by, largest first. Raw values are the
// texts kept with the user's choice.
#pragma once

#include <optional>
#include <string_view>

#include "core/base/enum_text.h"
#include "core/monitor/app_usage.h"

namespace pellwin {

enum class MonitorSort { memory, cpu, disk, energy };

[[nodiscard]] constexpr EnumTable<MonitorSort::energy> textTable(MonitorSort) {
  return {{
      {MonitorSort::memory, "memory"},
      {MonitorSort::cpu, "cpu"},
      {MonitorSort::disk, "disk"},
      {MonitorSort::energy, "energy"},
  }};
}

inline constexpr auto allMonitorSorts = enumCases<MonitorSort>();

[[nodiscard]] constexpr std::string_view rawValue(MonitorSort sort) { return enumText(sort); }
[[nodiscard]] constexpr std::optional<MonitorSort> monitorSortFromRawValue(std::string_view raw) {
  return parseEnum<MonitorSort>(raw);
}

// The app's figure for `sort`: footprint bytes, cores busy, disk bytes per second or energy
// impact.
[[nodiscard]] constexpr double measure(const AppUsage& app, MonitorSort sort) {
  switch (sort) {
    case MonitorSort::memory: return static_cast<double>(app.footprintBytes);
    case MonitorSort::cpu: return app.cpuCores;
    case MonitorSort::disk: return app.diskBytesPerSecond;
    case MonitorSort::energy: return app.energyImpact;
  }
  return 0;
}

}  // namespace pellwin
