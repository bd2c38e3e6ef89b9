#include "core/space/trash_item.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(TrashOutcome, OnlyMovedAndDeletedFreeSpace) {
  using Outcome = TrashResult::Outcome;
  const struct {
    Outcome outcome;
    bool freed;
  } cases[] = {
      {Outcome::moved, true},   {Outcome::refused, false},     {Outcome::failed, false},
      {Outcome::deleted, true}, {Outcome::alreadyGone, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(rawValue(c.outcome));
    EXPECT_EQ((TrashResult{.bytes = 5, .outcome = c.outcome}.freedSpace()), c.freed);
  }
}

}  // namespace
}  // namespace pellwin
