#include "core/clean/clean_action.h"

namespace pellwin {

std::string_view rawValue(CleanAction action) {
  switch (action) {
    case CleanAction::delete_: return "delete";
    case CleanAction::trash: return "trash";
  }
  return "";
}

std::optional<CleanAction> cleanActionFromRawValue(std::string_view raw) {
  for (CleanAction action : {CleanAction::delete_, CleanAction::trash}) {
    if (rawValue(action) == raw) return action;
  }
  return std::nullopt;
}

}  // namespace pellwin
