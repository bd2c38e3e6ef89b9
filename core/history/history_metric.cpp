#include "core/history/history_metric.h"

namespace pellwin {

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
