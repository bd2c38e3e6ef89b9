#include "core/clean/clean_action.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(CleanAction, TextFormsRoundTripAndUnknownTextIsRejected) {
  EXPECT_EQ(rawValue(CleanAction::delete_), "delete");
  EXPECT_EQ(rawValue(CleanAction::trash), "trash");
  for (CleanAction action : {CleanAction::delete_, CleanAction::trash}) {
    EXPECT_EQ(cleanActionFromRawValue(rawValue(action)), action);
  }
  EXPECT_EQ(cleanActionFromRawValue("Delete"), std::nullopt);
  EXPECT_EQ(cleanActionFromRawValue("delete_"), std::nullopt);
  EXPECT_EQ(cleanActionFromRawValue(""), std::nullopt);
}

}  // namespace
}  // namespace pellwin
