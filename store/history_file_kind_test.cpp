#include "store/history_file_kind.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "store/history_store.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

SQLiteDatabase rawOpen(const fs::path& path) {
  auto db = SQLiteDatabase::open(path.string());
  if (!db) std::abort();
  return std::move(*db);
}

TEST(HistoryFileKind, OnlyAnEmptyPlaceOrThisProgramsHistoryMayBeReplaced) {
  ScratchFolder scratch;
  ASSERT_TRUE(HistoryStore::open(scratch / "history.sqlite").has_value());
  ASSERT_TRUE(HistoryStore::open(scratch / "old.sqlite").has_value());
  ASSERT_TRUE(rawOpen(scratch / "old.sqlite").setUserVersion(2).has_value());
  ASSERT_TRUE(HistoryStore::open(scratch / "partial.sqlite").has_value());
  ASSERT_TRUE(rawOpen(scratch / "partial.sqlite").exec("DROP TABLE cleans").has_value());
  ASSERT_TRUE(rawOpen(scratch / "places.sqlite")
                  .exec("CREATE TABLE moz_places (id INTEGER PRIMARY KEY, url TEXT)")
                  .has_value());
  scratch.write("empty.sqlite", "");
  scratch.write("notes.txt", "not a database");
  fs::create_directory(scratch / "folder.sqlite");
  fs::create_symlink(scratch / "history.sqlite", scratch / "link.sqlite");
  fs::create_symlink(scratch / "nowhere", scratch / "dangling.sqlite");
  const struct {
    const char* why;
    const char* name;
    HistoryFileKind expected;
  } cases[] = {
      {"nothing there", "missing.sqlite", HistoryFileKind::absent},
      {"an empty file", "empty.sqlite", HistoryFileKind::empty},
      {"a history file", "history.sqlite", HistoryFileKind::history},
      {"another version", "old.sqlite", HistoryFileKind::other},
      {"a table missing", "partial.sqlite", HistoryFileKind::other},
      {"a browser's database", "places.sqlite", HistoryFileKind::other},
      {"text", "notes.txt", HistoryFileKind::other},
      {"a folder", "folder.sqlite", HistoryFileKind::other},
      {"a link to a history file", "link.sqlite", HistoryFileKind::other},
      {"a dangling link", "dangling.sqlite", HistoryFileKind::other},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(historyFileKind(scratch / c.name), c.expected);
  }
}

TEST(HistoryFileKind, LooksWithoutChangingAByteOrAddingAFile) {
  ScratchFolder scratch;
  const auto path = scratch / "places.sqlite";
  {
    SQLiteDatabase db = rawOpen(path);
    ASSERT_TRUE(db.exec("PRAGMA journal_mode = WAL").has_value());
    ASSERT_TRUE(db.exec("CREATE TABLE moz_places (url TEXT)").has_value());
  }
  ::chmod(path.c_str(), 0444);
  const std::string before = testing::fileBytes(path);
  EXPECT_EQ(historyFileKind(path), HistoryFileKind::other);
  EXPECT_EQ(testing::fileBytes(path), before);
  EXPECT_EQ(testing::inventory(scratch.path().string()),
            std::vector<std::string>{path.string() + " " + std::to_string(before.size())});
}

}  // namespace
}  // namespace pellwin
