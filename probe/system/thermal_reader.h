// The machine's thermal level from the CPU-relevant thermal zones and hwmon sensors of sysfs,
// their trip points and limits, the processor cooling devices and the throttle counters.
// A machine without any (a virtual machine) reads nominal: heat is never unavailable.
// Used from the sampler thread only; it keeps the last throttle count between readings.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/monitor/resource.h"

namespace pellwin {

// One temperature sensor with its limits, in millidegrees Celsius.
struct ThermalSensor {
  std::int64_t temperature = 0;
  std::optional<std::int64_t> passive{};  // the kernel starts throttling here
  std::optional<std::int64_t> hot{};
  std::optional<std::int64_t> critical{};   // emergency shutdown
  std::optional<std::int64_t> max{};        // hwmon's high limit
  std::vector<std::int64_t> activeTrips{};  // fan stages, ascending
  bool criticalAlarm = false;
  friend bool operator==(const ThermalSensor&, const ThermalSensor&) = default;
};

struct ThermalFacts {
  std::vector<ThermalSensor> sensors{};
  bool processorCooling = false;  // a processor cooling device is at a state above 0
  bool throttled = false;         // the CPU throttle counters grew lately
  friend bool operator==(const ThermalFacts&, const ThermalFacts&) = default;
};

// critical at or above a hot trip, within 5 °C of a critical limit, or on a critical alarm;
// serious while throttling or at or above a passive trip or a sensor's max; fair within 10 °C
// of that, or past the second fan stage; nominal otherwise. The worst sensor counts.
[[nodiscard]] ThermalLevel thermalLevel(const ThermalFacts& facts);

class ThermalReader {
 public:
  explicit ThermalReader(std::filesystem::path sysRoot);

  // `now` is seconds since 1970; it times the sensor rediscovery and the throttle window.
  [[nodiscard]] ThermalLevel read(double now);

  // Throttle counters that grew within this many seconds count as throttling now.
  static constexpr double throttleWindow = 10.0;
  // Sensors and their trip points are found again this often; temperatures every reading.
  static constexpr double rediscoveryInterval = 60.0;

 private:
  struct Source {
    std::filesystem::path temperature{};
    std::optional<std::filesystem::path> alarm{};
    ThermalSensor limits{};
  };
  void discover();
  [[nodiscard]] bool throttledAt(double now);

  std::filesystem::path sysRoot_;
  std::vector<Source> sources_;
  std::vector<std::filesystem::path> coolingStates_;
  std::vector<std::filesystem::path> throttleCounters_;
  std::optional<double> discoveredAt_;
  std::optional<std::uint64_t> lastThrottleCount_;
  std::optional<double> lastThrottleGrowth_;
};

}  // namespace pellwin
