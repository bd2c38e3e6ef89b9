#include "core/monitor/snapshot.h"

namespace pellwin {

const AppUsage* Snapshot::busiestApp() const {
  const AppUsage* busiest = nullptr;
  for (const AppUsage& app : apps) {
    if (busiest == nullptr || app.cpuCores > busiest->cpuCores) busiest = &app;
  }
  return busiest;
}

Snapshot Snapshot::lean(double minimumCores) const {
  Snapshot copy{.timestamp = timestamp,
                .interval = interval,
                .memory = memory,
                .cpu = cpu,
                .disk = disk,
                .thermal = thermal,
                .lowPowerMode = lowPowerMode,
                .uptime = uptime,
                .apps = {},
                .systemRemainderBytes = systemRemainderBytes,
                .unavailable = unavailable,
                .battery = battery};
  for (const AppUsage& app : apps) {
    if (app.cpuCores >= minimumCores) copy.apps.push_back(app);
  }
  return copy;
}

}  // namespace pellwin
