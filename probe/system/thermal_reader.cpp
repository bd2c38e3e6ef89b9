#include "probe/system/thermal_reader.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "probe/proc_file.h"
#include "probe/text_number.h"

namespace pellwin {

namespace {

constexpr std::int64_t criticalMargin = 5000;  // m°C below a critical limit that already counts
constexpr std::int64_t fairMargin = 10000;     // m°C below the serious threshold
// k10temp gives no critical limit; AMD parts shut down a little above this.
constexpr std::int64_t assumedAMDCritical = 95000;

ThermalLevel sensorLevel(const ThermalSensor& s) {
  const std::int64_t t = s.temperature;
  if (s.criticalAlarm || (s.hot && t >= *s.hot) ||
      (s.critical && t >= *s.critical - criticalMargin)) {
    return ThermalLevel::critical;
  }
  std::optional<std::int64_t> serious = s.passive;
  if (s.max) serious = serious ? std::min(*serious, *s.max) : *s.max;
  if (serious && t >= *serious) return ThermalLevel::serious;
  if (serious && t >= *serious - fairMargin) return ThermalLevel::fair;
  if (s.activeTrips.size() >= 2 && t >= s.activeTrips[1]) return ThermalLevel::fair;
  return ThermalLevel::nominal;
}

std::string lowercase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Zones that measure something other than the processor: wireless cards, batteries, the
// chipset, drives, and the INT3400 placeholder zone that reports a fixed 20 °C.
bool cpuRelevantZone(const std::string& type) {
  const std::string t = lowercase(type);
  for (const std::string_view other :
       {"iwlwifi", "wifi", "ath1", "bat", "int3400", "pch", "nvme"}) {
    if (t.find(other) != std::string::npos) return false;
  }
  return true;
}

bool cpuRelevantHwmon(const std::string& name) {
  for (const std::string_view cpu :
       {"coretemp", "k10temp", "zenpower", "cpu_thermal", "cpu-thermal", "acpitz", "soc_thermal"}) {
    if (name == cpu) return true;
  }
  return false;
}

std::optional<std::int64_t> number(const std::filesystem::path& file) {
  const auto text = readAttribute(file);
  return text ? parseSigned(*text) : std::nullopt;
}

std::optional<std::uint64_t> unsignedNumber(const std::filesystem::path& file) {
  const auto text = readAttribute(file);
  return text ? parseUnsigned(*text) : std::nullopt;
}

ThermalSensor zoneLimits(const std::filesystem::path& zone) {
  ThermalSensor limits;
  for (int k = 0;; ++k) {
    const std::string prefix = "trip_point_" + std::to_string(k) + "_";
    const auto type = readAttribute(zone / (prefix + "type"));
    if (!type) break;
    const auto temperature = number(zone / (prefix + "temp"));
    // Disabled trips read as a negative or absurdly high value on some firmware.
    if (!temperature || *temperature <= 0) continue;
    if (*type == "passive")
      limits.passive = std::min(limits.passive.value_or(*temperature), *temperature);
    if (*type == "hot") limits.hot = std::min(limits.hot.value_or(*temperature), *temperature);
    if (*type == "critical")
      limits.critical = std::min(limits.critical.value_or(*temperature), *temperature);
    if (*type == "active") limits.activeTrips.push_back(*temperature);
  }
  std::sort(limits.activeTrips.begin(), limits.activeTrips.end());
  return limits;
}

}  // namespace

ThermalLevel thermalLevel(const ThermalFacts& facts) {
  ThermalLevel level = ThermalLevel::nominal;
  if (facts.processorCooling || facts.throttled) level = ThermalLevel::serious;
  for (const auto& sensor : facts.sensors) level = std::max(level, sensorLevel(sensor));
  return level;
}

ThermalReader::ThermalReader(std::filesystem::path sysRoot) : sysRoot_(std::move(sysRoot)) {}

void ThermalReader::discover() {
  sources_.clear();
  coolingStates_.clear();
  for (const auto& zone : listFolder(sysRoot_ / "class/thermal")) {
    const std::string entry = zone.filename().string();
    if (entry.starts_with("thermal_zone")) {
      const auto type = readAttribute(zone / "type");
      if (!type || !cpuRelevantZone(*type)) continue;
      sources_.push_back(Source{.temperature = zone / "temp", .limits = zoneLimits(zone)});
    } else if (entry.starts_with("cooling_device")) {
      const auto type = readAttribute(zone / "type");
      if (type && (*type == "Processor" || *type == "intel_powerclamp")) {
        coolingStates_.push_back(zone / "cur_state");
      }
    }
  }
  // Intel only; AMD, ARM and virtual machines have no such counters.
  throttleCounters_.clear();
  for (const auto& cpu : listFolder(sysRoot_ / "devices/system/cpu")) {
    for (const char* counter :
         {"thermal_throttle/core_throttle_count", "thermal_throttle/package_throttle_count"}) {
      std::error_code missing;
      if (std::filesystem::exists(cpu / counter, missing))
        throttleCounters_.push_back(cpu / counter);
    }
  }
  for (const auto& hwmon : listFolder(sysRoot_ / "class/hwmon")) {
    const auto name = readAttribute(hwmon / "name");
    if (!name || !cpuRelevantHwmon(*name)) continue;
    for (int k = 1; k < 64; ++k) {
      const std::string prefix = "temp" + std::to_string(k) + "_";
      const auto input = hwmon / (prefix + "input");
      std::error_code missing;
      if (!std::filesystem::exists(input, missing)) continue;
      ThermalSensor limits{.critical = number(hwmon / (prefix + "crit")),
                           .max = number(hwmon / (prefix + "max"))};
      if (!limits.critical && *name == "k10temp") limits.critical = assumedAMDCritical;
      const auto alarm = hwmon / (prefix + "crit_alarm");
      sources_.push_back(Source{
          .temperature = input,
          .alarm = std::filesystem::exists(alarm, missing) ? std::optional(alarm) : std::nullopt,
          .limits = limits});
    }
  }
}

bool ThermalReader::throttledAt(double now) {
  std::optional<std::uint64_t> count;
  for (const auto& counter : throttleCounters_) {
    if (const auto value = unsignedNumber(counter)) count = count.value_or(0) + *value;
  }
  if (count && lastThrottleCount_ && *count > *lastThrottleCount_) lastThrottleGrowth_ = now;
  lastThrottleCount_ = count;
  return lastThrottleGrowth_ && now - *lastThrottleGrowth_ >= 0 &&
         now - *lastThrottleGrowth_ < throttleWindow;
}

ThermalLevel ThermalReader::read(double now) {
  if (!discoveredAt_ || now - *discoveredAt_ >= rediscoveryInterval || now < *discoveredAt_) {
    discover();
    discoveredAt_ = now;
  }
  ThermalFacts facts{.throttled = throttledAt(now)};
  for (const auto& state : coolingStates_) {
    if (const auto value = number(state); value && *value > 0) facts.processorCooling = true;
  }
  for (const auto& source : sources_) {
    const auto temperature = number(source.temperature);
    if (!temperature) continue;
    ThermalSensor sensor = source.limits;
    sensor.temperature = *temperature;
    if (source.alarm) sensor.criticalAlarm = number(*source.alarm).value_or(0) > 0;
    facts.sensors.push_back(std::move(sensor));
  }
  return thermalLevel(facts);
}

}  // namespace pellwin
