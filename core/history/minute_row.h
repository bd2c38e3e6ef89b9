// One minute of history (a whole minute since 1970, not of the local clock) and its busiest
// apps.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "core/base/enum_text.h"
#include "core/history/history_metric.h"
#include "core/monitor/resource.h"

namespace pellwin {

// Statistics of one metric over a minute.
struct Stat {
  double average = 0;  // time-weighted
  double low = 0;
  double high = 0;
  friend bool operator==(const Stat&, const Stat&) = default;
};

struct MinuteRow {
  double minute = 0;                      // the minute's start
  double covered = 0;                     // seconds of the minute covered by snapshots, at most 60
  std::map<HistoryMetric, Stat> stats{};  // only metrics that received weight
  std::map<Resource, Health> worst{};     // worst displayed health during the minute
  friend bool operator==(const MinuteRow&, const MinuteRow&) = default;
};

// The measure an app was ranked by. Raw values are the stored ordinals; files written before
// disk traffic was ranked hold only the first two.
enum class AppRank { cpu = 0, memory = 1, disk = 2 };

[[nodiscard]] constexpr EnumTable<AppRank::disk> textTable(AppRank) {
  return {{
      {AppRank::cpu, "cpu"},
      {AppRank::memory, "memory"},
      {AppRank::disk, "disk"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(AppRank rank) { return enumText(rank); }
[[nodiscard]] constexpr std::optional<AppRank> appRankFromOrdinal(long long ordinal) {
  return enumFromIndex<AppRank>(ordinal);
}

struct MinuteAppRow {
  double minute = 0;
  AppRank rank = AppRank::cpu;
  int position = 1;  // 1 for the busiest app, up to 5
  std::string appID{};
  std::string name{};
  std::optional<std::string> bundleIdentifier{};
  double value = 0;  // time-weighted average: cores, bytes, or bytes per second for disk
  friend bool operator==(const MinuteAppRow&, const MinuteAppRow&) = default;
};

}  // namespace pellwin
