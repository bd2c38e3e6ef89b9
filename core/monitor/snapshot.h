// The machine over one interval between two readings: memory, CPU, disk and heat, the apps
// with their rates, and which resources could not be measured. Made by SnapshotBuilder; a
// plain value, copied between threads.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "core/monitor/app_usage.h"
#include "core/monitor/readings.h"
#include "core/monitor/resource.h"

namespace pellwin {

struct Snapshot {
  double timestamp = 0;  // the newer reading's time, seconds since 1970
  double interval = 0;   // seconds between the two readings, in (0, 30]
  MemoryReading memory{};
  CPUReading cpu{};
  DiskReading disk{};
  ThermalLevel thermal = ThermalLevel::nominal;
  bool lowPowerMode = false;
  double uptime = 0;                       // seconds since boot at `timestamp`
  std::vector<AppUsage> apps{};            // in the grouping's order, busiest first
  std::uint64_t systemRemainderBytes = 0;  // memory no readable app accounts for
  std::set<Resource> unavailable{};        // not measured over this interval
  std::optional<BatteryReading> battery{};

  // The seconds this snapshot covers (its interval).
  [[nodiscard]] double duration() const { return interval; }
  [[nodiscard]] bool isUnavailable(Resource resource) const {
    return unavailable.contains(resource);
  }
  // The app using the most CPU (the first of equals); null when there are no apps.
  [[nodiscard]] const AppUsage* busiestApp() const;
  // The same snapshot keeping only the apps that use at least `minimumCores`: what older
  // snapshots of a window need for the one-busy-app rule, without a full list of apps each.
  [[nodiscard]] Snapshot lean(double minimumCores) const;

  friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

}  // namespace pellwin
