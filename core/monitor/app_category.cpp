#include "core/monitor/app_category.h"

namespace pellwin {

int rawValue(AppCategory category) { return static_cast<int>(category); }

std::optional<AppCategory> appCategoryFromRawValue(int raw) {
  if (raw < 0 || raw > 6) return std::nullopt;
  return static_cast<AppCategory>(raw);
}

std::string_view title(AppCategory category) {
  switch (category) {
    case AppCategory::browsers:
      return "Browsers";
    case AppCategory::developer:
      return "Developer tools";
    case AppCategory::ai:
      return "AI";
    case AppCategory::communication:
      return "Communication";
    case AppCategory::media:
      return "Media";
    case AppCategory::system:
      return "System and macOS";
    case AppCategory::other:
      return "Other";
  }
  return "";
}

}  // namespace pellwin
