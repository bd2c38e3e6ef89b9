// An item handed to the trash mover and what became of it. Plain values: the mover produces
// exactly one result per item, in the items' order, and never throws.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin {

struct TrashItem {
  std::string path{};       // absolute, as the user saw it
  std::uint64_t bytes = 0;  // the space that removing it is expected to free
  friend bool operator==(const TrashItem&, const TrashItem&) = default;
};

struct TrashResult {
  enum class Outcome {
    moved,        // now in the Trash
    refused,      // a rule said no; `reason` says which
    failed,       // the disk said no; `reason` carries the system's description
    deleted,      // removed for good
    alreadyGone,  // nothing was at the path
  };

  std::string path{};
  std::uint64_t bytes = 0;  // copied from the item
  Outcome outcome = Outcome::failed;
  std::string reason{};  // set for refused and failed, empty otherwise

  // True for the outcomes whose bytes count as freed (moved and deleted).
  [[nodiscard]] bool freedSpace() const {
    return outcome == Outcome::moved || outcome == Outcome::deleted;
  }
  friend bool operator==(const TrashResult&, const TrashResult&) = default;
};

[[nodiscard]] constexpr EnumTable<TrashResult::Outcome::alreadyGone> textTable(
    TrashResult::Outcome) {
  using enum TrashResult::Outcome;
  return {{
      {moved, "moved"},
      {refused, "refused"},
      {failed, "failed"},
      {deleted, "deleted"},
      {alreadyGone, "alreadyGone"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(TrashResult::Outcome outcome) {
  return enumText(outcome);
}
[[nodiscard]] constexpr std::optional<TrashResult::Outcome> trashOutcomeFromRawValue(
    std::string_view raw) {
  return parseEnum<TrashResult::Outcome>(raw);
}

}  // namespace pellwin
