#include "app/commands/report_command.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "app/commands/seed_history.h"
#include "app/entry.h"
#include "store/history_store.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

using testing::ScratchFolder;

constexpr double kNow = 1'717'430'400;  // Mon 3 June 2024 16:00 UTC

std::filesystem::path seeded(const ScratchFolder& scratch) {
  std::ostringstream out, err;
  EXPECT_EQ(SeedHistory::run(scratch / "seeded.sqlite", scratch / "real.sqlite", kNow, Calendar(),
                             out, err),
            0)
      << err.str();
  return scratch / "seeded.sqlite";
}

TEST(ReportCommand, PrintsTheSeededWeekWithItsCausesAndCleanups) {
  ScratchFolder scratch;
  const auto path = seeded(scratch);
  ASSERT_TRUE(
      HistoryStore::open(path)->logClean(kNow - 60, "Old logs", 0, 300'000'000, 2).has_value());
  std::ostringstream out, err;
  ASSERT_EQ(ReportCommand::run(path, kNow, Calendar(), false, out, err), 0) << err.str();
  EXPECT_EQ(err.str(), "");
  std::vector<std::string> lines;
  std::istringstream text(out.str());
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  ASSERT_GE(lines.size(), 12u) << out.str();
  EXPECT_EQ(lines[0], "Weekly report · Tue 28 May – Mon 3 Jun");
  EXPECT_EQ(lines[1], "What slowed your Mac most");
  EXPECT_TRUE(lines[2].starts_with("  Google Chrome · ")) << lines[2];
  EXPECT_TRUE(lines[2].ends_with(" red · Memory, CPU")) << lines[2];
  const auto has = [&](const std::string& wanted) {
    return std::find(lines.begin(), lines.end(), wanted) != lines.end();
  };
  EXPECT_TRUE(has("This week was slower than last week:")) << out.str();
  EXPECT_TRUE(has("Amber and red time, this week (last week)"));
  EXPECT_TRUE(has("Cleanups: 1 cleanup freed 300 MB"));
  EXPECT_TRUE(has("  Mon 3 Jun 3:59 PM · Old logs: 300 MB freed, 2 items")) << out.str();
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& l) { return l.starts_with("  Disk activity "); }),
            1);
}

TEST(ReportCommand, JSONHoldsTheSameReportForScripts) {
  ScratchFolder scratch;
  const auto path = seeded(scratch);
  std::ostringstream out, err;
  ASSERT_EQ(ReportCommand::run(path, kNow, Calendar(), true, out, err), 0) << err.str();
  const auto document = nlohmann::json::parse(out.str());
  EXPECT_EQ(document["week"]["firstDay"], "2024-05-28");
  EXPECT_EQ(document["week"]["lastDay"], "2024-06-03");
  EXPECT_EQ(document["previousWeek"]["firstDay"], "2024-05-21");
  EXPECT_EQ(document["causes"][0]["name"], "Google Chrome");
  EXPECT_EQ(document["trend"], "slower");
  EXPECT_EQ(document["resources"].size(), allResources.size());
  EXPECT_GT(document["redSeconds"].get<double>(), document["previousRedSeconds"].get<double>());
  EXPECT_EQ(document["cleanups"], nlohmann::json::array());
}

TEST(ReportCommand, ANonexistentHistoryFileIsOneLineAndStatusOneAndIsNotCreated) {
  ScratchFolder scratch;
  const Environment home{.home = scratch.path().string()};
  const struct {
    const char* why;
    Command command;
    std::filesystem::path expectedPath;
  } cases[] = {
      {"the real file",
       {.kind = CommandKind::report},
       std::filesystem::path(defaultHistoryFile(home))},
      {"--history-db",
       {.kind = CommandKind::report, .historyDatabase = (scratch / "h.sqlite").string()},
       scratch / "h.sqlite"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    std::ostringstream out, err;
    EXPECT_EQ(runCommand(c.command, home, out, err), 1);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(), "There is no history file at " + c.expectedPath.string() +
                             ": Tovrin keeps history while its tray app runs.\n");
    EXPECT_FALSE(std::filesystem::exists(c.expectedPath));
  }
  std::ostringstream out, err;
  const auto note = scratch.write("note.sqlite", "not a database\n");
  EXPECT_EQ(ReportCommand::run(note, kNow, Calendar(), false, out, err), 1);
  EXPECT_EQ(err.str(), "Can't read the history file: SQLite error 26: file is not a database\n");
}

}  // namespace
}  // namespace pellwin
