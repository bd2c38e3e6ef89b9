#include "store/schema.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "store/history_file_kind.h"
#include "store/history_store.h"
#include "testing/enum_text_round_trip.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

using testing::fileBytes;
using testing::ScratchFolder;

std::vector<std::string> strings(const SQLiteDatabase& db, const std::string& sql) {
  return db.query<std::string>(sql, {}, [](const SQLiteStatement& r) { return r.text(0); })
      .value_or(std::vector<std::string>{"query failed"});
}

// The schema objects that are ours, leaving out SQLite's own (sqlite_sequence, autoindexes).
std::vector<std::string> schemaObjects(const SQLiteDatabase& db) {
  return strings(db, "SELECT name FROM sqlite_master WHERE name NOT LIKE 'sqlite_%' ORDER BY name");
}

SQLiteDatabase rawOpen(const std::filesystem::path& path) {
  auto db = SQLiteDatabase::open(path.string());
  if (!db) std::abort();
  return *db;
}

TEST(Schema, ColumnListsFollowTheMetricAndResourceOrder) {
  const auto samples = Schema::sampleColumns();
  ASSERT_EQ(samples.size(), 20u);
  EXPECT_EQ(samples[0], "time");
  EXPECT_EQ(samples[2], "memoryUsed");
  EXPECT_EQ(samples[14], "thermal");
  EXPECT_EQ(samples[15], "h_memory");
  EXPECT_EQ(samples[19], "h_heat");
  const auto minutes = Schema::minuteColumns();
  ASSERT_EQ(minutes.size(), 46u);
  EXPECT_EQ(std::vector<std::string>(minutes.begin() + 2, minutes.begin() + 6),
            (std::vector<std::string>{"memoryUsed_avg", "memoryUsed_low", "memoryUsed_high",
                                      "compressed_avg"}));
  EXPECT_EQ(minutes[40], "thermal_high");
  EXPECT_EQ(minutes[41], "w_memory");
  EXPECT_EQ(minutes[45], "w_heat");

  const auto statements = Schema::createStatements();
  ASSERT_EQ(statements.size(), 9u);
  EXPECT_TRUE(statements[0].starts_with(
      "CREATE TABLE samples (time REAL PRIMARY KEY, span REAL NOT NULL, memoryUsed REAL, "
      "compressed REAL, swapUsed REAL, swapIn REAL, swapOut REAL"));
  EXPECT_TRUE(
      statements[0].ends_with("thermal REAL, h_memory INTEGER, h_cpu INTEGER, "
                              "h_diskSpace INTEGER, h_diskActivity INTEGER, h_heat INTEGER)"));
  EXPECT_TRUE(
      statements[1].ends_with("thermal_high REAL, w_memory INTEGER, w_cpu INTEGER, "
                              "w_diskSpace INTEGER, w_diskActivity INTEGER, w_heat INTEGER)"));
}

TEST(Schema, ABrandNewFileGetsNineObjectsVersionOneAndTheWriteAheadLog) {
  ScratchFolder scratch;
  auto store = HistoryStore::open(scratch / "deep/er/history.sqlite");
  ASSERT_TRUE(store.has_value()) << description(store.error());
  EXPECT_EQ(schemaObjects(store->database()),
            (std::vector<std::string>{"alerts", "alerts_time", "cleans", "days", "episodes",
                                      "episodes_start", "minute_apps", "minutes", "samples"}));
  EXPECT_EQ(store->userVersion(), 1);
  EXPECT_EQ(strings(store->database(), "PRAGMA journal_mode"), std::vector<std::string>{"wal"});
  EXPECT_EQ(strings(store->database(), "PRAGMA synchronous"), std::vector<std::string>{"1"});
}

TEST(Schema, AVersionOneFileIsNotCreatedAgain) {
  ScratchFolder scratch;
  const auto path = scratch / "history.sqlite";
  ASSERT_TRUE(HistoryStore::open(path).has_value());
  ASSERT_TRUE(rawOpen(path).exec("DROP TABLE cleans").has_value());
  auto reopened = HistoryStore::open(path);
  ASSERT_TRUE(reopened.has_value());
  EXPECT_EQ(schemaObjects(reopened->database()).size(), 8u) << "no CREATE ran the second time";
}

