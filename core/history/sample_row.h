// One short-interval row of raw history: about five seconds of readings folded together.
#pragma once

#include <map>

#include "core/history/history_metric.h"
#include "core/monitor/resource.h"

namespace pellwin {

struct SampleRow {
  double time = 0;  // time of the last snapshot folded in; the row covers [time - span, time]
  double span = 0;  // seconds of readings it covers
  std::map<HistoryMetric, double> values{};  // time-weighted averages; absent when not measured
  std::map<Resource, Health> health{};       // worst displayed health; absent when not shown
  friend bool operator==(const SampleRow&, const SampleRow&) = default;
};

}  // namespace pellwin
