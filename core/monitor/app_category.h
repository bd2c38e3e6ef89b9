// The headings the monitor sorts apps under. Raw values are stable integers.
#pragma once

#include <optional>
#include <string_view>
#include <utility>

#include "core/base/enum_text.h"

namespace pellwin {

enum class AppCategory {
  browsers = 0,
  developer = 1,
  ai = 2,
  communication = 3,
  media = 4,
  system = 5,
  other = 6,
};

// The texts are the headings; the raw values are the ordinals.
[[nodiscard]] constexpr EnumTable<AppCategory::other> textTable(AppCategory) {
  return {{
      {AppCategory::browsers, "Browsers"},
      {AppCategory::developer, "Developer tools"},
      {AppCategory::ai, "AI"},
      {AppCategory::communication, "Communication"},
      {AppCategory::media, "Media"},
      {AppCategory::system, "System and macOS"},
      {AppCategory::other, "Other"},
  }};
}

inline constexpr auto allAppCategories = enumCases<AppCategory>();

[[nodiscard]] constexpr int rawValue(AppCategory category) { return std::to_underlying(category); }
[[nodiscard]] constexpr std::optional<AppCategory> appCategoryFromRawValue(int raw) {
  return enumFromIndex<AppCategory>(raw);
}
// The heading text, such as "Developer tools".
[[nodiscard]] constexpr std::string_view title(AppCategory category) { return enumText(category); }

}  // namespace pellwin
