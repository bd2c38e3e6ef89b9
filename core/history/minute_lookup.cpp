#include "core/history/minute_lookup.h"

#include <algorithm>
#include <cmath>

#include "core/base/format.h"
#include "core/history/alert_display.h"

namespace pellwin {

namespace {

constexpr AppRank kShownOrder[] = {AppRank::memory, AppRank::cpu, AppRank::disk};

std::string rankTitle(AppRank rank) {
  switch (rank) {
    case AppRank::cpu: return "CPU";
    case AppRank::memory: return "Memory";
    case AppRank::disk: return "Disk";
  }
  return {};
}

// The machine's total of the ranked measure over the minute, when it was measured.
std::optional<double> machineTotal(AppRank rank, const std::optional<MinuteRow>& row,
                                   int coreCount) {
  if (!row) return std::nullopt;
  auto average = [&](HistoryMetric metric) -> std::optional<double> {
    const auto found = row->stats.find(metric);
    if (found == row->stats.end()) return std::nullopt;
    return found->second.average;
  };
  switch (rank) {
    case AppRank::memory: return average(HistoryMetric::memoryUsed);
    case AppRank::disk: return average(HistoryMetric::diskTraffic);
    case AppRank::cpu: {
      const auto busy = average(HistoryMetric::cpuBusy);
      if (!busy || coreCount <= 0) return std::nullopt;
      return *busy * coreCount;
    }
  }
  return std::nullopt;
}

std::string valueText(AppRank rank, double value, int coreCount) {
  switch (rank) {
    case AppRank::memory: return Format::memory(static_cast<std::uint64_t>(std::max(0.0, value)));
    case AppRank::disk: return Format::rate(value);
    case AppRank::cpu:
      // As the monitor shows it: a share of all cores, or cores when their number is unknown.
      return coreCount > 0 ? Format::percent(value / coreCount)
                           : Format::fixed(value, 1) + " cores";
  }
  return {};
}

LookupApp lookupApp(const MinuteAppRow& row, std::optional<double> total, int coreCount) {
  LookupApp app{.appID = row.appID,
                .name = row.name,
                .value = row.value,
                .valueText = valueText(row.rank, row.value, coreCount)};
  if (total && *total > 0) {
    // Averages over a minute can leave an app a little above the machine's own average.
    app.share = std::clamp(row.value / *total, 0.0, 1.0);
    app.shareText = Format::percent(*app.share);
  }
  return app;
}

}  // namespace

double minuteOf(double time) { return std::floor(time / 60) * 60; }

MinuteLookup minuteLookup(double minute, const std::optional<MinuteRow>& row,
                          const std::vector<MinuteAppRow>& apps, int coreCount, double now,
                          const Calendar& calendar) {
  const std::string day = AlertDisplay::dayLabel(minute, now, calendar);
  MinuteLookup lookup{.minute = minute,
                      .heading = "Busiest apps at " + AlertDisplay::timeLabel(minute, calendar) +
                                 (day == "Today" ? "" : ", " + day),
                      .recorded = row.has_value()};
  for (AppRank rank : kShownOrder) {
    std::vector<const MinuteAppRow*> ranked;
    for (const MinuteAppRow& app : apps) {
      if (app.rank == rank && app.minute == minute) ranked.push_back(&app);
    }
    if (ranked.empty()) continue;
    std::sort(ranked.begin(), ranked.end(), [](const MinuteAppRow* a, const MinuteAppRow* b) {
      return a->position < b->position;
    });
    LookupRanking ranking{.rank = rank, .title = rankTitle(rank)};
    const std::optional<double> total = machineTotal(rank, row, coreCount);
    for (const MinuteAppRow* app : ranked) {
      ranking.apps.push_back(lookupApp(*app, total, coreCount));
    }
    lookup.rankings.push_back(std::move(ranking));
  }
  return lookup;
}

}  // namespace pellwin
