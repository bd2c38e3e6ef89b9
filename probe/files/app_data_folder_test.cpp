#include "probe/files/app_data_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

TEST(AppDataFolder, MovesTheFormerFolderWithItsContents) {
  testing::ScratchFolder base;
  base.write("Pellwin/history.sqlite", "rows");
  auto result = AppDataFolder::migrate(base.path().string());
  ASSERT_TRUE(result.has_value()) << sentence(result.error(), ErrorWording::reasonAndPath);
  EXPECT_EQ(*result, DataFolderMove::move);
  EXPECT_FALSE(fs::exists(base / "Pellwin"));
  EXPECT_TRUE(fs::exists(base / "Tovrin/history.sqlite"));
  // Idempotent: the next start finds only the current folder.
  EXPECT_EQ(AppDataFolder::migrate(base.path().string()), DataFolderMove::nothingToMove);
}

TEST(AppDataFolder, LeavesEverythingInPlaceUnlessOnlyAFormerDirectoryExists) {
  {
    SCOPED_TRACE("both folders: neither is touched");
    testing::ScratchFolder base;
    base.write("Pellwin/old", "a");
    base.write("Tovrin/new", "b");
    EXPECT_EQ(AppDataFolder::migrate(base.path().string()), DataFolderMove::keepBoth);
    EXPECT_TRUE(fs::exists(base / "Pellwin/old"));
    EXPECT_TRUE(fs::exists(base / "Tovrin/new"));
    EXPECT_FALSE(fs::exists(base / "Tovrin/old"));
  }
  {
    SCOPED_TRACE("a plain file of the former name counts as absent");
    testing::ScratchFolder base;
    base.write("Pellwin", "not a folder");
    EXPECT_EQ(AppDataFolder::migrate(base.path().string()), DataFolderMove::nothingToMove);
    EXPECT_TRUE(fs::is_regular_file(base / "Pellwin"));
  }
  {
    SCOPED_TRACE("a dangling link of the current name counts as present");
    testing::ScratchFolder base;
    base.write("Pellwin/old", "a");
    fs::create_symlink(base / "nowhere", base / "Tovrin");
    EXPECT_EQ(AppDataFolder::migrate(base.path().string()), DataFolderMove::keepBoth);
    EXPECT_TRUE(fs::is_symlink(base / "Tovrin"));
    EXPECT_TRUE(fs::exists(base / "Pellwin/old"));
  }
  {
    SCOPED_TRACE("nothing at all");
    testing::ScratchFolder base;
    EXPECT_EQ(AppDataFolder::migrate(base.path().string()), DataFolderMove::nothingToMove);
    EXPECT_FALSE(fs::exists(base / "Tovrin"));
  }
}

TEST(AppDataFolder, ReportsAFailedMoveAsASentence) {
  if (::geteuid() == 0) GTEST_SKIP() << "root may rename inside a read-only folder";
  testing::ScratchFolder base;
  base.write("Pellwin/old", "a");
  fs::permissions(base.path(), fs::perms::owner_read | fs::perms::owner_exec);
  auto result = AppDataFolder::migrate(base.path().string());
  fs::permissions(base.path(), fs::perms::owner_all);
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(sentence(result.error(), ErrorWording::reasonAndPath),
            "Permission denied (" + DataFolder::formerPath(base.path().string()) + " to " +
                DataFolder::path(base.path().string()) + ")");
}

}  // namespace
}  // namespace pellwin
