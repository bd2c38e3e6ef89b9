#include "app/commands/storage_self_tests.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "probe/exclusive_file.h"
#include "testing/scratch_folder.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::inventory;

TEST(TrashSelfTest, PassesOnAFreshHomeAndLeavesNoTraceNotEvenATrash) {
  testing::ScratchHome scratch;
  std::ostringstream out;
  EXPECT_EQ(runTrashSelfTest(scratch.home, scratch.dataHome, out), 0);
  EXPECT_EQ(out.str(), "trash-test ok\n");
  EXPECT_TRUE(inventory(scratch.home).empty()) << inventory(scratch.home).front();
}

TEST(TrashSelfTest, LeavesAnExistingTrashExactlyAsItWas) {
  testing::ScratchHome scratch;
  scratch.scratch.write("home/notes/old.txt", "old");
  scratch.scratch.write("home/notes/folder/x", "x");
  ASSERT_EQ(scratch.run("trash-put notes/old.txt notes/folder"), "");
  const std::string sizes = scratch.trash() + "/directorysizes";
  scratch.scratch.write("home/.local/share/Trash/directorysizes", "4096 1 folder\nnot a line\n");
  const auto before = inventory(scratch.home);

  std::ostringstream out;
  EXPECT_EQ(runTrashSelfTest(scratch.home, scratch.dataHome, out), 0);
  EXPECT_EQ(out.str(), "trash-test ok\n");
  EXPECT_EQ(inventory(scratch.home), before);
  EXPECT_EQ(scratch.run("cat '" + sizes + "'"), "4096 1 folder\nnot a line\n");
  const std::string listing = scratch.run("trash-list");
  EXPECT_NE(listing.find(scratch.home + "/notes/old.txt"), std::string::npos) << listing;
}

TEST(TrashSelfTest, NeverWritesThroughALinkPlantedInTheTrash) {
  testing::ScratchHome scratch;
  scratch.scratch.write("home/notes/old.txt", "old");
  ASSERT_EQ(scratch.run("trash-put notes/old.txt"), "");
  scratch.scratch.write("home/.local/share/Trash/directorysizes", "4096 1 folder\nnot a line\n");
  const std::string notes = scratch.scratch.write("home/Documents/notes.txt", "my notes").string();
  // Every name a temporary file of the Trash's size cache was ever given, taken by a link.
  std::vector<std::string> names = {".directorysizes.tovrin-self-test",
                                    ".directorysizes." + std::to_string(::getpid())};
  for (int attempt = 1; attempt <= 3; ++attempt) {
    names.push_back(temporaryName("directorysizes", attempt));
  }
  for (const std::string& name : names) fs::create_symlink(notes, scratch.trash() + "/" + name);
  const auto before = inventory(scratch.home);

  std::ostringstream out;
  EXPECT_EQ(runTrashSelfTest(scratch.home, scratch.dataHome, out), 0);
  EXPECT_EQ(out.str(), "trash-test ok\n");
  EXPECT_EQ(testing::fileBytes(notes), "my notes");
  EXPECT_EQ(inventory(scratch.home), before);
  EXPECT_EQ(testing::fileBytes(scratch.trash() + "/directorysizes"), "4096 1 folder\nnot a line\n");
}

TEST(StorageSelfTests, PassWhenHomeAndTheDataHomeAreSpelledDifferently) {
  testing::ScratchFolder scratch;
  const std::string base = fs::canonical(scratch.path()).string();
  fs::create_directories(base + "/real/ann/.local/share");
  fs::create_directory_symlink(base + "/real/ann", base + "/ann");
  const std::pair<std::string, std::string> setups[] = {
      {base + "/ann", base + "/real/ann/.local/share"},
      {base + "/real/ann", base + "/ann/.local/share"},
  };
  for (const auto& [home, dataHome] : setups) {
    SCOPED_TRACE(home);
    std::ostringstream out;
    EXPECT_EQ(runTrashSelfTest(home, dataHome, out), 0);
    EXPECT_EQ(runFlowSelfTest(home, dataHome, out), 0);
    EXPECT_EQ(out.str(), "trash-test ok\nflow-test ok\n");
  }
}

TEST(TrashSelfTest, SaysWhyWhenTheFolderCannotBeMoved) {
  if (::geteuid() == 0) GTEST_SKIP() << "root ignores folder permissions";
  testing::ScratchHome scratch;
  // A data home that may not be written to: the home trash cannot be made.
  fs::create_directories(scratch.dataHome);
  ::chmod(scratch.dataHome.c_str(), 0555);
  std::ostringstream out;
  EXPECT_EQ(runTrashSelfTest(scratch.home, scratch.dataHome, out), 1);
  EXPECT_EQ(out.str(), "trash-test failed: the folder was not moved, failed: Permission denied\n");
  ::chmod(scratch.dataHome.c_str(), 0755);
  EXPECT_EQ(inventory(scratch.home),
            (std::vector<std::string>{scratch.home + "/.local", scratch.dataHome}));
}

TEST(FlowSelfTest, PassesAndLeavesTheHomeAndTheTrashAsTheyWere) {
  testing::ScratchHome scratch;
  scratch.scratch.write("home/notes/old.txt", "old");
  ASSERT_EQ(scratch.run("trash-put notes/old.txt"), "");
  const auto before = inventory(scratch.home);
  std::ostringstream out;
  EXPECT_EQ(runFlowSelfTest(scratch.home, scratch.dataHome, out), 0);
  EXPECT_EQ(out.str(), "flow-test ok\n");
  EXPECT_EQ(inventory(scratch.home), before);
  const std::string listing = scratch.run("trash-list");
  EXPECT_EQ(std::count(listing.begin(), listing.end(), '\n'), 1) << listing;
}

}  // namespace
}  // namespace pellwin
