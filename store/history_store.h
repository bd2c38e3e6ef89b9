// The only reader and writer of the history file. Writes each rollup batch in one transaction,
// answers the range queries of the screens, prunes, closes what an earlier run left open,
// clears history and keeps the cleanup log. Knows nothing of threads: one thread at a time
// (the connection has no mutex). Times are seconds since 1970.
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/history/alert_row.h"
#include "core/history/clean_row.h"
#include "core/history/day_row.h"
#include "core/history/episode_row.h"
#include "core/history/history_point.h"
#include "core/history/minute_row.h"
#include "core/history/rollup_output.h"
#include "core/history/sample_row.h"
#include "store/history_store_error.h"
#include "store/schema.h"
#include "store/sqlite_database.h"

namespace pellwin {

class HistoryStore {
 public:
  static constexpr int schemaVersion = Schema::version;

  // Creates the parent folder (with intermediate folders), opens the file and sets it up:
  // a file written by a newer version is refused and left as it was.
  [[nodiscard]] static std::expected<HistoryStore, HistoryOpenError> open(
      const std::filesystem::path& url);

  [[nodiscard]] const std::filesystem::path& url() const { return url_; }

  // One batch, whole or not at all: alert clears, new alerts, episodes, day rows, minutes,
  // minute rankings, samples. Rows with an existing key replace or update the stored ones.
  [[nodiscard]] SQLiteResult<void> write(const RollupOutput& output) const;

  [[nodiscard]] SQLiteResult<std::vector<SampleRow>> samples(double from, double to) const;
  [[nodiscard]] SQLiteResult<std::vector<MinuteRow>> minutes(double from, double to) const;
  [[nodiscard]] SQLiteResult<std::vector<MinuteAppRow>> topApps(double minute) const;
  // Every episode that overlaps [from, to], open ones included, newest first.
  [[nodiscard]] SQLiteResult<std::vector<EpisodeRow>> episodes(double from, double to) const;
  // Day keys compared as text; sorted by day, then by resource order.
  [[nodiscard]] SQLiteResult<std::vector<DayRow>> days(const std::string& from,
                                                       const std::string& through) const;
  // Newest first; equal times by descending id.
  [[nodiscard]] SQLiteResult<std::vector<AlertRow>> alerts(std::int64_t limit) const;
  [[nodiscard]] SQLiteResult<std::int64_t> unreadAlertCount() const;
  // The cleanups logged within [from, to], newest first.
  [[nodiscard]] SQLiteResult<std::vector<CleanRow>> cleans(double from, double to) const;
  [[nodiscard]] SQLiteResult<void> markAllAlertsRead() const;
  // The chart series of one range ending at `end`: one point per sample for the hour and day,
  // one per minute (starting a minute early so the first bucket is whole) for week and month.
  [[nodiscard]] SQLiteResult<std::vector<HistoryPoint>> points(HistoryRange range,
                                                               double end) const;
  // What a chart of `range` draws, read cheaply: for the week and month the minutes of each
  // chart bucket (whole multiples of the bucket since 1970) are folded by SQLite into one point
  // whose values are weighted by covered seconds, lows and highs the extremes and health the
  // worst, so chartSeries gives the same series as from `points` at a fraction of the cost (a
  // month is 360 points, not 43,200). The hour and day are `points`. With `metrics`, only
  // those metrics and the health of their resources are read: a chart of one metric reads a
  // thirteenth of the values, and its series is the same as from every metric's points.
  [[nodiscard]] SQLiteResult<std::vector<HistoryPoint>> chartPoints(HistoryRange range,
                                                                    double end) const;
  [[nodiscard]] SQLiteResult<std::vector<HistoryPoint>> chartPoints(
      HistoryRange range, double end, std::span<const HistoryMetric> metrics) const;
  [[nodiscard]] SQLiteResult<std::optional<double>> lastSampleTime() const;
  [[nodiscard]] SQLiteResult<std::int64_t> rowCount(HistoryTable table) const;
  [[nodiscard]] SQLiteResult<int> userVersion() const;

  // Samples older than a day, minutes and rankings older than `retentionDays`. Episodes,
  // alerts, days and cleans stay until history is cleared.
  [[nodiscard]] SQLiteResult<void> prune(double now, int retentionDays) const;
  // Ends open episodes and uncleared alerts at `time` (the last moment anything was recorded).
  [[nodiscard]] SQLiteResult<void> closeDangling(double time) const;
  // Empties every table but the cleanup log.
  [[nodiscard]] SQLiteResult<void> clearAll() const;
  // Byte counts above the signed 64-bit maximum are stored as that maximum.
  [[nodiscard]] SQLiteResult<void> logClean(double time, const std::string& rules,
                                            std::uint64_t bytesDeleted, std::uint64_t bytesTrashed,
                                            std::int64_t items) const;

  // For tests and tools that inspect the file directly.
  [[nodiscard]] const SQLiteDatabase& database() const { return db_; }

 private:
  HistoryStore(std::filesystem::path url, SQLiteDatabase db)
      : url_(std::move(url)), db_(std::move(db)) {}

  std::filesystem::path url_;
  SQLiteDatabase db_;
};

}  // namespace pellwin
