#include "core/history/minute_rollup.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace pellwin {

namespace {

void addWorst(std::map<Resource, Health>& worst, const std::map<Resource, Health>& displayed) {
  // A resource absent from `displayed` was not shown: it adds nothing, not even "healthy".
  for (const auto& [resource, health] : displayed) {
    auto [entry, isNew] = worst.try_emplace(resource, health);
    if (health > entry->second) entry->second = health;
  }
}

template <class Stats>
void addValues(Stats& stats, const Snapshot& snapshot, double seconds) {
  const auto values = historyValues(snapshot);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i]) stats[i].add(*values[i], seconds);
  }
}

}  // namespace

void Weighted::add(double value, double seconds) {
  if (!(seconds > 0)) return;
  sum += value * seconds;
  weight += seconds;
  low = std::min(low, value);
  high = std::max(high, value);
}

std::array<std::optional<double>, allHistoryMetrics.size()> historyValues(
    const Snapshot& snapshot) {
  std::array<std::optional<double>, allHistoryMetrics.size()> values{};
  for (std::size_t i = 0; i < allHistoryMetrics.size(); ++i) {
    const HistoryMetric metric = allHistoryMetrics[i];
    if (snapshot.isUnavailable(resourceOf(metric))) continue;
    const MemoryReading& memory = snapshot.memory;
    const DiskReading& disk = snapshot.disk;
    switch (metric) {
      case HistoryMetric::memoryUsed: values[i] = static_cast<double>(memory.usedBytes); break;
      case HistoryMetric::compressed:
        values[i] = static_cast<double>(memory.compressedBytes);
        break;
      case HistoryMetric::swapUsed: values[i] = static_cast<double>(memory.swapUsedBytes); break;
      case HistoryMetric::swapIn: values[i] = memory.swapInBytesPerSecond; break;
      case HistoryMetric::swapOut: values[i] = memory.swapOutBytesPerSecond; break;
      case HistoryMetric::swapTraffic: values[i] = memory.swapTrafficBytesPerSecond(); break;
      case HistoryMetric::pressure: values[i] = memory.pressureLevel; break;
      case HistoryMetric::cpuBusy: values[i] = snapshot.cpu.busyFraction; break;
      case HistoryMetric::diskFree: values[i] = static_cast<double>(disk.freeBytes); break;
      case HistoryMetric::diskRead: values[i] = disk.readBytesPerSecond; break;
      case HistoryMetric::diskWrite: values[i] = disk.writeBytesPerSecond; break;
      case HistoryMetric::diskTraffic: values[i] = disk.trafficBytesPerSecond(); break;
      case HistoryMetric::thermal: values[i] = rawValue(snapshot.thermal); break;
    }
  }
  return values;
}

double MinuteRollup::minuteOf(double time) { return std::floor(time / 60) * 60; }

MinuteRollupOutput MinuteRollup::ingest(const Snapshot& snapshot,
                                        const std::map<Resource, Health>& displayed) {
  const double now = snapshot.timestamp;
  const double minute = minuteOf(now);
  MinuteRollupOutput output;
  // A gap closes the pending sample only; the minute stays open, and since it counts only
  // snapshot durations, time asleep is never covered.
  if (lastTimestamp_ && now - *lastTimestamp_ > maxGap) closeSample(output);
  if (minute_ && minute_->minute != minute) closeMinute(output);
  lastTimestamp_ = now;

  const double seconds = std::max(0.0, snapshot.duration());
  if (!minute_) minute_ = MinuteAccumulator{.minute = minute};
  minute_->covered += seconds;
  addValues(minute_->stats, snapshot, seconds);
  addWorst(minute_->worst, displayed);
  for (const AppUsage& app : snapshot.apps) {
    AppTotals& totals = minute_->apps[app.id];
    totals.name = app.name;
    totals.bundleIdentifier = app.bundleIdentifier;
    totals.cpu += app.cpuCores * seconds;
    totals.memory += static_cast<double>(app.footprintBytes) * seconds;
    totals.disk += app.diskBytesPerSecond * seconds;
  }

  if (!sample_) sample_ = SampleAccumulator{};
  sample_->time = now;
  sample_->span += seconds;
  addValues(sample_->stats, snapshot, seconds);
  addWorst(sample_->worst, displayed);
  if (sample_->span >= sampleSpan) closeSample(output);
  return output;
}

MinuteRollupOutput MinuteRollup::flush() {
  MinuteRollupOutput output;
  closeSample(output);
  closeMinute(output);
  return output;
}

void MinuteRollup::closeSample(MinuteRollupOutput& output) {
  if (!sample_) return;
  SampleRow row{.time = sample_->time, .span = sample_->span, .health = sample_->worst};
  for (std::size_t i = 0; i < allHistoryMetrics.size(); ++i) {
    if (sample_->stats[i].weight > 0)
      row.values[allHistoryMetrics[i]] = sample_->stats[i].stat().average;
  }
  output.samples.push_back(std::move(row));
  sample_.reset();
}

void MinuteRollup::closeMinute(MinuteRollupOutput& output) {
  if (!minute_) return;
  MinuteRow row{.minute = minute_->minute,
                .covered = std::min(minute_->covered, 60.0),
                .worst = minute_->worst};
  for (std::size_t i = 0; i < allHistoryMetrics.size(); ++i) {
    if (minute_->stats[i].weight > 0) row.stats[allHistoryMetrics[i]] = minute_->stats[i].stat();
  }
  const double covered = row.covered;
  output.minutes.push_back(std::move(row));
  if (covered > 0) {
    rank(*minute_, AppRank::cpu, output);
    rank(*minute_, AppRank::memory, output);
    rank(*minute_, AppRank::disk, output);
  }
  minute_.reset();
}

void MinuteRollup::rank(const MinuteAccumulator& minute, AppRank rank, MinuteRollupOutput& output) {
  struct Entry {
    const std::string* appID;
    const AppTotals* totals;
    double total;
  };
  std::vector<Entry> entries;
  for (const auto& [appID, totals] : minute.apps) {
    double total = 0;
    switch (rank) {
      case AppRank::cpu: total = totals.cpu; break;
      case AppRank::memory: total = totals.memory; break;
      case AppRank::disk: total = totals.disk; break;
    }
    if (total > 0) entries.push_back({&appID, &totals, total});
  }
  std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    if (a.total != b.total) return a.total > b.total;
    if (a.totals->name != b.totals->name) return a.totals->name < b.totals->name;
    return *a.appID < *b.appID;
  });
  // The uncapped seconds: overlapping snapshots weigh in with their full durations.
  const double covered = minute.covered;
  const std::size_t kept = std::min<std::size_t>(entries.size(), appsPerRanking);
  for (std::size_t i = 0; i < kept; ++i) {
    output.apps.push_back(MinuteAppRow{.minute = minute.minute,
                                       .rank = rank,
                                       .position = static_cast<int>(i + 1),
                                       .appID = *entries[i].appID,
                                       .name = entries[i].totals->name,
                                       .bundleIdentifier = entries[i].totals->bundleIdentifier,
                                       .value = entries[i].total / covered});
  }
}

}  // namespace pellwin
