// What happens to an item that quick clean or the delete list removes: deleted for good, or
// moved to the Trash. Text forms are "delete" and "trash".
#pragma once

#include <optional>
#include <string_view>

namespace pellwin {

// `delete` is a C++ keyword, so that case carries a trailing underscore; its text form is
// still "delete".
enum class CleanAction { delete_, trash };

[[nodiscard]] std::string_view rawValue(CleanAction action);
[[nodiscard]] std::optional<CleanAction> cleanActionFromRawValue(std::string_view raw);

}  // namespace pellwin
