#include "core/history/chart_series.h"

#include <gtest/gtest.h>

#include <cmath>

namespace pellwin {
namespace {

constexpr double kEnd = 1'717'416'000;  // a multiple of every bucket size

HistoryPoint point(double time, double covered, double cpu, Health worst = Health::ok) {
  return HistoryPoint{.time = time,
                      .span = covered,
                      .covered = covered,
                      .values = {{HistoryMetric::cpuBusy, {cpu, cpu, cpu}}},
                      .worst = {{Resource::cpu, worst}}};
}

TEST(ChartSeries, FoldsPointsIntoBucketsByMeasuredTimeAndBreaksWhereNothingWasRecorded) {
  const double start = kEnd - 3600;
  const std::vector<HistoryPoint> points = {
      point(start - 5, 5, 9),  // before the range
      point(start, 5, 0.2),
      point(start + 5, 10, 0.5, Health::problem),  // bucket 0
      point(start + 15, 5, 0.4),                   // bucket 1
      point(start + 45, 5, 0.8, Health::strain),   // bucket 3, after an empty bucket 2
      point(kEnd, 5, 9),                           // at the end: the next range's
  };
  const ChartSeries series = chartSeries(points, HistoryMetric::cpuBusy, HistoryRange::hour, kEnd);
  EXPECT_EQ(series.start, start);
  EXPECT_EQ(series.bucket, 15);
  ASSERT_EQ(series.runs.size(), 2u) << "the empty bucket breaks the line";
  ASSERT_EQ(series.runs[0].size(), 2u);
  const ChartPoint first = series.runs[0][0];
  EXPECT_EQ(first.time, start);
  EXPECT_DOUBLE_EQ(first.value, (0.2 * 5 + 0.5 * 10) / 15) << "weighted by measured seconds";
  EXPECT_EQ(first.low, 0.2);
  EXPECT_EQ(first.high, 0.5);
  EXPECT_EQ(first.worst, Health::problem);
  EXPECT_EQ(series.runs[1], (std::vector<ChartPoint>{{start + 45, 0.8, 0.8, 0.8, Health::strain}}));
  EXPECT_EQ(series.low, 0.2);
  EXPECT_EQ(series.high, 0.8);
}

TEST(ChartSeries, LongRangesStartOnAWholeBucketAndLeaveUnmeasuredMetricsEmpty) {
  const struct {
    HistoryRange range;
    double bucket;
  } cases[] = {{HistoryRange::hour, 15},
               {HistoryRange::day, 300},
               {HistoryRange::week, 1800},
               {HistoryRange::month, 7200}};
  const double end = kEnd + 100;  // not on a bucket
  for (const auto& c : cases) {
    SCOPED_TRACE(rawValue(c.range));
    // One minute row a minute before the range, as the store reads for long ranges.
    const double early = end - span(c.range) - 60;
    const std::vector<HistoryPoint> points = {point(early, 60, 0.1), point(end - 60, 60, 0.3)};
    const auto all = chartSeries(points, c.range, end);
    const ChartSeries& cpu = all.at(HistoryMetric::cpuBusy);
    EXPECT_EQ(cpu.start, std::floor((end - span(c.range)) / c.bucket) * c.bucket);
    ASSERT_FALSE(cpu.runs.empty());
    EXPECT_EQ(cpu.runs.back().back().value, 0.3);
    EXPECT_EQ(cpu.runs.front().front().value == 0.1, early >= cpu.start)
        << "the early row counts only when it falls in the first bucket";
    EXPECT_TRUE(all.at(HistoryMetric::memoryUsed).isEmpty());
    EXPECT_EQ(all.size(), allHistoryMetrics.size());
  }
}

TEST(MetricValueText, WritesEachMetricInItsOwnUnits) {
  const struct {
    HistoryMetric metric;
    double value;
    const char* expected;
  } cases[] = {
      {HistoryMetric::memoryUsed, 3.5 * 1073741824, "3.5 GB"},
      {HistoryMetric::diskFree, 120.4e9, "120 GB"},
      {HistoryMetric::diskTraffic, 3.4e6, "3 MB/s"},
      {HistoryMetric::cpuBusy, 0.274, "27%"},
      {HistoryMetric::thermal, 2, "Hot"},
      {HistoryMetric::memoryUsed, -5, "0 MB"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(rawValue(c.metric));
    EXPECT_EQ(metricValueText(c.metric, c.value), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
