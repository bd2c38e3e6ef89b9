#include "store/sqlite_database.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

namespace pellwin {

namespace {

constexpr int kOpenFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
static_assert(kOpenFlags == 0x8006);
constexpr int kBusyTimeoutMilliseconds = 2000;

SQLiteError errorOf(sqlite3* handle) {
  const char* message = sqlite3_errmsg(handle);
  if (message == nullptr) {
    // Only a null or destroyed connection gives no message: a programming fault.
    std::fprintf(stderr, "sqlite3_errmsg returned no message\n");
    std::abort();
  }
  return SQLiteError{.code = sqlite3_errcode(handle), .message = message};
}

// A path as the "file:" URI that sqlite3_open_v2 takes: the characters a URI gives meaning to
// are percent-encoded, so a file named "a?b#c" stays that file.
std::string fileURI(const std::string& path) {
  static constexpr char hex[] = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '%' || c == '?' || c == '#' || byte < 0x20 || byte >= 0x7F) {
      uri += '%';
      uri += hex[byte >> 4];
      uri += hex[byte & 0x0F];
    } else {
      uri += c;
    }
  }
  return uri;
}

}  // namespace

SQLiteResult<SQLiteDatabase> SQLiteDatabase::openWith(const std::string& name, int flags) {
  sqlite3* raw = nullptr;
  const int result = sqlite3_open_v2(name.c_str(), &raw, flags, nullptr);
  if (raw == nullptr) {
    return std::unexpected(SQLiteError{.code = result, .message = sqlite3_errstr(result)});
  }
  // SQLite hands back a connection even when opening failed; it must be closed.
  std::shared_ptr<sqlite3> handle(raw, [](sqlite3* h) { sqlite3_close_v2(h); });
  if (result != SQLITE_OK) return std::unexpected(errorOf(raw));
  sqlite3_busy_timeout(raw, kBusyTimeoutMilliseconds);
  return SQLiteDatabase(std::move(handle));
}

SQLiteResult<SQLiteDatabase> SQLiteDatabase::open(const std::string& path) {
  return openWith(path, kOpenFlags);
}

SQLiteResult<SQLiteDatabase> SQLiteDatabase::openToInspect(const std::string& path) {
  return openWith(fileURI(path) + "?mode=ro&immutable=1",
                  SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX);
}

SQLiteResult<void> SQLiteDatabase::exec(const std::string& sql) const {
  if (sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    return std::unexpected(lastError());
  }
  return {};
}

SQLiteResult<void> SQLiteDatabase::setUserVersion(int version) const {
  return exec("PRAGMA user_version = " + std::to_string(version));
}

void SQLiteDatabase::skipCheckpointOnClose() const {
  sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

SQLiteError SQLiteDatabase::lastError() const { return errorOf(handle()); }

void SQLiteStatement::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SQLiteResult<SQLiteStatement> SQLiteStatement::prepare(const SQLiteDatabase& database,
                                                       const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(database.handle(), sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) {
    sqlite3_finalize(raw);
    return std::unexpected(database.lastError());
  }
  return SQLiteStatement(database.handle_, raw);
}

SQLiteError SQLiteStatement::error() const { return errorOf(database_.get()); }

SQLiteResult<void> SQLiteStatement::bind(std::span<const SQLiteValue> values) {
  sqlite3_stmt* s = statement_.get();
  int position = 1;
  for (const SQLiteValue& value : values) {
    const int result = std::visit(
        [&](const auto& v) -> int {
          using V = std::decay_t<decltype(v)>;
          if constexpr (std::is_same_v<V, std::int64_t>) {
            return sqlite3_bind_int64(s, position, v);
          } else if constexpr (std::is_same_v<V, double>) {
            return sqlite3_bind_double(s, position, v);
          } else if constexpr (std::is_same_v<V, std::string>) {
            return sqlite3_bind_text(s, position, v.c_str(), -1, SQLITE_TRANSIENT);
          } else {
            return sqlite3_bind_null(s, position);
          }
        },
        value);
    if (result != SQLITE_OK) return std::unexpected(error());
    ++position;
  }
  return {};
}

SQLiteResult<bool> SQLiteStatement::step() {
  switch (sqlite3_step(statement_.get())) {
    case SQLITE_ROW: return true;
    case SQLITE_DONE: return false;
    default: return std::unexpected(error());
  }
}

SQLiteResult<void> SQLiteStatement::run(std::span<const SQLiteValue> values) {
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
  if (auto bound = bind(values); !bound) return bound;
  auto stepped = step();
  if (!stepped) return std::unexpected(stepped.error());
  if (*stepped) {
    // A writing statement that yields rows is a programming fault; say so in SQLite's words.
    return std::unexpected(
        SQLiteError{.code = SQLITE_MISUSE, .message = sqlite3_errstr(SQLITE_MISUSE)});
  }
  return {};
}

bool SQLiteStatement::isNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::int64_t SQLiteStatement::integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

double SQLiteStatement::real(int column) const {
  return sqlite3_column_double(statement_.get(), column);
}

std::string SQLiteStatement::text(int column) const {
  const unsigned char* text = sqlite3_column_text(statement_.get(), column);
  if (text == nullptr) return {};
  const int bytes = sqlite3_column_bytes(statement_.get(), column);
  return std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(bytes));
}

std::optional<std::int64_t> SQLiteStatement::optionalInteger(int column) const {
  if (isNull(column)) return std::nullopt;
  return integer(column);
}

std::optional<double> SQLiteStatement::optionalReal(int column) const {
  if (isNull(column)) return std::nullopt;
  return real(column);
}

std::optional<std::string> SQLiteStatement::optionalText(int column) const {
  if (isNull(column)) return std::nullopt;
  return text(column);
}

}  // namespace pellwin
