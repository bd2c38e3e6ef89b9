#include "app/command_line.h"

#include <gtest/gtest.h>

#include <sstream>

#include "app/entry.h"
#include "testing/enum_text_round_trip.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

TEST(CommandLine, FirstMatchingTestWinsInTheFixedOrder) {
  using Args = std::vector<std::string>;
  const struct {
    const char* why;
    Args arguments;
    Command expected;
  } cases[] = {
      {"nothing: the tray app", {"tovrin"}, {.kind = CommandKind::windowed}},
      {"check beats check-storage",
       {"tovrin", "--check-storage", "/x", "--check"},
       {.kind = CommandKind::check}},
      {"check-storage is not check",
       {"tovrin", "--check-storage"},
       {.kind = CommandKind::checkStorage}},
      {"check-storage passes what follows its first occurrence",
       {"tovrin", "--seed-history", "/a", "--check-storage", "/d", "--top", "5", "--check-storage"},
       {.kind = CommandKind::checkStorage, .arguments = {"/d", "--top", "5", "--check-storage"}}},
      {"seed-history as the last argument",
       {"tovrin", "--seed-history"},
       {.kind = CommandKind::seedHistoryNoPath}},
      {"seed-history takes the argument right after it and ignores the rest",
       {"tovrin", "--seed-history", "/tmp/a.sqlite", "/tmp/b.sqlite"},
       {.kind = CommandKind::seedHistory, .path = "/tmp/a.sqlite"}},
      {"first seed-history counts",
       {"tovrin", "--seed-history", "--seed-history"},
       {.kind = CommandKind::seedHistory, .path = "--seed-history"}},
      {"the program path itself is searched", {"--check"}, {.kind = CommandKind::check}},
      {"help after the modes",
       {"tovrin", "-h", "--seed-history", "p"},
       {.kind = CommandKind::seedHistory, .path = "p"}},
      {"the report", {"tovrin", "--report", "--help"}, {.kind = CommandKind::report}},
      {"the report as JSON",
       {"tovrin", "--json", "--report"},
       {.kind = CommandKind::report, .json = true}},
      {"the check as JSON",
       {"tovrin", "--check", "--json"},
       {.kind = CommandKind::check, .json = true}},
      {"the check comes before the report",
       {"tovrin", "--report", "--check"},
       {.kind = CommandKind::check}},
      {"JSON means nothing to the other modes",
       {"tovrin", "--json", "--seed-history", "p"},
       {.kind = CommandKind::seedHistory, .path = "p"}},
      {"help", {"tovrin", "--version", "--help"}, {.kind = CommandKind::help}},
      {"short help", {"tovrin", "-h"}, {.kind = CommandKind::help}},
      {"version", {"tovrin", "--version"}, {.kind = CommandKind::version}},
      {"a near miss is no mode",
       {"tovrin", "--Check", "check", "--check=1"},
       {.kind = CommandKind::badArguments,
        .problem = "tovrin doesn't know the option --Check (see tovrin --help)"}},
      {"an unknown option is refused, even beside a mode",
       {"tovrin", "--frobnicate", "--check"},
       {.kind = CommandKind::badArguments,
        .problem = "tovrin doesn't know the option --frobnicate (see tovrin --help)"}},
      {"a bare word",
       {"tovrin", "Documents"},
       {.kind = CommandKind::badArguments,
        .problem = "tovrin takes no argument \"Documents\" here (see tovrin --help)"}},
      {"history-db picks the history file of any mode",
       {"tovrin", "--history-db", "/tmp/h.sqlite", "--check"},
       {.kind = CommandKind::check, .historyDatabase = "/tmp/h.sqlite"}},
      {"history-db as the last argument",
       {"tovrin", "--history-db"},
       {.kind = CommandKind::badArguments, .problem = "--history-db needs a path"}},
      {"history-db without a path after check-storage",
       {"tovrin", "--check-storage", "--clean", "--history-db"},
       {.kind = CommandKind::badArguments, .problem = "--history-db needs a path"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(parseCommandLine(c.arguments), c.expected);
  }
}

TEST(CommandLine, LaunchChecksAreReadForTheTrayAppOnly) {
  using Args = std::vector<std::string>;
  const struct {
    const char* why;
    Args arguments;
    Command expected;
  } cases[] = {
      {"status file and test notification",
       {"tovrin", "--test-notification", "--status", "/tmp/s", "--capture"},
       {.launch = {.statusPath = "/tmp/s", .testNotification = true, .capture = true}}},
      {"status as the last argument is ignored, and so the test notification",
       {"tovrin", "--test-notification", "--status"},
       {}},
      {"the argument after status is the path even when it is a switch, which still counts",
       {"tovrin", "--status", "--capture"},
       {.launch = {.statusPath = "--capture", .capture = true}}},
      {"first status counts",
       {"tovrin", "--status", "a", "--status", "b"},
       {.launch = {.statusPath = "a"}}},
      {"capture alone", {"tovrin", "--capture"}, {.launch = {.capture = true}}},
      {"a command-line mode ignores them",
       {"tovrin", "--status", "/tmp/s", "--capture", "--check"},
       {.kind = CommandKind::check}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(parseCommandLine(c.arguments), c.expected);
  }
}

TEST(CommandLine, SeedHistoryWithoutPathExitsTwoWithItsMessage) {
  std::ostringstream out, err;
  const int status = runCommand({.kind = CommandKind::seedHistoryNoPath}, {}, out, err);
  EXPECT_EQ(status, 2);
  EXPECT_EQ(err.str(), "--seed-history needs a path\n");
  EXPECT_EQ(out.str(), "");
}

TEST(CommandLine, BadArgumentsSayOneLineAndExitTwo) {
  std::ostringstream out, err;
  const Command command{.kind = CommandKind::badArguments, .problem = "--history-db needs a path"};
  EXPECT_EQ(runCommand(command, {}, out, err), 2);
  EXPECT_EQ(err.str(), "--history-db needs a path\n");
  EXPECT_EQ(out.str(), "");
}

TEST(CommandLine, HelpAndVersionPrintAndSucceed) {
  std::ostringstream out, err;
  EXPECT_EQ(runCommand({.kind = CommandKind::help}, {}, out, err), 0);
  EXPECT_NE(out.str().find("--check-storage"), std::string::npos);
  EXPECT_NE(out.str().find("--report [--json]"), std::string::npos);
  EXPECT_NE(out.str().find("--check [--json]"), std::string::npos);
  out.str("");
  EXPECT_EQ(runCommand({.kind = CommandKind::version}, {}, out, err), 0);
  EXPECT_EQ(out.str(), std::string("tovrin ") + PELLWIN_VERSION + "\n");
  EXPECT_EQ(err.str(), "");
}

TEST(Entry, MigrationHonoursXdgDataHomeAndReportsFailuresWithoutStopping) {
  testing::ScratchFolder home;
  testing::ScratchFolder xdg;
  xdg.write("Pellwin/history.sqlite", "x");
  home.write(".local/share/Pellwin/history.sqlite", "y");
  std::ostringstream err;
  migrateDataFolder({.home = home.path().string(), .xdgDataHome = xdg.path().string()}, err);
  EXPECT_EQ(err.str(), "");
  EXPECT_TRUE(std::filesystem::exists(xdg / "Tovrin/history.sqlite"));
  EXPECT_TRUE(std::filesystem::exists(home / ".local/share/Pellwin/history.sqlite"));

  migrateDataFolder({.home = home.path().string()}, err);
  EXPECT_TRUE(std::filesystem::exists(home / ".local/share/Tovrin/history.sqlite"));
}

}  // namespace

namespace testing {

using CommandLineEnums = ::testing::Types<CommandKind>;
INSTANTIATE_TYPED_TEST_SUITE_P(CommandLine, EnumTextRoundTrip, CommandLineEnums);

}  // namespace testing
}  // namespace pellwin
