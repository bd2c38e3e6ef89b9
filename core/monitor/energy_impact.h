// A single figure for how much an app costs the machine: one fully busy core scores 100,
// 5,000 wake-ups a second score another 100, disk traffic adds little.
#pragma once

namespace pellwin::EnergyImpact {

// `cpuCores` is CPU time per wall-clock second; rates are never negative. Not clamped.
[[nodiscard]] constexpr double score(double cpuCores, double wakeupsPerSecond,
                                     double readBytesPerSecond, double writeBytesPerSecond) {
  return (cpuCores + wakeupsPerSecond * 0.0002 + readBytesPerSecond * 4.5e-10 +
          writeBytesPerSecond * 2.4e-10) *
         100;
}

}  // namespace pellwin::EnergyImpact
