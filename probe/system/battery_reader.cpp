#include "probe/system/battery_reader.h"

#include <algorithm>
#include <cstdlib>

#include "core/base/checked_math.h"
#include "probe/proc_file.h"
#include "probe/text_number.h"

namespace pellwin {

namespace {

struct Fraction {
  std::int64_t current = 0;
  std::int64_t max = 0;
};

std::optional<Fraction> chargeFraction(const PowerSupply& supply) {
  if (supply.capacity) return Fraction{*supply.capacity, 100};
  if (supply.energyNow && supply.energyFull && *supply.energyFull >= 1) {
    return Fraction{*supply.energyNow, *supply.energyFull};
  }
  if (supply.chargeNow && supply.chargeFull && *supply.chargeFull >= 1) {
    return Fraction{*supply.chargeNow, *supply.chargeFull};
  }
  return std::nullopt;
}

// Hours left as amount ÷ rate, in whole minutes; drivers differ on the sign of the rate.
std::optional<std::int64_t> minutesFromRate(const std::optional<std::int64_t>& amount,
                                            const std::optional<std::int64_t>& rate) {
  if (!amount || !rate || *rate == 0 || *amount <= 0 || *rate == INT64_MIN) return std::nullopt;
  const auto scaled = checkedProduct(*amount, std::int64_t{60});
  if (!scaled) return std::nullopt;
  return *scaled / std::abs(*rate);
}

std::optional<int> minutesLeft(const PowerSupply& supply) {
  std::optional<std::int64_t> minutes;
  if (supply.timeToEmptyNow && *supply.timeToEmptyNow > 0) {
    minutes = *supply.timeToEmptyNow / 60;
  } else if (supply.energyNow && supply.powerNow) {
    minutes = minutesFromRate(supply.energyNow, supply.powerNow);
  } else {
    minutes = minutesFromRate(supply.chargeNow, supply.currentNow);
  }
  if (!minutes || *minutes <= 0 || *minutes > INT32_MAX) return std::nullopt;
  return static_cast<int>(*minutes);
}

std::optional<std::int64_t> numberAttribute(const std::filesystem::path& folder, const char* name) {
  const auto text = readAttribute(folder / name);
  if (!text) return std::nullopt;
  return parseSigned(*text);
}

}  // namespace

std::optional<BatteryReading> batteryReading(const PowerSupply& supply) {
  if (supply.type != "Battery") return std::nullopt;
  if (supply.scope == "Device") return std::nullopt;
  if (supply.present && *supply.present == 0) return std::nullopt;
  const auto fraction = chargeFraction(supply);
  if (!fraction) return std::nullopt;
  const auto scaled = checkedProduct(fraction->current, std::int64_t{100});
  if (!scaled) return std::nullopt;
  const auto percent = std::clamp<std::int64_t>(*scaled / fraction->max, 0, 100);
  const bool onBattery = supply.status == "Discharging";
  return BatteryReading{
      .percent = static_cast<int>(percent),
      .onBattery = onBattery,
      .charging = supply.status == "Charging",
      .minutesLeft = onBattery ? minutesLeft(supply) : std::nullopt,
  };
}

namespace BatteryReader {

PowerSupply supplyAt(const std::filesystem::path& folder) {
  return PowerSupply{
      .name = folder.filename().string(),
      .type = readAttribute(folder / "type"),
      .scope = readAttribute(folder / "scope"),
      .status = readAttribute(folder / "status"),
      .present = numberAttribute(folder, "present"),
      .capacity = numberAttribute(folder, "capacity"),
      .energyNow = numberAttribute(folder, "energy_now"),
      .energyFull = numberAttribute(folder, "energy_full"),
      .powerNow = numberAttribute(folder, "power_now"),
      .chargeNow = numberAttribute(folder, "charge_now"),
      .chargeFull = numberAttribute(folder, "charge_full"),
      .currentNow = numberAttribute(folder, "current_now"),
      .timeToEmptyNow = numberAttribute(folder, "time_to_empty_now"),
  };
}

std::optional<BatteryReading> read(const std::filesystem::path& sysRoot) {
  for (const auto& folder : listFolder(sysRoot / "class/power_supply")) {
    // Mains adapters and USB ports are most entries; skip them before reading the rest.
    if (readAttribute(folder / "type") != "Battery") continue;
    if (auto reading = batteryReading(supplyAt(folder))) return reading;
  }
  return std::nullopt;
}

}  // namespace BatteryReader
}  // namespace pellwin
