// A generator for history benchmarks: 30 days of a machine that was on all day, written
// into a history file the way the recorder leaves it. 43,200 minute rows with every metric and
// their three rankings of five apps, samples for the last day (one every 5 s), a day row per
// day and resource with causes, and a few slow periods and alerts each day. Deterministic.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/rollup_output.h"
#include "store/history_store.h"

namespace pellwin::testing {

inline constexpr int monthDays = 30;

// A value that wanders between 0 and 1 with the time of day, so charts have shape.
inline double wave(double time, double period, double phase = 0) {
  return 0.5 + 0.5 * std::sin(time / period + phase);
}

inline MinuteRow monthMinute(double minute) {
  MinuteRow row{.minute = minute, .covered = 60};
  for (HistoryMetric metric : allHistoryMetrics) {
    const double value = 1e9 * wave(minute, 3600 + 97 * static_cast<double>(metric));
    row.stats[metric] = Stat{.average = value, .low = 0.8 * value, .high = 1.2 * value};
  }
  row.stats[HistoryMetric::cpuBusy] = Stat{wave(minute, 5000), 0, 1};
  for (Resource resource : allResources) {
    row.worst[resource] = wave(minute, 7000, static_cast<double>(resource)) > 0.9 ? Health::problem
                          : wave(minute, 7000, static_cast<double>(resource)) > 0.7 ? Health::strain
                                                                                    : Health::ok;
  }
  return row;
}

inline void addRankings(double minute, RollupOutput& output) {
  static const char* const names[] = {"Google Chrome", "Slack", "Claude", "OrbStack",
                                      "python3.12",    "code",  "firefox"};
  const auto start = static_cast<std::size_t>(minute / 60) % 3;
  for (AppRank rank : {AppRank::cpu, AppRank::memory, AppRank::disk}) {
    for (int position = 1; position <= 5; ++position) {
      const std::string name = names[(start + static_cast<std::size_t>(position)) % 7];
      output.apps.push_back(MinuteAppRow{.minute = minute,
                                         .rank = rank,
                                         .position = position,
                                         .appID = "app:" + name,
                                         .name = name,
                                         .bundleIdentifier = "org.example." + name,
                                         .value = 1e9 / position});
    }
  }
}

inline std::vector<DayRow> monthDayRows(const std::string& day, int index) {
  std::vector<DayRow> rows;
  for (Resource resource : allResources) {
    const double red = 300.0 * ((index + static_cast<int>(resource)) % 7);
    rows.push_back(DayRow{.day = day,
                          .resource = resource,
                          .strainSeconds = 3 * red + 600,
                          .problemSeconds = red,
                          .causes = {{"app:Google Chrome", "Google Chrome", 0.6 * red},
                                     {"app:Slack", "Slack", 0.3 * red},
                                     {"app:python3.12", "python3.12", 0.1 * red}}});
  }
  return rows;
}

inline void addEpisodesAndAlerts(double dayStart, RollupOutput& output) {
  for (int i = 0; i < 6; ++i) {
    const double start = dayStart + 3600 * (2 + 3 * i);
    const Resource resource = allResources[static_cast<std::size_t>(i) % allResources.size()];
    output.episodes.push_back(EpisodeRow{.resource = resource,
                                         .start = start,
                                         .end = start + 300,
                                         .peak = 0.97,
                                         .peakText = "97%",
                                         .topApp = "Google Chrome",
                                         .topValue = "10.6 GB"});
    if (i % 2 == 0) {
      output.alerts.push_back(AlertRow{.time = start + 120,
                                       .started = start,
                                       .resource = resource,
                                       .message = "Something stayed red",
                                       .cause = "Google Chrome 10.6 GB",
                                       .cleared = start + 300});
    }
  }
}

// Writes the month ending at `end` (a whole minute) into `store`, one transaction per day.
inline SQLiteResult<void> writeMonth(const HistoryStore& store, double end,
                                     const Calendar& calendar) {
  const double start = end - monthDays * 86400.0;
  for (int day = 0; day < monthDays; ++day) {
    RollupOutput output;
    const double dayStart = start + day * 86400.0;
    for (double minute = dayStart; minute < dayStart + 86400; minute += 60) {
      output.minutes.push_back(monthMinute(minute));
      addRankings(minute, output);
    }
    if (day == monthDays - 1) {
      for (double time = dayStart + 5; time <= end; time += 5) {
        SampleRow sample{.time = time, .span = 5};
        for (HistoryMetric metric : allHistoryMetrics) sample.values[metric] = wave(time, 900);
        for (Resource resource : allResources) sample.health[resource] = Health::ok;
        output.samples.push_back(std::move(sample));
      }
    }
    output.days = monthDayRows(calendar.dayKey(dayStart + 43200), day);
    addEpisodesAndAlerts(dayStart, output);
    if (auto written = store.write(output); !written) return written;
  }
  return {};
}

}  // namespace pellwin::testing
