// The headings the monitor sorts apps under. Raw values are stable integers.
#pragma once

#include <array>
#include <optional>
#include <string_view>

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

inline constexpr std::array<AppCategory, 7> allAppCategories = {
    AppCategory::browsers, AppCategory::developer, AppCategory::ai,   AppCategory::communication,
    AppCategory::media,    AppCategory::system,    AppCategory::other};

[[nodiscard]] int rawValue(AppCategory category);
[[nodiscard]] std::optional<AppCategory> appCategoryFromRawValue(int raw);
// The heading text, such as "Developer tools".
[[nodiscard]] std::string_view title(AppCategory category);

}  // namespace pellwin
