#include "app/removal_guards.h"

#include <gtest/gtest.h>

#include "core/base/data_folder.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

TEST(RemovalGuards, KeepTheDataFoldersAndTheUserFoldersOfTheConfigHomeInUse) {
  testing::ScratchFolder scratch;
  const std::string home = (scratch / "home").string();
  scratch.write("home/.config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n");
  scratch.write("elsewhere/user-dirs.dirs", "XDG_MUSIC_DIR=\"$HOME/Musik\"\n");

  const Environment standard{.home = home};
  const RemovalGuards guards = removalGuards(standard);
  EXPECT_EQ(guards.kept, DataFolder::protectedPaths(home, home + "/.local/share"));
  EXPECT_EQ(guards.mainFolders, std::vector<std::string>{home + "/Schreibtisch"});

  const Environment moved{.home = home, .xdgConfigHome = (scratch / "elsewhere").string()};
  EXPECT_EQ(removalGuards(moved).mainFolders, std::vector<std::string>{home + "/Musik"});
  // A relative value is not a config home: the default one is read.
  const Environment relative{.home = home, .xdgConfigHome = "elsewhere"};
  EXPECT_EQ(removalGuards(relative).mainFolders, guards.mainFolders);
  const Environment none{.home = (scratch / "nobody").string()};
  EXPECT_TRUE(removalGuards(none).mainFolders.empty());
}

}  // namespace
}  // namespace pellwin
