#include "store/history_store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <limits>
#include <system_error>

#include "store/cause_json.h"
#include "store/retention.h"
#include "store/transaction.h"

namespace pellwin {

namespace {

SQLiteValue optionalText(const std::optional<std::string>& text) {
  if (text) return *text;
  return nullptr;
}

SQLiteValue optionalReal(const std::optional<double>& value) {
  if (value) return *value;
  return nullptr;
}

SQLiteValue text(std::string_view s) { return std::string(s); }

template <class Key>
SQLiteValue healthValue(const std::map<Key, Health>& health, Key key) {
  const auto found = health.find(key);
  if (found == health.end()) return nullptr;
  return std::int64_t{rawValue(found->second)};
}

std::string insertAll(std::string_view table, const std::vector<std::string>& columns) {
  const std::vector<std::string> marks(columns.size(), "?");
  return "INSERT OR REPLACE INTO " + std::string(table) + " (" + Schema::joined(columns, ", ") +
         ") VALUES (" + Schema::joined(marks, ", ") + ")";
}

std::vector<SQLiteValue> sampleValues(const SampleRow& row) {
  std::vector<SQLiteValue> values = {row.time, row.span};
  for (HistoryMetric metric : allHistoryMetrics) {
    if (const auto found = row.values.find(metric); found != row.values.end()) {
      values.emplace_back(found->second);
    } else {
      values.emplace_back(nullptr);
    }
  }
  for (Resource resource : allResources) values.push_back(healthValue(row.health, resource));
  return values;
}

std::vector<SQLiteValue> minuteValues(const MinuteRow& row) {
  std::vector<SQLiteValue> values = {row.minute, row.covered};
  for (HistoryMetric metric : allHistoryMetrics) {
    const auto found = row.stats.find(metric);
    if (found == row.stats.end()) {
      values.insert(values.end(), {nullptr, nullptr, nullptr});
    } else {
      values.insert(values.end(), {found->second.average, found->second.low, found->second.high});
    }
  }
  for (Resource resource : allResources) values.push_back(healthValue(row.worst, resource));
  return values;
}

// Prepares `sql` once and runs it for every row of `rows`.
template <class Row, class Values>
SQLiteResult<void> runForEach(const SQLiteDatabase& db, const std::string& sql,
                              const std::vector<Row>& rows, Values&& valuesOf) {
  if (rows.empty()) return {};
  auto statement = SQLiteStatement::prepare(db, sql);
  if (!statement) return std::unexpected(statement.error());
  for (const Row& row : rows) {
    const std::vector<SQLiteValue> values = valuesOf(row);
    if (auto done = statement->run(values); !done) return done;
  }
  return {};
}

SQLiteResult<void> writeClears(const SQLiteDatabase& db, const RollupOutput& output) {
  return runForEach(db, "UPDATE alerts SET cleared = ? WHERE resource = ? AND cleared IS NULL",
                    output.clears, [](const AlertClear& c) {
                      return std::vector<SQLiteValue>{c.at, text(rawValue(c.resource))};
                    });
}

SQLiteResult<void> writeAlerts(const SQLiteDatabase& db, const RollupOutput& output) {
  return runForEach(
      db,
      "INSERT INTO alerts (time, started, resource, message, cause, cleared, read) VALUES (?, ?, "
      "?, ?, ?, ?, ?)",
      output.alerts, [](const AlertRow& a) {
        return std::vector<SQLiteValue>{a.time,
                                        a.started,
                                        text(rawValue(a.resource)),
                                        a.message,
                                        optionalText(a.cause),
                                        optionalReal(a.cleared),
                                        std::int64_t{a.read ? 1 : 0}};
      });
}

// An episode is written when it opens and rewritten when it closes; its key is (resource,
// start).
SQLiteResult<void> writeEpisodes(const SQLiteDatabase& db, const RollupOutput& output) {
  return runForEach(
      db,
      "INSERT INTO episodes (resource, start, \"end\", peak, peak_text, top_app, top_value) VALUES "
      "(?, ?, ?, ?, ?, ?, ?)\nON CONFLICT (resource, start) DO UPDATE SET \"end\" = "
      "excluded.\"end\", peak = excluded.peak,\n    peak_text = excluded.peak_text, top_app = "
      "excluded.top_app, top_value = excluded.top_value",
      output.episodes, [](const EpisodeRow& e) {
        return std::vector<SQLiteValue>{text(rawValue(e.resource)),
                                        e.start,
                                        optionalReal(e.end),
                                        e.peak,
                                        e.peakText,
                                        optionalText(e.topApp),
                                        optionalText(e.topValue)};
      });
}

// A day's running totals replace the stored ones.
SQLiteResult<void> writeDays(const SQLiteDatabase& db, const RollupOutput& output) {
  return runForEach(
      db,
      "INSERT INTO days (day, resource, strain_s, problem_s, causes) VALUES (?, ?, ?, ?, ?)\nON "
      "CONFLICT (day, resource) DO UPDATE SET strain_s = excluded.strain_s,\n    problem_s = "
      "excluded.problem_s, causes = excluded.causes",
      output.days, [](const DayRow& d) {
        return std::vector<SQLiteValue>{d.day, text(rawValue(d.resource)), d.strainSeconds,
                                        d.problemSeconds, encodeCauses(d.causes)};
      });
}

SQLiteResult<void> writeMinutes(const SQLiteDatabase& db, const RollupOutput& output) {
  // The statement text is generated once; it never changes while the program runs.
  static const std::string sql = insertAll("minutes", Schema::minuteColumns());
  return runForEach(db, sql, output.minutes, minuteValues);
}

SQLiteResult<void> writeMinuteApps(const SQLiteDatabase& db, const RollupOutput& output) {
  return runForEach(
      db,
      "INSERT OR REPLACE INTO minute_apps (minute, rank, position, app_id, name, bundle_id, "
      "value)\nVALUES (?, ?, ?, ?, ?, ?, ?)",
      output.apps, [](const MinuteAppRow& a) {
        return std::vector<SQLiteValue>{a.minute,
                                        std::int64_t{static_cast<int>(a.rank)},
                                        std::int64_t{a.position},
                                        a.appID,
                                        a.name,
                                        optionalText(a.bundleIdentifier),
                                        a.value};
      });
}

SQLiteResult<void> writeSamples(const SQLiteDatabase& db, const RollupOutput& output) {
  static const std::string sql = insertAll("samples", Schema::sampleColumns());
  return runForEach(db, sql, output.samples, sampleValues);
}

std::int64_t clampedBytes(std::uint64_t bytes) {
  constexpr auto maximum = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  return static_cast<std::int64_t>(std::min(bytes, maximum));
}

}  // namespace

std::expected<HistoryStore, HistoryOpenError> HistoryStore::open(const std::filesystem::path& url) {
  if (url.has_parent_path()) {
    std::error_code error;
    std::filesystem::create_directories(url.parent_path(), error);
    if (error) {
      return std::unexpected(HistoryStoreError{
          "Couldn't create the folder " + url.parent_path().string() + ": " + error.message()});
    }
  }
  const std::string file = url.string();
  const auto existed = [](const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
  };
  const bool hadFile = existed(file);
  const bool hadLog = existed(file + "-wal");
  const bool hadSharedMemory = existed(file + "-shm");
  auto opened = [&]() -> std::expected<HistoryStore, HistoryOpenError> {
    auto db = SQLiteDatabase::open(file);
    if (!db) return std::unexpected(db.error());
    if (auto prepared = Schema::prepare(*db); !prepared) return std::unexpected(prepared.error());
    return HistoryStore(url, std::move(*db));
  }();
  if (!opened) {
    // The connection is closed by now. What this failed open made, and only that, goes: a
    // file of a newer version read in write-ahead mode leaves an empty log and its index.
    if (!hadLog) ::unlink((file + "-wal").c_str());
    if (!hadSharedMemory) ::unlink((file + "-shm").c_str());
    if (!hadFile) ::unlink(file.c_str());
  }
  return opened;
}

SQLiteResult<void> HistoryStore::write(const RollupOutput& output) const {
  using Step = SQLiteResult<void> (*)(const SQLiteDatabase&, const RollupOutput&);
  static constexpr Step steps[] = {writeClears,  writeAlerts,     writeEpisodes, writeDays,
                                   writeMinutes, writeMinuteApps, writeSamples};
  return inTransaction<SQLiteError>(db_, [&]() -> SQLiteResult<void> {
    for (Step step : steps) {
      if (auto done = step(db_, output); !done) return done;
    }
    return {};
  });
}

SQLiteResult<void> HistoryStore::prune(double now, int retentionDays) const {
  const Retention::Cutoffs cutoffs = Retention::cutoffs(now, retentionDays);
  return inTransaction<SQLiteError>(db_, [&]() -> SQLiteResult<void> {
    const std::pair<const char*, double> deletions[] = {
        {"DELETE FROM samples WHERE time < ?", cutoffs.samples},
        {"DELETE FROM minutes WHERE minute < ?", cutoffs.minutes},
        {"DELETE FROM minute_apps WHERE minute < ?", cutoffs.minutes},
    };
    for (const auto& [sql, cutoff] : deletions) {
      auto statement = SQLiteStatement::prepare(db_, sql);
      if (!statement) return std::unexpected(statement.error());
      if (auto done = statement->run(std::vector<SQLiteValue>{cutoff}); !done) return done;
    }
    return {};
  });
}

SQLiteResult<void> HistoryStore::closeDangling(double time) const {
  return inTransaction<SQLiteError>(db_, [&]() -> SQLiteResult<void> {
    for (const char* sql : {"UPDATE episodes SET \"end\" = ? WHERE \"end\" IS NULL",
                            "UPDATE alerts SET cleared = ? WHERE cleared IS NULL"}) {
      auto statement = SQLiteStatement::prepare(db_, sql);
      if (!statement) return std::unexpected(statement.error());
      if (auto done = statement->run(std::vector<SQLiteValue>{time}); !done) return done;
    }
    return {};
  });
}

SQLiteResult<void> HistoryStore::clearAll() const {
  return inTransaction<SQLiteError>(db_, [&]() -> SQLiteResult<void> {
    for (HistoryTable table : allHistoryTables) {
      if (table == HistoryTable::cleans) continue;
      if (auto done = db_.exec("DELETE FROM " + std::string(rawValue(table))); !done) return done;
    }
    return {};
  });
}

SQLiteResult<void> HistoryStore::logClean(double time, const std::string& rules,
                                          std::uint64_t bytesDeleted, std::uint64_t bytesTrashed,
                                          std::int64_t items) const {
  auto statement = SQLiteStatement::prepare(
      db_,
      "INSERT INTO cleans (time, rules, bytes_deleted, bytes_trashed, items) VALUES (?, ?, ?, ?, "
      "?)");
  if (!statement) return std::unexpected(statement.error());
  return statement->run(std::vector<SQLiteValue>{time, rules, clampedBytes(bytesDeleted),
                                                 clampedBytes(bytesTrashed), items});
}

}  // namespace pellwin
