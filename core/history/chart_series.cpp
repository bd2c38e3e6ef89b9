#include "core/history/chart_series.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/base/format.h"

namespace pellwin {

namespace {

struct Bucket {
  double weight = 0;
  double weightedSum = 0;
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  Health worst = Health::ok;
  bool seen = false;
};

struct Layout {
  double start = 0;
  double bucket = 0;
  std::size_t count = 0;
};

Layout layoutOf(HistoryRange range, double end) {
  const double size = bucket(range);
  const double start = std::floor((end - span(range)) / size) * size;
  return {.start = start,
          .bucket = size,
          .count = static_cast<std::size_t>(std::max(0.0, std::ceil((end - start) / size)))};
}

void add(Bucket& bucket, const HistoryPoint& point, const PointValue& value, Resource resource) {
  // A point whose stretch was not measured at all still counts once, so it is not lost.
  const double weight = point.covered > 0 ? point.covered : 1e-9;
  bucket.weight += weight;
  bucket.weightedSum += value.value * weight;
  bucket.low = std::min(bucket.low, value.low);
  bucket.high = std::max(bucket.high, value.high);
  if (auto worst = point.worst.find(resource); worst != point.worst.end()) {
    bucket.worst = std::max(bucket.worst, worst->second);
  }
  bucket.seen = true;
}

ChartSeries seriesOf(const std::vector<Bucket>& buckets, const Layout& layout, HistoryMetric metric,
                     HistoryRange range, double end) {
  ChartSeries series{
      .metric = metric, .range = range, .start = layout.start, .end = end, .bucket = layout.bucket};
  bool inRun = false;
  for (std::size_t i = 0; i < buckets.size(); ++i) {
    const Bucket& b = buckets[i];
    if (!b.seen) {
      inRun = false;
      continue;
    }
    if (!inRun) series.runs.emplace_back();
    inRun = true;
    const ChartPoint point{.time = layout.start + static_cast<double>(i) * layout.bucket,
                           .value = b.weightedSum / b.weight,
                           .low = b.low,
                           .high = b.high,
                           .worst = b.worst};
    const bool first = series.runs.size() == 1 && series.runs.front().empty();
    series.low = first ? point.low : std::min(series.low, point.low);
    series.high = first ? point.high : std::max(series.high, point.high);
    series.runs.back().push_back(point);
  }
  return series;
}

}  // namespace

std::map<HistoryMetric, ChartSeries> chartSeries(const std::vector<HistoryPoint>& points,
                                                 HistoryRange range, double end) {
  const Layout layout = layoutOf(range, end);
  std::vector<std::vector<Bucket>> buckets(allHistoryMetrics.size(),
                                           std::vector<Bucket>(layout.count));
  for (const HistoryPoint& point : points) {
    if (point.time < layout.start || point.time >= end) continue;
    const auto index = static_cast<std::size_t>((point.time - layout.start) / layout.bucket);
    if (index >= layout.count) continue;
    for (const auto& [metric, value] : point.values) {
      add(buckets[static_cast<std::size_t>(metric)][index], point, value, resourceOf(metric));
    }
  }
  std::map<HistoryMetric, ChartSeries> all;
  for (HistoryMetric metric : allHistoryMetrics) {
    all.emplace(metric,
                seriesOf(buckets[static_cast<std::size_t>(metric)], layout, metric, range, end));
  }
  return all;
}

ChartSeries chartSeries(const std::vector<HistoryPoint>& points, HistoryMetric metric,
                        HistoryRange range, double end) {
  const Layout layout = layoutOf(range, end);
  std::vector<Bucket> buckets(layout.count);
  for (const HistoryPoint& point : points) {
    if (point.time < layout.start || point.time >= end) continue;
    const auto index = static_cast<std::size_t>((point.time - layout.start) / layout.bucket);
    if (index >= layout.count) continue;
    if (auto value = point.values.find(metric); value != point.values.end()) {
      add(buckets[index], point, value->second, resourceOf(metric));
    }
  }
  return seriesOf(buckets, layout, metric, range, end);
}

std::string metricValueText(HistoryMetric metric, double value) {
  const auto bytes = static_cast<std::uint64_t>(std::max(0.0, value));
  switch (metric) {
    case HistoryMetric::memoryUsed:
    case HistoryMetric::compressed:
    case HistoryMetric::swapUsed: return Format::memory(bytes);
    case HistoryMetric::swapIn:
    case HistoryMetric::swapOut:
    case HistoryMetric::swapTraffic:
    case HistoryMetric::diskRead:
    case HistoryMetric::diskWrite:
    case HistoryMetric::diskTraffic: return Format::rate(value);
    case HistoryMetric::pressure: return Format::fixed(value, 1);
    case HistoryMetric::cpuBusy: return Format::percent(value);
    case HistoryMetric::diskFree: return Format::disk(bytes);
    case HistoryMetric::thermal: {
      const auto level = thermalLevelFromRawValue(static_cast<int>(std::lround(value)));
      return std::string(label(level.value_or(ThermalLevel::nominal)));
    }
  }
  return {};
}

}  // namespace pellwin
