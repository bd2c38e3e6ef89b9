// The range reads of the history store and how stored rows map back to records.
#include <algorithm>
#include <span>
#include <string_view>

#include "core/base/format.h"
#include "store/cause_json.h"
#include "store/history_store.h"

namespace pellwin {

namespace {

std::vector<SQLiteValue> range(double from, double to) { return {from, to}; }

// A column that holds no Health leaves the key out.
template <class Key>
void readHealth(const SQLiteStatement& row, int column, Key key, std::map<Key, Health>& into) {
  if (row.isNull(column)) return;
  const std::int64_t raw = row.integer(column);
  if (raw < 0 || raw > 2) return;
  if (auto health = healthFromRawValue(static_cast<int>(raw))) into[key] = *health;
}

std::optional<SampleRow> readSample(const SQLiteStatement& row) {
  SampleRow sample{.time = row.real(0), .span = row.real(1)};
  int column = 2;
  for (HistoryMetric metric : allHistoryMetrics) {
    if (auto value = row.optionalReal(column++)) sample.values[metric] = *value;
  }
  for (Resource resource : allResources) readHealth(row, column++, resource, sample.health);
  return sample;
}

std::optional<MinuteRow> readMinute(const SQLiteStatement& row) {
  MinuteRow minute{.minute = row.real(0), .covered = row.real(1)};
  int column = 2;
  for (HistoryMetric metric : allHistoryMetrics) {
    if (!row.isNull(column)) {
      minute.stats[metric] = Stat{
          .average = row.real(column), .low = row.real(column + 1), .high = row.real(column + 2)};
    }
    column += 3;
  }
  for (Resource resource : allResources) readHealth(row, column++, resource, minute.worst);
  return minute;
}

// The columns a chart read selects after the time and the covered seconds: the metrics asked
// for, in their fixed order, then the health of the resources they come from. Every metric's
// value is one column in a sample and three (value, low, high) in a minute.
struct ChartColumns {
  std::vector<HistoryMetric> metrics;
  std::vector<Resource> resources;
  int perMetric = 3;

