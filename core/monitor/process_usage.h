// One process's usage over one interval: the newer reading and the rates made from it and the
// reading before. A transient view made by the snapshot builder and consumed by the app grouping
// within the same call; it points into the sample it was made from and never outlives it.
#pragma once

#include "core/monitor/readings.h"

namespace pellwin {

struct ProcessUsage {
  const ProcessSample* sample = nullptr;  // never null once made; owned by the SystemSample
  double cpuCores = 0;                    // CPU seconds per second; 1.0 is one busy core
  double diskBytesPerSecond = 0;          // read plus write
  double energyImpact = 0;
};

}  // namespace pellwin