TEST(Schema, ANewerFileIsRefusedAndLeftByteForByte) {
  for (const char* mode : {"DELETE", "WAL"}) {
    SCOPED_TRACE(mode);
    ScratchFolder scratch;
    const auto path = scratch / "history.sqlite";
    {
      SQLiteDatabase db = rawOpen(path);
      ASSERT_TRUE(db.exec(std::string("PRAGMA journal_mode = ") + mode).has_value());
      ASSERT_TRUE(db.exec("CREATE TABLE future (x); INSERT INTO future VALUES (1)").has_value());
      ASSERT_TRUE(db.setUserVersion(2).has_value());
    }
    const std::string before = fileBytes(path);
    const auto entriesBefore = std::distance(std::filesystem::directory_iterator(scratch.path()),
                                             std::filesystem::directory_iterator());

    auto store = HistoryStore::open(path);
    ASSERT_FALSE(store.has_value());
    EXPECT_EQ(description(store.error()), "History was written by a newer Tovrin (version 2)");
    EXPECT_EQ(fileBytes(path), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch.path()),
                            std::filesystem::directory_iterator()),
              entriesBefore)
        << "no journal, log or shared-memory file left beside it";
  }
}

TEST(Schema, AFailedOpenKeepsCompanionsThatWereThereAndRemovesOnlyItsOwn) {
  ScratchFolder scratch;
  const auto path = scratch / "history.sqlite";
  {
    SQLiteDatabase db = rawOpen(path);
    ASSERT_TRUE(db.exec("PRAGMA journal_mode = WAL").has_value());
    ASSERT_TRUE(db.setUserVersion(2).has_value());
  }
  // Another program's log, left beside the file: not this open's to remove.
  scratch.write("history.sqlite-wal", "");
  ASSERT_FALSE(HistoryStore::open(path).has_value());
  EXPECT_TRUE(std::filesystem::exists(scratch / "history.sqlite-wal"));
  EXPECT_FALSE(std::filesystem::exists(scratch / "history.sqlite-shm"));
}

TEST(Schema, AFailingCreateRollsBackWhole) {
  ScratchFolder scratch;
  const auto path = scratch / "history.sqlite";
  // A stray table that clashes with the fifth statement, in a file of version 0.
  ASSERT_TRUE(rawOpen(path).exec("CREATE TABLE episodes (x)").has_value());
  auto store = HistoryStore::open(path);
  ASSERT_FALSE(store.has_value());
  EXPECT_EQ(description(store.error()), "SQLite error 1: table episodes already exists");
  SQLiteDatabase db = rawOpen(path);
  EXPECT_EQ(schemaObjects(db), std::vector<std::string>{"episodes"});
  EXPECT_EQ(Schema::userVersion(db), 0);

  // A negative version counts as 0: the statements run and fail on the tables that exist.
  ScratchFolder second;
  const auto negative = second / "history.sqlite";
  ASSERT_TRUE(HistoryStore::open(negative).has_value());
  ASSERT_TRUE(rawOpen(negative).setUserVersion(-3).has_value());
  auto refused = HistoryStore::open(negative);
  ASSERT_FALSE(refused.has_value());
  EXPECT_EQ(description(refused.error()), "SQLite error 1: table samples already exists");
  EXPECT_EQ(Schema::userVersion(rawOpen(negative)), -3);
}

TEST(Schema, AFileThatIsNotADatabaseIsRefusedWithSQLitesMessage) {
  ScratchFolder scratch;
  const auto path = scratch.write("history.sqlite", std::string(4096, 'x'));
  auto store = HistoryStore::open(path);
  ASSERT_FALSE(store.has_value());
  EXPECT_EQ(description(store.error()), "SQLite error 26: file is not a database");
  EXPECT_EQ(fileBytes(path), std::string(4096, 'x'));
}

TEST(Schema, AFolderThatCannotBeCreatedIsAFileSystemError) {
  ScratchFolder scratch;
  scratch.write("blocker", "a file where the folder should be");
  auto store = HistoryStore::open(scratch / "blocker/history.sqlite");
  ASSERT_FALSE(store.has_value());
  EXPECT_TRUE(std::holds_alternative<HistoryStoreError>(store.error()));
  EXPECT_TRUE(description(store.error()).starts_with("Couldn't create the folder "))
      << description(store.error());
}

}  // namespace

namespace testing {

using StoreEnums = ::testing::Types<HistoryTable, HistoryFileKind>;
INSTANTIATE_TYPED_TEST_SUITE_P(Store, EnumTextRoundTrip, StoreEnums);

}  // namespace testing
}  // namespace pellwin