  // The columns, each after ", ", to follow the first two in a SELECT list.
  [[nodiscard]] std::string selected(std::string_view healthPrefix) const {
    std::string list;
    for (HistoryMetric metric : metrics) {
      const std::string_view name = rawValue(metric);
      if (perMetric == 1) {
        list.append(", ").append(name);
      } else {
        for (const char* suffix : {"_avg", "_low", "_high"})
          list.append(", ").append(name) += suffix;
      }
    }
    for (Resource resource : resources)
      list.append(", ").append(healthPrefix).append(rawValue(resource));
    return list;
  }
};

ChartColumns chartColumns(std::span<const HistoryMetric> metrics, int perMetric) {
  ChartColumns columns{.metrics = {}, .resources = {}, .perMetric = perMetric};
  for (HistoryMetric metric : allHistoryMetrics) {
    if (std::ranges::find(metrics, metric) != metrics.end()) columns.metrics.push_back(metric);
  }
  for (Resource resource : allResources) {
    if (std::ranges::any_of(columns.metrics,
                            [resource](HistoryMetric m) { return resourceOf(m) == resource; })) {
      columns.resources.push_back(resource);
    }
  }
  return columns;
}

// A chart point from column 2 on, as `columns` lists them.
HistoryPoint readPointColumns(const SQLiteStatement& row, double time, double span, double covered,
                              const ChartColumns& columns) {
  HistoryPoint point{.time = time, .span = span, .covered = covered};
  int column = 2;
  for (HistoryMetric metric : columns.metrics) {
    if (!row.isNull(column)) {
      const double value = row.real(column);
      point.values.emplace_hint(
          point.values.end(), metric,
          columns.perMetric == 1
              ? PointValue{.value = value, .low = value, .high = value}
              : PointValue{
                    .value = value, .low = row.real(column + 1), .high = row.real(column + 2)});
    }
    column += columns.perMetric;
  }
  for (Resource resource : columns.resources) readHealth(row, column++, resource, point.worst);
  return point;
}

std::optional<MinuteAppRow> readMinuteApp(const SQLiteStatement& row) {
  const auto rank = appRankFromOrdinal(row.integer(1));
  if (!rank) return std::nullopt;
  return MinuteAppRow{.minute = row.real(0),
                      .rank = *rank,
                      .position = static_cast<int>(row.integer(2)),
                      .appID = row.text(3),
                      .name = row.text(4),
                      .bundleIdentifier = row.optionalText(5),
                      .value = row.real(6)};
}

std::optional<EpisodeRow> readEpisode(const SQLiteStatement& row) {
  const auto resource = resourceFromRawValue(row.text(0));
  if (!resource) return std::nullopt;
  return EpisodeRow{.resource = *resource,
                    .start = row.real(1),
                    .end = row.optionalReal(2),
                    .peak = row.real(3),
                    .peakText = row.text(4),
                    .topApp = row.optionalText(5),
                    .topValue = row.optionalText(6)};
}

std::optional<DayRow> readDay(const SQLiteStatement& row) {
  const auto resource = resourceFromRawValue(row.text(1));
  if (!resource) return std::nullopt;
  return DayRow{.day = row.text(0),
                .resource = *resource,
                .strainSeconds = row.real(2),
                .problemSeconds = row.real(3),
                .causes = decodeCauses(row.text(4))};
}

std::optional<AlertRow> readAlert(const SQLiteStatement& row) {
  const auto resource = resourceFromRawValue(row.text(3));
  if (!resource) return std::nullopt;
  return AlertRow{.id = row.integer(0),
                  .time = row.real(1),
                  .started = row.real(2),
                  .resource = *resource,
                  .message = row.text(4),
                  .cause = row.optionalText(5),
                  .cleared = row.optionalReal(6),
                  .read = row.integer(7) != 0};
}

std::optional<CleanRow> readClean(const SQLiteStatement& row) {
  return CleanRow{.id = row.integer(0),
                  .time = row.real(1),
                  .rules = row.text(2),
                  .bytesDeleted = row.integer(3),
                  .bytesTrashed = row.integer(4),
                  .items = row.integer(5)};
}

SQLiteResult<std::int64_t> count(const SQLiteDatabase& db, const std::string& sql) {
  auto rows =
      db.query<std::int64_t>(sql, {}, [](const SQLiteStatement& r) { return r.integer(0); });
  if (!rows) return std::unexpected(rows.error());
  return rows->empty() ? 0 : rows->front();
}

template <class Row>
std::vector<HistoryPoint> pointsOf(const std::vector<Row>& rows) {
  std::vector<HistoryPoint> points;
  points.reserve(rows.size());
  for (const Row& row : rows) points.push_back(HistoryPoint::from(row));
  return points;
}

}  // namespace

SQLiteResult<std::vector<SampleRow>> HistoryStore::samples(double from, double to) const {
  return db_.query<SampleRow>("SELECT " + Schema::joined(Schema::sampleColumns(), ", ") +
                                  " FROM samples WHERE time >= ? AND time <= ? ORDER BY time",
                              range(from, to), readSample);
}

SQLiteResult<std::vector<MinuteRow>> HistoryStore::minutes(double from, double to) const {
  return db_.query<MinuteRow>("SELECT " + Schema::joined(Schema::minuteColumns(), ", ") +
                                  " FROM minutes WHERE minute >= ? AND minute <= ? ORDER BY minute",
                              range(from, to), readMinute);
}

SQLiteResult<std::vector<MinuteAppRow>> HistoryStore::topApps(double minute) const {
  return db_.query<MinuteAppRow>(
      "SELECT minute, rank, position, app_id, name, bundle_id, value FROM minute_apps\nWHERE "
      "minute = ? ORDER BY rank, position",
      std::vector<SQLiteValue>{minute}, readMinuteApp);
}

SQLiteResult<std::vector<EpisodeRow>> HistoryStore::episodes(double from, double to) const {
  return db_.query<EpisodeRow>(
      "SELECT resource, start, \"end\", peak, peak_text, top_app, top_value FROM episodes\nWHERE "
      "start <= ? AND (\"end\" IS NULL OR \"end\" >= ?) ORDER BY start DESC",
      range(to, from), readEpisode);
}

SQLiteResult<std::vector<DayRow>> HistoryStore::days(const std::string& from,
                                                     const std::string& through) const {
  auto rows = db_.query<DayRow>(
      "SELECT day, resource, strain_s, problem_s, causes FROM days WHERE day >= ? AND day <= ?",
      std::vector<SQLiteValue>{from, through}, readDay);
  if (rows) {
    std::sort(rows->begin(), rows->end(), [](const DayRow& a, const DayRow& b) {
      return std::pair(a.day, a.resource) < std::pair(b.day, b.resource);
    });
  }
  return rows;
}

SQLiteResult<std::vector<AlertRow>> HistoryStore::alerts(std::int64_t limit) const {
  return db_.query<AlertRow>(
      "SELECT id, time, started, resource, message, cause, cleared, read FROM alerts\nORDER BY "
      "time DESC, id DESC LIMIT ?",
      std::vector<SQLiteValue>{limit}, readAlert);
}

SQLiteResult<std::int64_t> HistoryStore::unreadAlertCount() const {
  return count(db_, "SELECT COUNT(*) FROM alerts WHERE read = 0");
}

SQLiteResult<std::vector<CleanRow>> HistoryStore::cleans(double from, double to) const {
  return db_.query<CleanRow>(
      "SELECT id, time, rules, bytes_deleted, bytes_trashed, items FROM cleans\nWHERE time >= ? "
      "AND time <= ? ORDER BY time DESC, id DESC",
      range(from, to), readClean);
}

SQLiteResult<void> HistoryStore::markAllAlertsRead() const {
  return db_.exec("UPDATE alerts SET read = 1 WHERE read = 0");
}

SQLiteResult<std::vector<HistoryPoint>> HistoryStore::points(HistoryRange range, double end) const {
  const double start = end - span(range);
  if (!usesMinutes(range)) {
    auto rows = samples(start, end);
    if (!rows) return std::unexpected(rows.error());
    return pointsOf(*rows);
  }
  // Straight into points: a month is 43,200 rows, and a MinuteRow between would double the
  // allocations that dominate this read.
  const ChartColumns columns = chartColumns(allHistoryMetrics, 3);
  return db_.query<HistoryPoint>(
      "SELECT " + Schema::joined(Schema::minuteColumns(), ", ") +
          " FROM minutes WHERE minute >= ? AND minute <= ? ORDER BY minute",
      std::vector<SQLiteValue>{start - 60, end},
      [&columns](const SQLiteStatement& row) -> std::optional<HistoryPoint> {
        return readPointColumns(row, row.real(0), 60, row.real(1), columns);
      });
}

SQLiteResult<std::vector<HistoryPoint>> HistoryStore::chartPoints(HistoryRange range,
                                                                  double end) const {
  return chartPoints(range, end, allHistoryMetrics);
}

SQLiteResult<std::vector<HistoryPoint>> HistoryStore::chartPoints(
    HistoryRange range, double end, std::span<const HistoryMetric> metrics) const {
  const double start = end - span(range);
  if (!usesMinutes(range)) {
    const ChartColumns columns = chartColumns(metrics, 1);
    return db_.query<HistoryPoint>(
        "SELECT time, span" + columns.selected("h_") +
            " FROM samples WHERE time >= ? AND time <= ? ORDER BY time",
        std::vector<SQLiteValue>{start, end},
        [&columns](const SQLiteStatement& row) -> std::optional<HistoryPoint> {
          // A sample covers the seconds that end at its time (see HistoryPoint::from).
          const double length = row.real(1);
          return readPointColumns(row, row.real(0) - length, length, length, columns);
        });
  }
  const ChartColumns columns = chartColumns(metrics, 3);
  const double size = bucket(range);
  // As chartSeries weighs points: by covered seconds, a minute that covered none barely.
  const std::string weight = "MAX(covered, 1e-9)";
  std::string sql =
      "SELECT CAST(minute / " + Format::fixed(size, 0) + " AS INTEGER) AS slot, SUM(covered)";
  for (HistoryMetric metric : columns.metrics) {
    const std::string name(rawValue(metric));
    sql += ", SUM(" + name + "_avg * " + weight + ") / SUM(CASE WHEN " + name +
           "_avg IS NOT NULL THEN " + weight + " END), MIN(" + name + "_low), MAX(" + name +
           "_high)";
  }
  for (Resource resource : columns.resources)
    sql += ", MAX(w_" + std::string(rawValue(resource)) + ")";
  sql += " FROM minutes WHERE minute >= ? AND minute < ? GROUP BY slot ORDER BY slot";
  return db_.query<HistoryPoint>(
      sql, std::vector<SQLiteValue>{start - 60, end},
      [size, &columns](const SQLiteStatement& row) -> std::optional<HistoryPoint> {
        return readPointColumns(row, static_cast<double>(row.integer(0)) * size, size, row.real(1),
                                columns);
      });
}

SQLiteResult<std::optional<double>> HistoryStore::lastSampleTime() const {
  auto rows = db_.query<std::optional<double>>(
      "SELECT MAX(time) FROM samples", {},
      [](const SQLiteStatement& r) { return std::optional(r.optionalReal(0)); });
  if (!rows) return std::unexpected(rows.error());
  return rows->empty() ? std::nullopt : rows->front();
}

SQLiteResult<std::int64_t> HistoryStore::rowCount(HistoryTable table) const {
  return count(db_, "SELECT COUNT(*) FROM " + std::string(rawValue(table)));
}

SQLiteResult<int> HistoryStore::userVersion() const { return Schema::userVersion(db_); }

}  // namespace pellwin
