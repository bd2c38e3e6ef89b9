#include "core/space/trash_item.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(TrashOutcome, RawValuesRoundTripAndOnlyMovedAndDeletedFreeSpace) {
  using Outcome = TrashResult::Outcome;
  const struct {
    Outcome outcome;
    const char* raw;
    bool freed;
  } cases[] = {
      {Outcome::moved, "moved", true},
      {Outcome::refused, "refused", false},
      {Outcome::failed, "failed", false},
      {Outcome::deleted, "deleted", true},
      {Outcome::alreadyGone, "alreadyGone", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.raw);
    EXPECT_EQ(rawValue(c.outcome), c.raw);
    EXPECT_EQ(trashOutcomeFromRawValue(c.raw), c.outcome);
    EXPECT_EQ((TrashResult{.bytes = 5, .outcome = c.outcome}.freedSpace()), c.freed);
  }
  EXPECT_EQ(trashOutcomeFromRawValue("Moved"), std::nullopt);
}

}  // namespace
}  // namespace pellwin
