#include "store/schema.h"

#include "core/history/history_metric.h"
#include "core/monitor/resource.h"
#include "store/transaction.h"

namespace pellwin {

namespace Schema {

namespace {

std::vector<std::string> resourceColumns(std::string_view prefix) {
  std::vector<std::string> columns;
  for (Resource resource : allResources)
    columns.push_back(std::string(prefix).append(rawValue(resource)));
  return columns;
}

std::vector<std::string> withType(const std::vector<std::string>& columns, std::string_view type) {
  std::vector<std::string> typed;
  for (const std::string& column : columns) typed.push_back(column + " " + std::string(type));
  return typed;
}

std::vector<std::string> concatenated(std::vector<std::string> a,
                                      const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += separator;
    text += parts[i];
  }
  return text;
}

std::vector<std::string> metricColumns() {
  std::vector<std::string> columns;
  for (HistoryMetric metric : allHistoryMetrics) columns.emplace_back(rawValue(metric));
  return columns;
}

std::vector<std::string> sampleHealthColumns() { return resourceColumns("h_"); }

std::vector<std::string> minuteStatColumns() {
  std::vector<std::string> columns;
  for (const std::string& metric : metricColumns()) {
    for (const char* suffix : {"_avg", "_low", "_high"}) columns.push_back(metric + suffix);
  }
  return columns;
}

std::vector<std::string> minuteWorstColumns() { return resourceColumns("w_"); }

std::vector<std::string> sampleColumns() {
  return concatenated(concatenated({"time", "span"}, metricColumns()), sampleHealthColumns());
}

std::vector<std::string> minuteColumns() {
  return concatenated(concatenated({"minute", "covered"}, minuteStatColumns()),
                      minuteWorstColumns());
}

std::vector<std::string> createStatements() {
  const std::string samples = "CREATE TABLE samples (time REAL PRIMARY KEY, span REAL NOT NULL, " +
                              joined(concatenated(withType(metricColumns(), "REAL"),
                                                  withType(sampleHealthColumns(), "INTEGER")),
                                     ", ") +
                              ")";
  const std::string minutes =
      "CREATE TABLE minutes (minute REAL PRIMARY KEY, covered REAL NOT NULL, " +
      joined(concatenated(withType(minuteStatColumns(), "REAL"),
                          withType(minuteWorstColumns(), "INTEGER")),
             ", ") +
      ")";
  return {
      samples,
      minutes,
      "CREATE TABLE minute_apps (minute REAL NOT NULL, rank INTEGER NOT NULL, position INTEGER "
      "NOT NULL,\n    app_id TEXT NOT NULL, name TEXT NOT NULL, bundle_id TEXT, value REAL NOT "
      "NULL,\n    PRIMARY KEY (minute, rank, position))",
      "CREATE TABLE days (day TEXT NOT NULL, resource TEXT NOT NULL, strain_s REAL NOT NULL,\n"
      "    problem_s REAL NOT NULL, causes TEXT NOT NULL, PRIMARY KEY (day, resource))",
      "CREATE TABLE episodes (resource TEXT NOT NULL, start REAL NOT NULL, \"end\" REAL, peak "
      "REAL NOT NULL,\n    peak_text TEXT NOT NULL, top_app TEXT, top_value TEXT, PRIMARY KEY "
      "(resource, start))",
      "CREATE INDEX episodes_start ON episodes (start)",
      "CREATE TABLE alerts (id INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, started "
      "REAL NOT NULL,\n    resource TEXT NOT NULL, message TEXT NOT NULL, cause TEXT, cleared "
      "REAL, read INTEGER NOT NULL DEFAULT 0)",
      "CREATE INDEX alerts_time ON alerts (time)",
      "CREATE TABLE cleans (id INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, rules TEXT "
      "NOT NULL,\n    bytes_deleted INTEGER NOT NULL, bytes_trashed INTEGER NOT NULL, items "
      "INTEGER NOT NULL)",
  };
}

SQLiteResult<int> userVersion(const SQLiteDatabase& database) {
  auto rows = database.query<std::int64_t>(
      "PRAGMA user_version", {}, [](const SQLiteStatement& row) { return row.integer(0); });
  if (!rows) return std::unexpected(rows.error());
  return rows->empty() ? 0 : static_cast<int>(rows->front());
}

std::expected<void, HistoryOpenError> prepare(const SQLiteDatabase& database) {
  // The version is read before anything else: switching the journal mode rewrites the file's
  // header, and a newer file must be left exactly as it was.
  auto found = userVersion(database);
  if (!found) return std::unexpected(found.error());
  if (*found > version) {
    database.skipCheckpointOnClose();
    return std::unexpected(HistoryStoreError{"History was written by a newer Tovrin (version " +
                                             std::to_string(*found) + ")"});
  }
  for (const char* pragma : {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = NORMAL"}) {
    if (auto set = database.exec(pragma); !set) return std::unexpected(set.error());
  }
  if (*found == version) return {};
  // 0 for a new or empty file; a negative number is treated alike, and the create statements
  // then fail on the existing tables and roll back.
  auto created = inTransaction<SQLiteError>(database, [&]() -> SQLiteResult<void> {
    for (const std::string& statement : createStatements()) {
      if (auto done = database.exec(statement); !done) return done;
    }
    return database.setUserVersion(version);
  });
  if (!created) return std::unexpected(created.error());
  return {};
}

}  // namespace Schema
}  // namespace pellwin
