#include "app/commands/seed_history.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "app/entry.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

using testing::fileBytes;
using testing::ScratchFolder;

template <class T>
std::vector<T> column(const HistoryStore& store, const std::string& sql) {
  auto rows = store.database().query<T>(sql, {}, [](const SQLiteStatement& r) {
    if constexpr (std::is_same_v<T, std::string>) {
      return std::optional(r.text(0));
    } else {
      return std::optional(static_cast<T>(r.integer(0)));
    }
  });
  EXPECT_TRUE(rows.has_value()) << sql;
  return rows.value_or(std::vector<T>{});
}

TEST(SeedHistory, WritesADayThroughTheLivePipelineAndPrintsOneLine) {
  ScratchFolder scratch;
  const auto path = scratch / "x.sqlite";
  // An earlier seeding's file, which seeding replaces.
  ASSERT_TRUE(HistoryStore::open(path).has_value());
  scratch.write("x.sqlite-wal", "stale");
  const double now = 1'717'430'400.75;  // 3 June 2024 16:00:00.75 UTC
  const Calendar calendar = Calendar::fixed(7200);
  std::ostringstream out, err;
  ASSERT_EQ(SeedHistory::run(path, scratch / "real/history.sqlite", now, calendar, out, err), 0)
      << err.str();
  EXPECT_EQ(err.str(), "");

  auto store = HistoryStore::open(path);
  ASSERT_TRUE(store.has_value());
  const double start = 1'717'430'400 - 86395;
  const auto count = [&](HistoryTable t) { return store->rowCount(t).value_or(-1); };
  std::ostringstream expected;
  expected << "seeded " << count(HistoryTable::samples) << " samples, "
           << count(HistoryTable::episodes) << " episodes, " << count(HistoryTable::alerts)
           << " alerts, gap " << static_cast<long long>(start + 40000) << "-"
           << static_cast<long long>(start + 42705) << "\n";
  EXPECT_EQ(out.str(), expected.str());
  EXPECT_EQ(count(HistoryTable::samples), SeedHistory::moments - 540)
      << "one sample per 5-second moment, none for the skipped ones";

  EXPECT_EQ(column<std::string>(*store, "PRAGMA integrity_check"), std::vector<std::string>{"ok"});
  EXPECT_EQ(column<std::int64_t>(*store, "SELECT COUNT(*) FROM samples WHERE time > " +
                                             std::to_string(start + 40000) + " AND time < " +
                                             std::to_string(start + 42705)),
            std::vector<std::int64_t>{0});
  EXPECT_EQ(column<std::int64_t>(*store, "SELECT COUNT(*) FROM episodes WHERE \"end\" IS NULL"),
            std::vector<std::int64_t>{0});
  EXPECT_EQ(column<std::int64_t>(*store, "SELECT COUNT(*) FROM alerts WHERE cleared IS NULL"),
            std::vector<std::int64_t>{0});

  const auto episodeResources =
      column<std::string>(*store, "SELECT DISTINCT resource FROM episodes");
  EXPECT_GE(episodeResources.size(), 3u);
  const auto alertResources = column<std::string>(*store, "SELECT DISTINCT resource FROM alerts");
  EXPECT_GE(alertResources.size(), 2u);
  EXPECT_LT(count(HistoryTable::alerts), count(HistoryTable::episodes))
      << "a relapse within the hour is a slow period without a second notification";

  const auto ranked = column<std::string>(*store, "SELECT DISTINCT name FROM minute_apps");
  const std::set<std::string> names(ranked.begin(), ranked.end());
  EXPECT_EQ(names, (std::set<std::string>{"Google Chrome", "Slack", "Claude", "OrbStack",
                                          "mds_stores", "python3.12"}));
  const auto cause = column<std::string>(
      *store, "SELECT cause FROM alerts WHERE resource = 'memory' ORDER BY time LIMIT 1");
  ASSERT_EQ(cause.size(), 1u);
  EXPECT_TRUE(cause[0].starts_with("Google Chrome ")) << cause[0];

  // Earlier days: three weeks before the seeded day, one row per resource each.
  const auto days = column<std::string>(*store, "SELECT DISTINCT day FROM days ORDER BY day");
  ASSERT_EQ(days.size(), SeedHistory::earlierDays + 2u);
  EXPECT_EQ(days.front(), "2024-05-12");
  EXPECT_EQ(days.back(), "2024-06-03");
  EXPECT_EQ(count(HistoryTable::days), 5 * static_cast<std::int64_t>(days.size()));
}

