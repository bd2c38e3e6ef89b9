#include "store/sqlite_database.h"

#include <gtest/gtest.h>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

using testing::ScratchFolder;

std::vector<std::string> texts(const SQLiteDatabase& db, const std::string& sql,
                               std::vector<SQLiteValue> values = {}) {
  auto rows = db.query<std::string>(sql, values, [](const SQLiteStatement& r) {
    return r.isNull(0) ? std::nullopt : std::optional(r.text(0));
  });
  EXPECT_TRUE(rows.has_value()) << (rows ? "" : rows.error().description());
  return rows.value_or(std::vector<std::string>{});
}

TEST(SQLiteDatabase, OpeningInAMissingFolderFailsWithSQLitesCantOpen) {
  ScratchFolder scratch;
  auto db = SQLiteDatabase::open((scratch / "missing/history.sqlite").string());
  ASSERT_FALSE(db.has_value());
  EXPECT_EQ(db.error().code, 14);
  EXPECT_EQ(db.error().description(), "SQLite error 14: unable to open database file");
}

TEST(SQLiteDatabase, BindsEveryKindOfValueAndReadsItBack) {
  ScratchFolder scratch;
  auto db = SQLiteDatabase::open((scratch / "t.sqlite").string());
  ASSERT_TRUE(db.has_value());
  ASSERT_TRUE(db->exec("CREATE TABLE t (i INTEGER, r REAL, s TEXT, n TEXT)").has_value());
  auto insert = SQLiteStatement::prepare(*db, "INSERT INTO t VALUES (?, ?, ?, ?)");
  ASSERT_TRUE(insert.has_value());
  const std::string withNul("before\0after", 12);
  const std::vector<SQLiteValue> rows[] = {
      {std::int64_t{-9223372036854775807 - 1}, 0.1, withNul, nullptr},
      {std::int64_t{42}, -2.5e300, std::string("Grüße"), std::string("x")},
  };
  for (const auto& row : rows) ASSERT_TRUE(insert->run(row).has_value());

  struct Read {
    std::int64_t i;
    double r;
    std::string s;
    std::optional<std::string> n;
  };
  auto read =
      db->query<Read>("SELECT i, r, s, n FROM t ORDER BY rowid", {}, [](const SQLiteStatement& r) {
        return std::optional(Read{r.integer(0), r.real(1), r.text(2), r.optionalText(3)});
      });
  ASSERT_TRUE(read.has_value());
  ASSERT_EQ(read->size(), 2u);
  EXPECT_EQ((*read)[0].i, -9223372036854775807 - 1);
  EXPECT_EQ((*read)[0].r, 0.1);
  EXPECT_EQ((*read)[0].s, "before") << "text is bound up to its first NUL";
  EXPECT_EQ((*read)[0].n, std::nullopt);
  EXPECT_EQ((*read)[1].r, -2.5e300);
  EXPECT_EQ((*read)[1].s, "Grüße");
  EXPECT_EQ((*read)[1].n, "x");
}

TEST(SQLiteDatabase, QueryKeepsOnlyTheRowsTheReaderReturns) {
  ScratchFolder scratch;
  auto db = SQLiteDatabase::open((scratch / "t.sqlite").string());
  ASSERT_TRUE(db.has_value());
  ASSERT_TRUE(
      db->exec("CREATE TABLE t (s TEXT); INSERT INTO t VALUES ('a'), (NULL), ('c')").has_value());
  EXPECT_EQ(texts(*db, "SELECT s FROM t ORDER BY rowid"), (std::vector<std::string>{"a", "c"}));
  EXPECT_TRUE(texts(*db, "SELECT s FROM t WHERE s = ?", {std::string("zz")}).empty());
}

TEST(SQLiteDatabase, FailuresCarrySQLitesCodeAndMessageUnchanged) {
  ScratchFolder scratch;
  auto db = SQLiteDatabase::open((scratch / "t.sqlite").string());
  ASSERT_TRUE(db.has_value());
  ASSERT_TRUE(db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)").has_value());
  auto insert = SQLiteStatement::prepare(*db, "INSERT INTO t VALUES (?)");
  ASSERT_TRUE(insert.has_value());
  ASSERT_TRUE(insert->run(std::vector<SQLiteValue>{std::int64_t{1}}).has_value());
  auto duplicate = insert->run(std::vector<SQLiteValue>{std::int64_t{1}});
  ASSERT_FALSE(duplicate.has_value());
  EXPECT_EQ(duplicate.error().description(), "SQLite error 19: UNIQUE constraint failed: t.id");

  auto badSQL = db->exec("SELEKT 1");
  ASSERT_FALSE(badSQL.has_value());
  EXPECT_EQ(badSQL.error(), (SQLiteError{1, "near \"SELEKT\": syntax error"}));

  auto tooMany = SQLiteStatement::prepare(*db, "SELECT ?");
  ASSERT_TRUE(tooMany.has_value());
  auto bound = tooMany->bind(std::vector<SQLiteValue>{std::int64_t{1}, std::int64_t{2}});
  ASSERT_FALSE(bound.has_value());
  EXPECT_EQ(bound.error().code, 25) << "SQLITE_RANGE for a parameter that does not exist";
}

TEST(SQLiteDatabase, AStatementKeepsItsConnectionOpen) {
  ScratchFolder scratch;
  std::optional<SQLiteStatement> statement;
  {
    auto db = SQLiteDatabase::open((scratch / "t.sqlite").string());
    ASSERT_TRUE(db.has_value());
    auto prepared = SQLiteStatement::prepare(*db, "SELECT 7");
    ASSERT_TRUE(prepared.has_value());
    statement.emplace(std::move(*prepared));
  }
  auto stepped = statement->step();
  ASSERT_TRUE(stepped.has_value());
  EXPECT_TRUE(*stepped);
  EXPECT_EQ(statement->integer(0), 7);
}

}  // namespace
}  // namespace pellwin
