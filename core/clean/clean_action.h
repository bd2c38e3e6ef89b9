// What happens to the items of a quick-clean group: removed for good, or moved to the Trash
// so they can be put back. Shared by the cleaner and the trash mover.
#pragma once

#include <optional>
#include <string_view>

namespace pellwin {

// `delete_` stands for the text form "delete", which C++ keeps as a keyword.
enum class CleanAction { delete_, trash };

[[nodiscard]] std::string_view rawValue(CleanAction action);
[[nodiscard]] std::optional<CleanAction> cleanActionFromRawValue(std::string_view raw);

}  // namespace pellwin
