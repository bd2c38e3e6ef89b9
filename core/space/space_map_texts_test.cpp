#include "core/space/space_map_texts.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(SpaceMapTexts, EachOutcomeNamesTheItemAndWhatBecameOfIt) {
  using enum TrashResult::Outcome;
  const struct {
    TrashResult result;
    const char* sentence;
  } cases[] = {
      {{.path = "/h/old/film.mov", .outcome = moved},
       "film.mov is in the Trash; empty the Trash to free the space."},
      {{.path = "/h/.cache/pip/", .outcome = deleted}, "pip was deleted for good."},
      {{.path = "/h/gone", .outcome = alreadyGone}, "gone was already gone."},
      {{.path = "/h/link", .outcome = refused, .reason = "It's a shortcut to somewhere else"},
       "link wasn't deleted. It's a shortcut to somewhere else"},
      {{.path = "/h/busy", .outcome = failed, .reason = "Device or resource busy"},
       "busy wasn't deleted. Device or resource busy"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sentence);
    EXPECT_EQ(SpaceMapTexts::result(c.result), c.sentence);
  }
}

TEST(SpaceMapTexts, ConfirmationSaysHowMuchAndWhetherItCanComeBack) {
  EXPECT_EQ(SpaceMapTexts::trashConfirmation(3, 4'500'000'000),
            "Move 3 items (4.5 GB) to the Trash. You can put it back, and emptying the Trash "
            "frees the space.");
  EXPECT_EQ(SpaceMapTexts::deleteConfirmation(1, 2'000'000),
            "Delete 1 item (2 MB) for good. This can't be undone.");
}

TEST(SpaceMapTexts, AccessNoticeOnlyWhenFoldersWereLockedAndOffersAccessOnlyWhenDenied) {
  EXPECT_EQ(SpaceMapTexts::accessNotice(0, true), std::nullopt);
  EXPECT_EQ(SpaceMapTexts::accessNotice(1, false),
            "1 folder is private, so what's inside it isn't counted.");
  EXPECT_EQ(SpaceMapTexts::accessNotice(4, true),
            "4 folders are private, so what's inside them isn't counted. Allow whole-disk scan "
            "to see inside.");
}

}  // namespace
}  // namespace pellwin
