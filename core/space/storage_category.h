// The group a folder is counted in on the space map, which is also its arc's colour.
#pragma once

#include <optional>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin {

// Declaration order is display order; raw values are the case names (stored in the scan cache).
enum class StorageCategory { appData, developer, yourFiles, system, other };

[[nodiscard]] constexpr EnumTable<StorageCategory::other> textTable(StorageCategory) {
  return {{
      {StorageCategory::appData, "appData"},
      {StorageCategory::developer, "developer"},
      {StorageCategory::yourFiles, "yourFiles"},
      {StorageCategory::system, "system"},
      {StorageCategory::other, "other"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(StorageCategory category) {
  return enumText(category);
}
[[nodiscard]] constexpr std::optional<StorageCategory> storageCategoryFromRawValue(
    std::string_view raw) {
  return parseEnum<StorageCategory>(raw);
}

}  // namespace pellwin
