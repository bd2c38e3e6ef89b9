// The one definition of the history file: tables, column lists generated from HistoryMetric
// and Resource, the create statements, and how a file is set up on every open.
#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/enum_text.h"
#include "store/history_store_error.h"
#include "store/sqlite_database.h"

namespace pellwin {

// Raw values are the table names; this order is the order of clearing and counting.
enum class HistoryTable { samples, minutes, minuteApps, days, episodes, alerts, cleans };

[[nodiscard]] constexpr EnumTable<HistoryTable::cleans> textTable(HistoryTable) {
  return {{
      {HistoryTable::samples, "samples"},
      {HistoryTable::minutes, "minutes"},
      {HistoryTable::minuteApps, "minute_apps"},
      {HistoryTable::days, "days"},
      {HistoryTable::episodes, "episodes"},
      {HistoryTable::alerts, "alerts"},
      {HistoryTable::cleans, "cleans"},
  }};
}

inline constexpr auto allHistoryTables = enumCases<HistoryTable>();

[[nodiscard]] constexpr std::string_view rawValue(HistoryTable table) { return enumText(table); }

namespace Schema {

inline constexpr int version = 1;

[[nodiscard]] std::vector<std::string> metricColumns();        // the 13 metric names
[[nodiscard]] std::vector<std::string> sampleHealthColumns();  // "h_" + resource
[[nodiscard]] std::vector<std::string> minuteStatColumns();    // metric + _avg, _low, _high
[[nodiscard]] std::vector<std::string> minuteWorstColumns();   // "w_" + resource
[[nodiscard]] std::vector<std::string> sampleColumns();        // time, span, metrics, health
[[nodiscard]] std::vector<std::string> minuteColumns();        // minute, covered, stats, worst

// The nine statements that create an empty history, in order.
[[nodiscard]] std::vector<std::string> createStatements();

// Sets up a freshly opened connection: refuses a file of a newer version without writing to
// it, then turns on the write-ahead log with synchronous NORMAL and, for a new or empty file,
// creates the schema in one transaction that rolls back whole on failure.
[[nodiscard]] std::expected<void, HistoryOpenError> prepare(const SQLiteDatabase& database);

// "PRAGMA user_version"; an empty result counts as 0.
[[nodiscard]] SQLiteResult<int> userVersion(const SQLiteDatabase& database);

// The parts with `separator` between them.
[[nodiscard]] std::string joined(const std::vector<std::string>& parts, std::string_view separator);

}  // namespace Schema

}  // namespace pellwin
