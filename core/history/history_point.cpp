#include "core/history/history_point.h"

namespace pellwin {

double span(HistoryRange range) {
  switch (range) {
    case HistoryRange::hour: return 3600;
    case HistoryRange::day: return 86400;
    case HistoryRange::week: return 604800;
    case HistoryRange::month: return 2592000;
  }
  return 0;
}

double bucket(HistoryRange range) {
  switch (range) {
    case HistoryRange::hour: return 15;
    case HistoryRange::day: return 300;
    case HistoryRange::week: return 1800;
    case HistoryRange::month: return 7200;
  }
  return 0;
}

bool usesMinutes(HistoryRange range) {
  switch (range) {
    case HistoryRange::hour:
    case HistoryRange::day: return false;
    case HistoryRange::week:
    case HistoryRange::month: return true;
  }
  return false;
}

HistoryPoint HistoryPoint::from(const SampleRow& sample) {
  HistoryPoint point{.time = sample.time - sample.span,
                     .span = sample.span,
                     .covered = sample.span,
                     .worst = sample.health};
  for (const auto& [metric, value] : sample.values) {
    point.values[metric] = PointValue{.value = value, .low = value, .high = value};
  }
  return point;
}

HistoryPoint HistoryPoint::from(const MinuteRow& minute) {
  HistoryPoint point{
      .time = minute.minute, .span = 60, .covered = minute.covered, .worst = minute.worst};
  for (const auto& [metric, stat] : minute.stats) {
    point.values[metric] = PointValue{.value = stat.average, .low = stat.low, .high = stat.high};
  }
  return point;
}

}  // namespace pellwin
