// The internal battery's charge and state, from sysroot/class/power_supply. Stateless; safe
// from any thread. Absent on a machine without a battery that qualifies.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "core/monitor/readings.h"

namespace pellwin {

// The attributes of one power supply that matter here, as sysfs gives them (energies in µWh,
// powers in µW, charges in µAh, currents in µA, times in seconds). Absent when the file is
// missing or not a number.
struct PowerSupply {
  std::string name{};
  std::optional<std::string> type{};    // "Battery", "Mains", "USB", ...
  std::optional<std::string> scope{};   // "Device" for a mouse's or headset's battery
  std::optional<std::string> status{};  // "Charging", "Discharging", "Full", "Not charging", ...
  std::optional<std::int64_t> present{};
  std::optional<std::int64_t> capacity{};  // percent
  std::optional<std::int64_t> energyNow{};
  std::optional<std::int64_t> energyFull{};
  std::optional<std::int64_t> powerNow{};
  std::optional<std::int64_t> chargeNow{};
  std::optional<std::int64_t> chargeFull{};
  std::optional<std::int64_t> currentNow{};
  std::optional<std::int64_t> timeToEmptyNow{};
  friend bool operator==(const PowerSupply&, const PowerSupply&) = default;
};

// The reading of one supply, or absent when it is not a system battery that is present and
// says how full it is. The percentage is capacity, else energy or charge now over full, in
// integer division, clamped to 0 … 100. Minutes left only while discharging and only when
// positive: time_to_empty_now, else energy ÷ power, else charge ÷ current.
[[nodiscard]] std::optional<BatteryReading> batteryReading(const PowerSupply& supply);

namespace BatteryReader {

// The attributes of the supply folder `folder`.
[[nodiscard]] PowerSupply supplyAt(const std::filesystem::path& folder);

// The first supply, in name order, that gives a reading.
[[nodiscard]] std::optional<BatteryReading> read(const std::filesystem::path& sysRoot);

}  // namespace BatteryReader
}  // namespace pellwin
