// What happens to the items of a quick-clean group: removed for good, or moved to the Trash
// so they can be put back. Shared by the cleaner and the trash mover.
#pragma once

#include <optional>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin {

// `delete_` stands for the text form "delete", which C++ keeps as a keyword.
enum class CleanAction { delete_, trash };

[[nodiscard]] constexpr EnumTable<CleanAction::trash> textTable(CleanAction) {
  return {{
      {CleanAction::delete_, "delete"},
      {CleanAction::trash, "trash"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(CleanAction action) { return enumText(action); }
[[nodiscard]] constexpr std::optional<CleanAction> cleanActionFromRawValue(std::string_view raw) {
  return parseEnum<CleanAction>(raw);
}

}  // namespace pellwin
