// Folds the stream of snapshots into history rows: a sample row about every five seconds of
// readings, and one row per whole minute of the epoch with the five busiest apps by CPU, by
// memory and by disk traffic. A value owned by the history side; not thread-safe. Times are seconds
// since 1970.
#pragma once

#include <array>
#include <limits>
#include <map>
#include <optional>
#include <string>

#include "core/history/history_metric.h"
#include "core/history/minute_row.h"
#include "core/history/rollup_output.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

// Time-weighted statistics of one metric.
struct Weighted {
  double sum = 0;     // value × weight
  double weight = 0;  // seconds
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();

  // Values with no weight are not counted at all.
  void add(double value, double seconds);
  [[nodiscard]] Stat stat() const {
    return Stat{.average = sum / weight, .low = low, .high = high};
  }
};

// A snapshot's value for each metric; none for the metrics of a resource it could not measure.
[[nodiscard]] std::array<std::optional<double>, allHistoryMetrics.size()> historyValues(
    const Snapshot& snapshot);

class MinuteRollup {
 public:
  // A sample row is closed once it covers this many seconds of readings.
  static constexpr double sampleSpan = 4.5;
  // More than this between two snapshots closes the pending sample (not the minute).
  static constexpr double maxGap = 30.0;
  static constexpr int appsPerRanking = 5;

  // The whole epoch minute `time` falls in.
  [[nodiscard]] static double minuteOf(double time);

  [[nodiscard]] MinuteRollupOutput ingest(const Snapshot& snapshot,
                                          const std::map<Resource, Health>& displayed);
  // Closes the pending sample and minute (when recording stops).
  [[nodiscard]] MinuteRollupOutput flush();

 private:
  using Stats = std::array<Weighted, allHistoryMetrics.size()>;
  struct AppTotals {
    std::string name;
    std::optional<std::string> bundleIdentifier;
    double cpu = 0;     // cores × seconds
    double memory = 0;  // bytes × seconds
    double disk = 0;    // bytes per second × seconds
  };
  struct MinuteAccumulator {
    double minute = 0;
    double covered = 0;
    Stats stats{};
    std::map<Resource, Health> worst;
    std::map<std::string, AppTotals> apps;  // by app ID
  };
  struct SampleAccumulator {
    double time = 0;  // the latest snapshot's time
    double span = 0;
    Stats stats{};
    std::map<Resource, Health> worst;
  };

  void closeSample(MinuteRollupOutput& output);
  void closeMinute(MinuteRollupOutput& output);
  static void rank(const MinuteAccumulator& minute, AppRank rank, MinuteRollupOutput& output);

  std::optional<MinuteAccumulator> minute_;
  std::optional<SampleAccumulator> sample_;
  std::optional<double> lastTimestamp_;
};

}  // namespace pellwin
