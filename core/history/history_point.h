// The chart ranges of history and one point of a chart series, made from one stored sample or
// one stored minute. Times are seconds since 1970.
#pragma once

#include <map>
#include <optional>
#include <string_view>

#include "core/base/enum_text.h"
#include "core/history/history_metric.h"
#include "core/history/minute_row.h"
#include "core/history/sample_row.h"
#include "core/monitor/resource.h"

namespace pellwin {

enum class HistoryRange { hour, day, week, month };

[[nodiscard]] constexpr EnumTable<HistoryRange::month> textTable(HistoryRange) {
  return {{
      {HistoryRange::hour, "hour"},
      {HistoryRange::day, "day"},
      {HistoryRange::week, "week"},
      {HistoryRange::month, "month"},
  }};
}

inline constexpr auto allHistoryRanges = enumCases<HistoryRange>();

[[nodiscard]] constexpr std::string_view rawValue(HistoryRange range) { return enumText(range); }
[[nodiscard]] constexpr std::optional<HistoryRange> historyRangeFromRawValue(std::string_view raw) {
  return parseEnum<HistoryRange>(raw);
}
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
