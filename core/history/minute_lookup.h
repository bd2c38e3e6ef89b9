// "Who was it, then?": the busiest apps of one stored minute, by memory, CPU and disk, each
// with its figure and its share of what the whole machine used that minute. A screen lists
// the rankings in order under `heading`. Pure; times are seconds since 1970.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/minute_row.h"

namespace pellwin {

struct LookupApp {
  std::string appID{};
  std::string name{};
  double value = 0;               // as stored: bytes, cores, or bytes per second
  std::string valueText{};        // "3.6 GB", "35%" of all cores, "160 MB/s"
  std::optional<double> share{};  // 0 to 1 of the machine's use; absent when not measured
  std::string shareText{};        // "42%", or empty without a share
  friend bool operator==(const LookupApp&, const LookupApp&) = default;
};

struct LookupRanking {
  AppRank rank = AppRank::memory;
  std::string title{};            // "Memory", "CPU", "Disk"
  std::vector<LookupApp> apps{};  // the stored ranking, busiest first
  friend bool operator==(const LookupRanking&, const LookupRanking&) = default;
};

struct MinuteLookup {
  double minute = 0;
  std::string heading{};  // "Busiest apps at 2:32 PM", with the day when it is not today
  bool recorded = false;  // the minute has a stored row
  std::vector<LookupRanking> rankings{};  // memory, CPU, disk; a ranking with no apps is left out
  friend bool operator==(const MinuteLookup&, const MinuteLookup&) = default;
};

// The whole minute of the epoch that `time` falls in.
[[nodiscard]] double minuteOf(double time);

// `apps` are the stored ranking rows of `minute` (any order), `row` its minute row when stored.
// Shares divide by the minute's average memory in use, busy cores (the CPU share times
// `coreCount`, the machine's processor count) and disk traffic.
[[nodiscard]] MinuteLookup minuteLookup(double minute, const std::optional<MinuteRow>& row,
                                        const std::vector<MinuteAppRow>& apps, int coreCount,
                                        double now, const Calendar& calendar);

}  // namespace pellwin
