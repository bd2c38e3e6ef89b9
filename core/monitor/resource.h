// The five monitored resources, the three health levels and the machine's thermal levels,
// each with its stable text form. Raw values are the keys of stored history and settings.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace pellwin {

// Declaration order is display order and the precedence between equally bad resources.
enum class Resource { memory, cpu, diskSpace, diskActivity, heat };

inline constexpr std::array<Resource, 5> allResources = {
    Resource::memory, Resource::cpu, Resource::diskSpace, Resource::diskActivity, Resource::heat};

[[nodiscard]] std::string_view rawValue(Resource resource);
[[nodiscard]] std::optional<Resource> resourceFromRawValue(std::string_view raw);
// Heading text, such as "Disk space".
[[nodiscard]] std::string_view title(Resource resource);
// The word used inside sentences; heat's noun is "CPU" because sentences speak of a hot CPU.
[[nodiscard]] std::string_view noun(Resource resource);

// Ordered by raw value: a worse level compares greater.
enum class Health { ok = 0, strain = 1, problem = 2 };

[[nodiscard]] int rawValue(Health health);
[[nodiscard]] std::optional<Health> healthFromRawValue(int raw);
[[nodiscard]] std::string_view label(Health health);

// Raw values are the thermal states 0 to 3; ordered by raw value.
enum class ThermalLevel { nominal = 0, fair = 1, serious = 2, critical = 3 };

[[nodiscard]] int rawValue(ThermalLevel level);
[[nodiscard]] std::optional<ThermalLevel> thermalLevelFromRawValue(int raw);
[[nodiscard]] std::string_view label(ThermalLevel level);

}  // namespace pellwin
