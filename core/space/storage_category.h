// The group a folder is counted in on the space map, which is also its arc's colour.
#pragma once

#include <optional>
#include <string_view>

namespace pellwin {

// Declaration order is display order; raw values are the case names (stored in the scan cache).
enum class StorageCategory { appData, developer, yourFiles, system, other };

[[nodiscard]] std::string_view rawValue(StorageCategory category);
[[nodiscard]] std::optional<StorageCategory> storageCategoryFromRawValue(std::string_view raw);

}  // namespace pellwin
