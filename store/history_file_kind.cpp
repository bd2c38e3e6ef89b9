#include "store/history_file_kind.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "store/schema.h"
#include "store/sqlite_database.h"

namespace pellwin {

HistoryFileKind historyFileKind(const std::filesystem::path& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) {
    // ENOTDIR: a file stands where a folder on the way should be, so nothing is at the path.
    return errno == ENOENT || errno == ENOTDIR ? HistoryFileKind::absent : HistoryFileKind::other;
  }
  if (!S_ISREG(info.st_mode)) return HistoryFileKind::other;
  if (info.st_size == 0) return HistoryFileKind::empty;
  const auto database = SQLiteDatabase::openToInspect(path.string());
  if (!database) return HistoryFileKind::other;
  const auto version = Schema::userVersion(*database);
  if (!version || *version != Schema::version) return HistoryFileKind::other;
  const auto tables =
      database->query<std::string>("SELECT name FROM sqlite_master WHERE type = 'table'", {},
                                   [](const SQLiteStatement& row) { return row.text(0); });
  if (!tables) return HistoryFileKind::other;
  const bool complete = std::ranges::all_of(allHistoryTables, [&](HistoryTable table) {
    return std::ranges::find(*tables, std::string(rawValue(table))) != tables->end();
  });
  return complete ? HistoryFileKind::history : HistoryFileKind::other;
}

}  // namespace pellwin
