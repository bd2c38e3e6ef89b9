#include "core/history/history_metric.h"

namespace pellwin {

std::string_view rawValue(HistoryMetric metric) {
  switch (metric) {
    case HistoryMetric::memoryUsed: return "memoryUsed";
    case HistoryMetric::compressed: return "compressed";
    case HistoryMetric::swapUsed: return "swapUsed";
    case HistoryMetric::swapIn: return "swapIn";
    case HistoryMetric::swapOut: return "swapOut";
    case HistoryMetric::swapTraffic: return "swapTraffic";
    case HistoryMetric::pressure: return "pressure";
    case HistoryMetric::cpuBusy: return "cpuBusy";
    case HistoryMetric::diskFree: return "diskFree";
    case HistoryMetric::diskRead: return "diskRead";
    case HistoryMetric::diskWrite: return "diskWrite";
    case HistoryMetric::diskTraffic: return "diskTraffic";
    case HistoryMetric::thermal: return "thermal";
  }
  return "";
}

std::optional<HistoryMetric> historyMetricFromRawValue(std::string_view raw) {
  for (HistoryMetric metric : allHistoryMetrics) {
    if (rawValue(metric) == raw) return metric;
  }
  return std::nullopt;
}

Resource resourceOf(HistoryMetric metric) {
  switch (metric) {
    case HistoryMetric::memoryUsed:
    case HistoryMetric::compressed:
    case HistoryMetric::swapUsed:
    case HistoryMetric::swapIn:
    case HistoryMetric::swapOut:
    case HistoryMetric::swapTraffic:
    case HistoryMetric::pressure: return Resource::memory;
    case HistoryMetric::cpuBusy: return Resource::cpu;
    case HistoryMetric::diskFree: return Resource::diskSpace;
    case HistoryMetric::diskRead:
    case HistoryMetric::diskWrite:
    case HistoryMetric::diskTraffic: return Resource::diskActivity;
    case HistoryMetric::thermal: return Resource::heat;
  }
  return Resource::memory;
}

}  // namespace pellwin
