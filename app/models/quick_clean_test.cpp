#include "app/models/quick_clean.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <thread>

#include "app/commands/clean_plan_report.h"
#include "app/models/history_recorder.h"
#include "testing/owner_loop.h"
#include "testing/proc_fixture.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::FakeProcess;
using testing::OwnerLoop;
using testing::ScratchFolder;

std::map<std::string, std::uintmax_t> contents(const fs::path& root) {
  std::map<std::string, std::uintmax_t> files;
  for (const auto& e : fs::recursive_directory_iterator(root)) {
    files[e.path().string()] = e.is_regular_file() && !e.is_symlink() ? e.file_size() : 0;
  }
  return files;
}

// A scratch home with caches, and a scratch proc root where pip3 and Spotify run.
struct Machine {
  ScratchFolder home;
  ScratchFolder proc;
  Environment environment{.home = home.path().string(),
                          .xdgDataHome = (home / ".local/share").string(),
                          .procRoot = (proc / "proc").string()};

  Machine() {
    home.write(".cache/pip/http-v2/a", std::string(200'000, 'p'));
    home.write(".cache/yarn/v6/pkg", std::string(100'000, 'y'));
    home.write(".cache/thumbnails/normal/x.png", std::string(50'000, 't'));
    home.write(".cache/spotify/Storage/x", std::string(80'000, 's'));
    home.write(".cache/bazel/_bazel_me/abc/execroot/out.o", std::string(300'000, 'b'));
    home.write(".cache/debuginfod_client/0123/debuginfo", std::string(150'000, 'd'));
    home.write(".local/share/Tovrin/history.sqlite", "not really");
    fs::create_directories(proc / "proc");
    writeProcess(proc, FakeProcess{.pid = 200,
                                   .comm = "pip3",
                                   .exe = "/usr/bin/python3.11",
                                   .arguments = {"/usr/bin/python3", "/usr/bin/pip3", "download"}});
    writeProcess(proc, FakeProcess{.pid = 300,
                                   .comm = "spotify",
                                   .exe = "/opt/spotify/spotify",
                                   .arguments = {"/opt/spotify/spotify"}});
  }
};

TEST(QuickClean, ThePlanNamesWhatRunsAndLeavesEveryByteInPlace) {
  Machine m;
  const auto before = contents(m.home.path());
  std::ostringstream out;
  EXPECT_EQ(runCleanPlan(m.environment, out), 0);
  const std::string text = out.str();
  EXPECT_NE(text.find("Developer caches\t"), std::string::npos) << text;
  EXPECT_NE(text.find("1 skipped because it is in use: pip cache, pip3 is running"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("spotify, spotify is open"), std::string::npos) << text;
  EXPECT_NE(text.find("\tYarn cache\t" + m.environment.home + "/.cache/yarn\n"), std::string::npos)
      << text;
  EXPECT_NE(text.find("\tthumbnails\t"), std::string::npos) << text;
  EXPECT_NE(text.find("Downloaded debug symbols\t"), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with(" s, nothing was changed\n")) << text;
  EXPECT_EQ(contents(m.home.path()), before);
}

TEST(QuickClean, ThePlanNeverOffersWhatTheRemovalRulesRefuse) {
  ScratchFolder home;
  home.write("Documents/thesis.tex", std::string(300'000, 't'));
  home.write(".local/share/keyrings/login.keyring", std::string(100'000, 'k'));
  home.write(".local/share/Trash/files/old", std::string(100'000, 'o'));
  home.write(".config/autostart/app.desktop", std::string(100'000, 'a'));
  home.write("xcache/pip/http/blob", std::string(100'000, 'p'));
  const std::string h = home.path().string();
  const struct {
    const char* why;
    Environment environment;
    std::vector<std::string> offered;
  } cases[] = {
      {"a cache home on Documents", {.home = h, .xdgCacheHome = h + "/Documents"}, {}},
      {"a cache home on the data home", {.home = h, .xdgCacheHome = h + "/.local/share"}, {}},
      {"a cache home on the config home", {.home = h, .xdgCacheHome = h + "/.config"}, {}},
      {"an ordinary moved cache home still offers its caches",
       {.home = h, .xdgCacheHome = h + "/xcache"},
       {h + "/xcache/pip"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    Environment environment = c.environment;
    environment.procRoot = h + "/no-proc";
    const CleanPlan plan = plannedClean(environment, RunningSet{}, 0);
    std::vector<std::string> offered;
    for (const CleanGroupPlan& group : plan.groups) {
      for (const CleanItem& item : group.items) offered.push_back(item.path);
    }
    EXPECT_EQ(offered, c.offered);
  }
}

TEST(QuickClean, ARunDeletesOrTrashesByGroupReportsProblemsAndLogsOneClean) {
  Machine m;
  OwnerLoop loop;
  HistoryRecorder recorder(HistoryRecorderSetup{.url = m.home / "history.sqlite",
                                                .post = loop.poster(),
                                                .now = [] { return 1'717'416'000.0; },
                                                .calendar = [](double) { return Calendar(); }});
  CleanerModel model(quickCleanServices(m.environment, recorder, loop.poster()));
  model.scan();
  ASSERT_TRUE(loop.runUntil([&] { return model.phase() == CleanerModel::Phase::ready; }));
  const CleanPlan plan = *model.plan();
  const CleanTotals totals = model.totals();
  EXPECT_EQ(totals.items, 4) << "yarn, thumbnails, bazel, debuginfod";

  // Between the scan and the run the thumbnails folder is swapped for a link: it must stay.
  fs::remove_all(m.home / ".cache/thumbnails");
  fs::create_directory_symlink(m.home / ".local/share/Tovrin", m.home / ".cache/thumbnails");
  const std::uint64_t thumbnails = plan.item((m.home / ".cache/thumbnails").string())->bytes;

  model.requestClean();
  ASSERT_TRUE(model.confirming());
  model.clean();
  ASSERT_TRUE(loop.runUntil([&] { return model.phase() == CleanerModel::Phase::done; }));

  const CleanSummary& summary = *model.summary();
  EXPECT_EQ(summary.cleaned, 3);
  EXPECT_EQ(summary.freed, totals.deleteBytes - thumbnails);
  EXPECT_EQ(summary.trashed, totals.trashBytes);
  EXPECT_EQ(summary.problems, std::vector<std::string>{
                                  "thumbnails was left alone. It's a shortcut to somewhere else"});
  EXPECT_FALSE(fs::exists(m.home / ".cache/yarn"));
  EXPECT_TRUE(fs::exists(m.home / ".cache/pip")) << "pip3 was running";
  EXPECT_TRUE(fs::exists(m.home / ".local/share/Tovrin/history.sqlite"));
  EXPECT_TRUE(fs::exists(m.home / ".local/share/Trash/files/bazel/_bazel_me/abc/execroot/out.o"));
  EXPECT_TRUE(fs::exists(m.home / ".local/share/Trash/files/debuginfod_client"));

  // The desktop's own tools see what went to the Trash.
  const std::string command = "HOME='" + m.environment.home + "' XDG_DATA_HOME='" +
                              *m.environment.xdgDataHome + "' trash-list 2>/dev/null";
  std::string listed;
  if (FILE* pipe = ::popen(command.c_str(), "r")) {
    char buffer[4096];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) listed += buffer;
    ::pclose(pipe);
  }
  EXPECT_NE(listed.find(m.environment.home + "/.cache/bazel"), std::string::npos) << listed;
  EXPECT_NE(listed.find(m.environment.home + "/.cache/debuginfod_client"), std::string::npos)
      << listed;

  std::optional<std::int64_t> cleans;
  recorder.read<std::int64_t>(
      [](const HistoryStore& store) { return store.rowCount(HistoryTable::cleans); },
      [&](std::expected<std::int64_t, HistoryFailure> count) { cleans = count.value_or(-1); });
  ASSERT_TRUE(loop.runUntil([&] { return cleans.has_value(); }));
  EXPECT_EQ(*cleans, 1);
}

}  // namespace
}  // namespace pellwin
