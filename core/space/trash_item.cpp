#include "core/space/trash_item.h"

namespace pellwin {

std::string_view rawValue(TrashResult::Outcome outcome) {
  using Outcome = TrashResult::Outcome;
  switch (outcome) {
    case Outcome::moved:
      return "moved";
    case Outcome::refused:
      return "refused";
    case Outcome::failed:
      return "failed";
    case Outcome::deleted:
      return "deleted";
    case Outcome::alreadyGone:
      return "alreadyGone";
  }
  return "";
}

std::optional<TrashResult::Outcome> trashOutcomeFromRawValue(std::string_view raw) {
  using Outcome = TrashResult::Outcome;
  for (Outcome outcome : {Outcome::moved, Outcome::refused, Outcome::failed, Outcome::deleted,
                          Outcome::alreadyGone}) {
    if (rawValue(outcome) == raw) return outcome;
  }
  return std::nullopt;
}

}  // namespace pellwin
