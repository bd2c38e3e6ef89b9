// What a history chart draws for one metric over one range: the stored points folded into the
// range's buckets, as runs of points with their times. A screen draws each run as one line
// (a run ends where nothing was recorded, so sleep and holes show as breaks), the band from
// `low` to `high` around it, and colours each point by `worst`. Pure; times are seconds since
// 1970.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "core/history/history_metric.h"
#include "core/history/history_point.h"
#include "core/monitor/resource.h"

namespace pellwin {

struct ChartPoint {
  double time = 0;   // the start of the point's bucket
  double value = 0;  // time-weighted average over the measured part of the bucket
  double low = 0;
  double high = 0;
  Health worst = Health::ok;  // worst health of the metric's resource in the bucket
  friend bool operator==(const ChartPoint&, const ChartPoint&) = default;
};

struct ChartSeries {
  HistoryMetric metric = HistoryMetric::memoryUsed;
  HistoryRange range = HistoryRange::hour;
  double start = 0;   // the first bucket's start: the range's start rounded down to a bucket
  double end = 0;     // the range's end
  double bucket = 0;  // seconds per point
  std::vector<std::vector<ChartPoint>> runs{};  // adjacent buckets with data, oldest first
  double low = 0;   // the lowest `low` of any point, 0 when there is none
  double high = 0;  // the highest `high` of any point, 0 when there is none
  [[nodiscard]] bool isEmpty() const { return runs.empty(); }
  friend bool operator==(const ChartSeries&, const ChartSeries&) = default;
};

// Buckets are whole multiples of the range's bucket since 1970, so a reload a little later
// keeps the same buckets. A point belongs to the bucket its start falls in; points before the
// first bucket or at or after `end` are left out.
[[nodiscard]] ChartSeries chartSeries(const std::vector<HistoryPoint>& points, HistoryMetric metric,
                                      HistoryRange range, double end);

// Every metric's series from one read, in one pass over the points.
[[nodiscard]] std::map<HistoryMetric, ChartSeries> chartSeries(
    const std::vector<HistoryPoint>& points, HistoryRange range, double end);

// A value of `metric` as its axis and tooltip write it: memory in binary units, disk sizes and
// rates in decimal units, shares as percentages, levels by name.
[[nodiscard]] std::string metricValueText(HistoryMetric metric, double value);

}  // namespace pellwin
