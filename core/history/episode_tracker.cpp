#include "core/history/episode_tracker.h"

#include <algorithm>
#include <limits>
#include <tuple>

#include "core/base/format.h"

namespace pellwin {

double EpisodeTracker::reading(Resource resource, const Snapshot& snapshot) {
  switch (resource) {
    case Resource::memory: return snapshot.memory.swapTrafficBytesPerSecond();
    case Resource::cpu: return snapshot.cpu.busyFraction;
    case Resource::diskSpace: return static_cast<double>(snapshot.disk.freeBytes);
    case Resource::diskActivity: return snapshot.disk.trafficBytesPerSecond();
    case Resource::heat: return static_cast<double>(rawValue(snapshot.thermal));
  }
  return 0;
}

bool EpisodeTracker::worse(Resource resource, double a, double b) {
  return resource == Resource::diskSpace ? a < b : a > b;
}

std::string EpisodeTracker::peakText(Resource resource, double peak) {
  switch (resource) {
    case Resource::memory:
    case Resource::diskActivity: return Format::rate(peak);
    case Resource::cpu: return Format::fixed(peak * 100, 0) + "%";
    case Resource::diskSpace: {
      constexpr double limit = 18446744073709551615.0;
      const std::uint64_t bytes = !(peak > 0)     ? 0
                                  : peak >= limit ? std::numeric_limits<std::uint64_t>::max()
                                                  : static_cast<std::uint64_t>(peak);
      return Format::disk(bytes);
    }
    case Resource::heat:
      if (peak == 1) return "Warm";
      if (peak == 2) return "Hot";
      if (peak == 3) return "Very hot";
      return "Normal";
  }
  return "";
}

std::vector<EpisodeRow> EpisodeTracker::ingest(const Snapshot& snapshot,
                                               const std::map<Resource, Health>& displayed,
                                               const std::map<Resource, Lead>& leads) {
  const double now = snapshot.timestamp;
  std::vector<EpisodeRow> rows;
  if (lastTimestamp_ && now - *lastTimestamp_ > maxGap) rows = closeAll();
  lastTimestamp_ = now;

  for (Resource resource : allResources) {
    const auto shown = displayed.find(resource);
    if (shown == displayed.end() || shown->second != Health::problem) {
      if (auto found = runs_.find(resource); found != runs_.end()) {
        if (found->second.opened) rows.push_back(row(resource, found->second, true));
        runs_.erase(found);
      }
      continue;
    }
    auto [entry, isNew] = runs_.try_emplace(resource, Run{.start = now, .last = now});
    Run& run = entry->second;
    run.last = now;
    const auto lead = leads.find(resource);
    update(run, resource, snapshot,
           lead == leads.end() ? std::nullopt : std::optional<Lead>(lead->second));
    if (!run.opened && now - run.start >= minimumLength) {
      run.opened = true;
      rows.push_back(row(resource, run, false));
    }
  }
  return rows;
}

void EpisodeTracker::update(Run& run, Resource resource, const Snapshot& snapshot,
                            const std::optional<Lead>& lead) const {
  std::optional<double> current;
  if (!snapshot.isUnavailable(resource)) {
    current = reading(resource, snapshot);
    if (!run.peak || worse(resource, *current, *run.peak)) run.peak = current;
  }
  if (!lead) return;
  run.redSeconds[lead->appID] += std::max(0.0, snapshot.duration());
  run.leads[lead->appID] = *lead;
  auto stored = run.leadValues.find(lead->appID);
  if (!current) {
    if (stored == run.leadValues.end()) run.leadValues[lead->appID] = {std::nullopt, lead->value};
    return;
  }
  // An equal reading keeps the earlier text; a figure stored without a reading gives way.
  if (stored == run.leadValues.end() || !stored->second.reading ||
      worse(resource, *current, *stored->second.reading)) {
    run.leadValues[lead->appID] = {current, lead->value};
  }
}

std::vector<EpisodeRow> EpisodeTracker::closeAll() {
  std::vector<EpisodeRow> rows;
  for (Resource resource : allResources) {
    const auto found = runs_.find(resource);
    if (found == runs_.end()) continue;
    if (found->second.opened) rows.push_back(row(resource, found->second, true));
  }
  runs_.clear();
  return rows;
}

EpisodeRow EpisodeTracker::row(Resource resource, const Run& run, bool closed) {
  const double peak = run.peak.value_or(0);
  EpisodeRow result{.resource = resource,
                    .start = run.start,
                    .end = closed ? std::optional(run.last) : std::nullopt,
                    .peak = peak,
                    .peakText = peakText(resource, peak)};
  // Most red seconds first; then the lead's name in text order; then the smaller app ID.
  const std::string* top = nullptr;
  std::tuple<double, std::string> best;
  for (const auto& [appID, seconds] : run.redSeconds) {
    const auto lead = run.leads.find(appID);
    std::string name = lead == run.leads.end() ? std::string() : lead->second.name;
    if (top == nullptr || seconds > std::get<0>(best) ||
        (seconds == std::get<0>(best) && name < std::get<1>(best))) {
      top = &appID;
      best = {seconds, std::move(name)};
    }
  }
  if (top != nullptr) {
    const auto value = run.leadValues.find(*top);
    const auto lead = run.leads.find(*top);
    if (value != run.leadValues.end() && lead != run.leads.end()) {
      result.topApp = lead->second.name;
      result.topValue = value->second.value;
    }
  }
  return result;
}

}  // namespace pellwin
