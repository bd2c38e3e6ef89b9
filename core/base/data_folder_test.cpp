#include "core/base/data_folder.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(DataFolder, LocationFollowsXdgDataHomeOnlyWhenAbsolute) {
  EXPECT_EQ(DataFolder::applicationSupport("/home/ann", std::nullopt), "/home/ann/.local/share");
  EXPECT_EQ(DataFolder::applicationSupport("/home/ann", "/data/xdg"), "/data/xdg");
  EXPECT_EQ(DataFolder::applicationSupport("/home/ann", "relative/xdg"), "/home/ann/.local/share");
  EXPECT_EQ(DataFolder::applicationSupport("/home/ann", ""), "/home/ann/.local/share");
  EXPECT_EQ(DataFolder::path("/home/ann/.local/share"), "/home/ann/.local/share/Tovrin");
  EXPECT_EQ(DataFolder::formerPath("/x/"), "/x//Pellwin");
  const std::vector<std::string> expected = {"/home/ann/Library/Application Support/Tovrin",
                                             "/home/ann/Library/Application Support/Pellwin",
                                             "/home/ann/.local/share/Tovrin",
                                             "/home/ann/.local/share/Pellwin"};
  EXPECT_EQ(DataFolder::protectedPaths("/home/ann", "/home/ann/.local/share"), expected);
}

TEST(DataFolder, MovesOnlyWhenTheFormerFolderIsAloneAndKeepsBothOtherwise) {
  EXPECT_EQ(DataFolder::move(false, false), DataFolderMove::nothingToMove);
  EXPECT_EQ(DataFolder::move(true, false), DataFolderMove::nothingToMove);
  EXPECT_EQ(DataFolder::move(false, true), DataFolderMove::move);
  EXPECT_EQ(DataFolder::move(true, true), DataFolderMove::keepBoth);
}

}  // namespace
}  // namespace pellwin
