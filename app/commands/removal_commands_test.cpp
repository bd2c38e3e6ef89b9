#include "app/commands/removal_commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "app/commands/storage_check_command.h"
#include "store/history_store.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  int status = 0;
  std::string out;
  std::string err;
};

Outcome run(const std::vector<std::string>& arguments, const Environment& environment,
            const std::string& historyFile = {}) {
  std::ostringstream out, err;
  const int status = runStorageCheck(arguments, environment, out, err, historyFile);
  return {status, out.str(), err.str()};
}

Environment environmentOf(const testing::ScratchHome& scratch) {
  fs::create_directories(scratch.scratch.path() / "proc");
  return {.home = scratch.home,
          .xdgDataHome = scratch.dataHome,
          .procRoot = (scratch.scratch.path() / "proc").string()};
}

TEST(TrashCommand, MovesWhatTheRulesAllowAndSaysWhyForTheRestOneLineEach) {
  testing::ScratchHome scratch;
  const std::string& h = scratch.home;
  scratch.scratch.write("home/old/notes.txt", "notes");
  scratch.scratch.write("home/.local/share/Tovrin/history.sqlite", "history");
  scratch.scratch.write("outside.txt", "outside");
  fs::create_directory_symlink(h + "/old", h + "/shortcut");
  const std::string outside = fs::canonical(scratch.scratch.path()).string() + "/outside.txt";
  const Environment environment = environmentOf(scratch);

  const Outcome mixed = run(
      {"--trash", h + "/shortcut", h + "/.local/share/Tovrin", outside, h + "/gone", h + "/old"},
      environment);
  EXPECT_EQ(mixed.status, 1);
  EXPECT_EQ(mixed.out, "refused: " + h + "/shortcut: It's a shortcut to somewhere else\n" +
                           "refused: " + h + "/.local/share/Tovrin: Tovrin needs it to run\n" +
                           "refused: " + outside + ": It's outside your home folder\n" +
                           "alreadyGone: " + h + "/gone\n" + "moved: " + h + "/old\n");
  EXPECT_EQ(testing::fileBytes(outside), "outside");
  EXPECT_EQ(testing::fileBytes(h + "/.local/share/Tovrin/history.sqlite"), "history");

  // trash-cli sees the moved folder where it came from and puts it back.
  const std::string listing = scratch.run("trash-list");
  EXPECT_NE(listing.find(" " + h + "/old\n"), std::string::npos) << listing;
  (void)scratch.run("trash-restore '" + h + "/old'", "0\n");
  EXPECT_EQ(testing::fileBytes(h + "/old/notes.txt"), "notes");

  scratch.scratch.write("home/a.txt", "a");
  const Outcome allMoved =
      run({"--trash", "--history-db", h + "/h.sqlite", h + "/a.txt"}, environment);
  EXPECT_EQ(allMoved.status, 0);
  EXPECT_EQ(allMoved.out, "moved: " + h + "/a.txt\n");

  const Outcome none = run({"--trash"}, environment);
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.err, "--trash needs at least one path\n");
}

TEST(CleanCommand, RunsThePlanNowPrintsTheSummaryAndLogsOneClean) {
  testing::ScratchHome scratch;
  scratch.scratch.write("home/.cache/thumbnails/normal/x.png", std::string(2'000'000, 't'));
  scratch.scratch.write("home/Documents/thesis.tex", std::string(2'000'000, 'd'));
  Environment environment = environmentOf(scratch);
  environment.xdgStateHome = scratch.home + "/Documents";  // must never make it a log folder
  const std::string history = scratch.home + "/history.sqlite";

  const Outcome first = run({"--clean"}, environment, history);
  EXPECT_EQ(first.status, 0) << first.out;
  EXPECT_TRUE(first.out.starts_with("Freed ")) << first.out;
  EXPECT_FALSE(fs::exists(scratch.home + "/.cache/thumbnails"));
  EXPECT_EQ(testing::fileBytes(scratch.home + "/Documents/thesis.tex"),
            std::string(2'000'000, 'd'));

  const Outcome second = run({"--clean"}, environment, history);
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(second.out, "Nothing was cleaned.\n");

  auto store = HistoryStore::open(history);
  ASSERT_TRUE(store.has_value());
  EXPECT_EQ(store->rowCount(HistoryTable::cleans), 1) << "only a run that removed something";
}

}  // namespace
}  // namespace pellwin
