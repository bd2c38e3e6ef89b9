// A thin owner of one SQLite connection and its prepared statements, over SQLite's C
// interface. Every failing call becomes an SQLiteError with the connection's code and message.
// Deliberately not thread-safe: the connection is opened without SQLite's mutex, so a database
// and its statements must be used from one thread at a time.
#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "store/sqlite_error.h"

struct sqlite3;
struct sqlite3_stmt;

namespace pellwin {

// One bound parameter. There is no blob case: history stores none.
using SQLiteValue = std::variant<std::int64_t, double, std::string, std::nullptr_t>;

template <class T>
using SQLiteResult = std::expected<T, SQLiteError>;

class SQLiteStatement;

// One open connection. Copies share it; it is closed (sqlite3_close_v2) when the last copy and
// the last statement made on it are gone.
class SQLiteDatabase {
 public:
  // Opens or creates the file, read-write, without SQLite's connection mutex, and sets a busy
  // timeout of 2,000 ms. A folder that does not exist is SQLite's error 14.
  [[nodiscard]] static SQLiteResult<SQLiteDatabase> open(const std::string& path);
  // Opens an existing file only to read it, as immutable: no lock is taken and no journal,
  // -wal or -shm file is made, so a file of another program is left exactly as it was.
  [[nodiscard]] static SQLiteResult<SQLiteDatabase> openToInspect(const std::string& path);

  // Runs SQL without results (transaction control, pragmas, whole-table deletes).
  [[nodiscard]] SQLiteResult<void> exec(const std::string& sql) const;
  // Binds `values` at positions 1, 2, ... and steps through every row; `row` reads one row and
  // returns a result to keep, or nothing to drop the row. Rows read before a failing step are
  // discarded.
  template <class Row, class Reader>
  [[nodiscard]] SQLiteResult<std::vector<Row>> query(const std::string& sql,
                                                     std::span<const SQLiteValue> values,
                                                     Reader&& row) const;
  [[nodiscard]] SQLiteResult<void> setUserVersion(int version) const;
  // Closing the last connection to a file in write-ahead mode normally copies the log into the
  // file; after this call it does not, so a file that must not be touched stays as it was.
  void skipCheckpointOnClose() const;

  // The connection's current code and message.
  [[nodiscard]] SQLiteError lastError() const;
  [[nodiscard]] sqlite3* handle() const { return handle_.get(); }

 private:
  explicit SQLiteDatabase(std::shared_ptr<sqlite3> handle) : handle_(std::move(handle)) {}
  // `name` is a path, or a "file:" URI when `flags` hold SQLITE_OPEN_URI.
  [[nodiscard]] static SQLiteResult<SQLiteDatabase> openWith(const std::string& name, int flags);
  std::shared_ptr<sqlite3> handle_;
  friend class SQLiteStatement;
};

// One prepared statement. Keeps its connection alive; finalized when released.
class SQLiteStatement {
 public:
  // Prepares the first statement of `sql`; anything after it is ignored.
  [[nodiscard]] static SQLiteResult<SQLiteStatement> prepare(const SQLiteDatabase& database,
                                                             const std::string& sql);

  // Binds at positions 1, 2, ...; text is copied by SQLite and cut at an embedded NUL.
  [[nodiscard]] SQLiteResult<void> bind(std::span<const SQLiteValue> values);
  // true while there is a row to read, false when done.
  [[nodiscard]] SQLiteResult<bool> step();
  // For statements reused across rows: reset, clear bindings, bind, one step that must finish.
  [[nodiscard]] SQLiteResult<void> run(std::span<const SQLiteValue> values);

  // Column readers by 0-based index in the order of the SELECT list.
  [[nodiscard]] bool isNull(int column) const;
  [[nodiscard]] std::int64_t integer(int column) const;
  [[nodiscard]] double real(int column) const;
  [[nodiscard]] std::string text(int column) const;
  [[nodiscard]] std::optional<std::int64_t> optionalInteger(int column) const;
  [[nodiscard]] std::optional<double> optionalReal(int column) const;
  [[nodiscard]] std::optional<std::string> optionalText(int column) const;

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  SQLiteStatement(std::shared_ptr<sqlite3> database, sqlite3_stmt* statement)
      : database_(std::move(database)), statement_(statement) {}
  [[nodiscard]] SQLiteError error() const;

  // Declared first so that it is released last: the statement is finalized before the
  // connection can close.
  std::shared_ptr<sqlite3> database_;
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

template <class Row, class Reader>
SQLiteResult<std::vector<Row>> SQLiteDatabase::query(const std::string& sql,
                                                     std::span<const SQLiteValue> values,
                                                     Reader&& row) const {
  auto statement = SQLiteStatement::prepare(*this, sql);
  if (!statement) return std::unexpected(statement.error());
  if (auto bound = statement->bind(values); !bound) return std::unexpected(bound.error());
  std::vector<Row> rows;
  while (true) {
    auto stepped = statement->step();
    if (!stepped) return std::unexpected(stepped.error());
    if (!*stepped) return rows;
    if (std::optional<Row> read = row(*statement)) rows.push_back(std::move(*read));
  }
}

}  // namespace pellwin