TEST(SeedHistory, RefusesTheRealHistoryFileHoweverItIsSpelled) {
  ScratchFolder scratch;
  const Environment environment{.home = scratch.path().string(), .xdgDataHome = std::nullopt};
  const auto real = scratch / ".local/share/Tovrin/history.sqlite";
  scratch.write(".local/share/Tovrin/history.sqlite", "the user's real history");
  std::filesystem::create_directory_symlink(scratch / ".local/share", scratch / "share-link");
  EXPECT_EQ(defaultHistoryFile(environment), real.string());

  for (const std::filesystem::path& spelled :
       {real, scratch / ".local/share/Tovrin/../Tovrin/./history.sqlite",
        scratch / "share-link/Tovrin/history.sqlite"}) {
    SCOPED_TRACE(spelled.string());
    std::ostringstream out, err;
    const Command command{.kind = CommandKind::seedHistory,
                          .path = spelled.string(),
                          .historyDatabase = scratch.path().string() + "/other.sqlite"};
    EXPECT_EQ(runCommand(command, environment, out, err), 2);
    EXPECT_EQ(err.str(), "--seed-history refuses the real history file; pass a scratch path\n");
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(fileBytes(real), "the user's real history");
    EXPECT_FALSE(std::filesystem::exists(real.string() + "-wal"));
  }
}

TEST(SeedHistory, RefusesAnEmptyPathAndAnyFileItDidNotMake) {
  ScratchFolder scratch;
  {
    auto places = SQLiteDatabase::open((scratch / "places.sqlite").string());
    ASSERT_TRUE(places.has_value());
    ASSERT_TRUE(places->exec("CREATE TABLE moz_places (url TEXT)").has_value());
  }
  ::chmod((scratch / "places.sqlite").c_str(), 0444);
  scratch.write("notes.sqlite", "the user's notes");
  const std::vector<std::string> before = testing::inventory(scratch.path().string());
  const struct {
    const char* why;
    std::string path;
    std::string message;
  } cases[] = {
      {"an empty path", "", "--seed-history needs a path\n"},
      {"a browser's history, read-only", (scratch / "places.sqlite").string(),
       "--seed-history refuses " + (scratch / "places.sqlite").string() +
           ": it is neither empty nor a Tovrin history file; pass a scratch path\n"},
      {"a text file", (scratch / "notes.sqlite").string(),
       "--seed-history refuses " + (scratch / "notes.sqlite").string() +
           ": it is neither empty nor a Tovrin history file; pass a scratch path\n"},
      {"a folder", scratch.path().string(),
       "--seed-history refuses " + scratch.path().string() +
           ": it is neither empty nor a Tovrin history file; pass a scratch path\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    std::ostringstream out, err;
    const Command command{.kind = CommandKind::seedHistory, .path = c.path};
    EXPECT_EQ(runCommand(command, {.home = scratch.path().string()}, out, err), 2);
    EXPECT_EQ(err.str(), c.message);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(testing::inventory(scratch.path().string()), before);
  }
}

TEST(SeedHistory, AStoreThatCannotOpenFailsWithItsReason) {
  ScratchFolder scratch;
  scratch.write("blocker", "a file where a folder should be");
  std::ostringstream out, err;
  EXPECT_EQ(SeedHistory::run(scratch / "blocker/x.sqlite", scratch / "real.sqlite", 1e9, Calendar(),
                             out, err),
            1);
  EXPECT_TRUE(err.str().starts_with("seeding failed: Couldn't create the folder ")) << err.str();
  EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace pellwin
