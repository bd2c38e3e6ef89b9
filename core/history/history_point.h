// The chart ranges of history and one point of a chart series, made from one stored sample or
// one stored minute. Times are seconds since 1970.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string_view>

#include "core/history/history_metric.h"
#include "core/history/minute_row.h"
#include "core/monitor/resource.h"
#include "core/history/sample_row.h"

namespace pellwin {

enum class HistoryRange { hour, day, week, month };

inline constexpr std::array<HistoryRange, 4> allHistoryRanges = {
    HistoryRange::hour, HistoryRange::day, HistoryRange::week, HistoryRange::month};

[[nodiscard]] std::string_view rawValue(HistoryRange range);
[[nodiscard]] std::optional<HistoryRange> historyRangeFromRawValue(std::string_view raw);
// Seconds the range shows, ending now.
[[nodiscard]] double span(HistoryRange range);
// Seconds one chart bucket covers.
[[nodiscard]] double bucket(HistoryRange range);
// The week and month views read minutes; the hour and day views read raw samples.
[[nodiscard]] bool usesMinutes(HistoryRange range);

// One metric at one point: the value drawn, and the band around it.
struct PointValue {
  double value = 0;
  double low = 0;
  double high = 0;
  friend bool operator==(const PointValue&, const PointValue&) = default;
};

struct HistoryPoint {
  double time = 0;                               // start of the stretch the point stands for
  double span = 0;                               // its length in seconds
  double covered = 0;                            // seconds of it that were measured
  std::map<HistoryMetric, PointValue> values{};  // absent when not measured
  std::map<Resource, Health> worst{};            // worst health shown during the stretch

  // A sample covers the `span` seconds that end at its time; its band is the value itself.
  [[nodiscard]] static HistoryPoint from(const SampleRow& sample);
  // A minute row stands for the 60 seconds that begin at its minute.
  [[nodiscard]] static HistoryPoint from(const MinuteRow& minute);
  friend bool operator==(const HistoryPoint&, const HistoryPoint&) = default;
};

}  // namespace pellwin
