// The five monitored resources, the three health levels and the machine's thermal levels,
// each with its stable text form. Raw values are the keys of stored history and settings.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "core/base/enum_text.h"

namespace pellwin {

// Declaration order is display order and the precedence between equally bad resources.
enum class Resource { memory, cpu, diskSpace, diskActivity, heat };

[[nodiscard]] constexpr EnumTable<Resource::heat> textTable(Resource) {
  return {{
      {Resource::memory, "memory"},
      {Resource::cpu, "cpu"},
      {Resource::diskSpace, "diskSpace"},
      {Resource::diskActivity, "diskActivity"},
      {Resource::heat, "heat"},
  }};
}

inline constexpr auto allResources = enumCases<Resource>();

[[nodiscard]] constexpr std::string_view rawValue(Resource resource) { return enumText(resource); }
[[nodiscard]] constexpr std::optional<Resource> resourceFromRawValue(std::string_view raw) {
  return parseEnum<Resource>(raw);
}
// Heading text, such as "Disk space".
[[nodiscard]] std::string_view title(Resource resource);
// The word used inside sentences; heat's noun is "CPU" because sentences speak of a hot CPU.
[[nodiscard]] std::string_view noun(Resource resource);

// Ordered by raw value: a worse level compares greater.
enum class Health { ok = 0, strain = 1, problem = 2 };

// The texts are the labels; the raw values are the ordinals.
[[nodiscard]] constexpr EnumTable<Health::problem> textTable(Health) {
  return {{
      {Health::ok, "Healthy"},
      {Health::strain, "Getting busy"},
      {Health::problem, "Slowing your Mac"},
  }};
}

[[nodiscard]] constexpr int rawValue(Health health) { return std::to_underlying(health); }
[[nodiscard]] constexpr std::optional<Health> healthFromRawValue(int raw) {
  return enumFromIndex<Health>(raw);
}
[[nodiscard]] constexpr std::string_view label(Health health) { return enumText(health); }

// Raw values are the thermal states 0 to 3; ordered by raw value.
enum class ThermalLevel { nominal = 0, fair = 1, serious = 2, critical = 3 };

// The texts are the labels; the raw values are the ordinals.
[[nodiscard]] constexpr EnumTable<ThermalLevel::critical> textTable(ThermalLevel) {
  return {{
      {ThermalLevel::nominal, "Normal"},
      {ThermalLevel::fair, "Warm"},
      {ThermalLevel::serious, "Hot"},
      {ThermalLevel::critical, "Very hot"},
  }};
}

[[nodiscard]] constexpr int rawValue(ThermalLevel level) { return std::to_underlying(level); }
[[nodiscard]] constexpr std::optional<ThermalLevel> thermalLevelFromRawValue(int raw) {
  return enumFromIndex<ThermalLevel>(raw);
}
[[nodiscard]] constexpr std::string_view label(ThermalLevel level) { return enumText(level); }

}  // namespace pellwin
