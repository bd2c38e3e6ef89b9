// The health rules and their building blocks. The words are in diagnoser_verdict.cpp.
#include "core/monitor/diagnoser.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>
#include <vector>

namespace pellwin {
namespace {

double swapTraffic(const Snapshot& s) { return s.memory.swapTrafficBytesPerSecond(); }

// Paging shows up as disk traffic too; the disk's colour judges only the rest.
double trafficBesidesPaging(const Snapshot& s) {
  return s.disk.trafficBytesPerSecond() - s.memory.swapTrafficBytesPerSecond();
}

// Two decimals, ties to even, independent of the floating-point rounding mode.
double roundToHundredths(double value) {
  const double scaled = value * 100;
  double rounded = std::round(scaled);
  if (std::fabs(scaled - std::trunc(scaled)) == 0.5) rounded = 2 * std::round(scaled / 2);
  return rounded / 100;
}

}  // namespace

std::map<Resource, Health> Diagnoser::health(const SnapshotWindow& window) const {
  std::map<Resource, Health> healths;
  const Snapshot* now = window.latest();
  if (now == nullptr) return healths;
  for (Resource resource : allResources) {
    if (!now->isUnavailable(resource)) healths[resource] = health(resource, window, *now);
  }
  return healths;
}

Health Diagnoser::health(Resource resource, const SnapshotWindow& window,
                         const Snapshot& snapshot) const {
  switch (resource) {
    case Resource::memory: return memoryHealth(window, snapshot);
    case Resource::cpu: return cpuHealth(window);
    case Resource::diskSpace: return diskSpaceHealth(snapshot);
    case Resource::diskActivity: return diskActivityHealth(window);
    case Resource::heat:
      if (snapshot.thermal == ThermalLevel::critical) return Health::problem;
      if (snapshot.thermal == ThermalLevel::serious) return Health::strain;
      return Health::ok;
  }
  return Health::ok;
}

Health Diagnoser::memoryHealth(const SnapshotWindow& window, const Snapshot& now) const {
  if (now.memory.pressureLevel >= 4) return Health::problem;
  const auto measured = window.recent(thresholds.averageWindow, {Resource::memory});
  if (SnapshotWindow::coveredTime(measured) >= thresholds.minimumCoverage &&
      SnapshotWindow::weightedAverage(measured, swapTraffic) >= thresholds.swapTrafficForProblem) {
    return Health::problem;
  }
  if (now.memory.pressureLevel >= 2) return Health::strain;
  const double swapLimit =
      thresholds.swapShareOfRAMForStrain * static_cast<double>(now.memory.totalBytes);
  if (static_cast<double>(now.memory.swapUsedBytes) > swapLimit && swapMoved(window)) {
    return Health::strain;
  }
  return Health::ok;
}

Health Diagnoser::cpuHealth(const SnapshotWindow& window) const {
  const double covered = window.covered(thresholds.averageWindow, {Resource::cpu});
  if (covered >= thresholds.minimumCoverage) {
    const double busy = busyAverage(window);
    if (busy >= thresholds.cpuProblem) return Health::problem;
    if (busy >= thresholds.cpuStrain) return Health::strain;
  }
  // One busy app alone never makes a CPU problem.
  return cpuHog(window) ? Health::strain : Health::ok;
}

Health Diagnoser::diskSpaceHealth(const Snapshot& now) const {
  const double share = now.disk.freeFraction();
  const std::uint64_t free = now.disk.freeBytes;
  if (share < thresholds.diskFreeProblemFraction || free < thresholds.diskFreeProblemBytes) {
    return Health::problem;
  }
  if (share < thresholds.diskFreeStrainFraction || free < thresholds.diskFreeStrainBytes) {
    return Health::strain;
  }
  return Health::ok;
}

Health Diagnoser::diskActivityHealth(const SnapshotWindow& window) const {
  const auto measured = window.recent(thresholds.averageWindow, {Resource::diskActivity});
  if (SnapshotWindow::coveredTime(measured) < thresholds.minimumCoverage) return Health::ok;
  return SnapshotWindow::weightedAverage(measured, trafficBesidesPaging) >=
                 thresholds.diskActivityStrain
             ? Health::strain
             : Health::ok;
}

double Diagnoser::busyAverage(const SnapshotWindow& window) const {
  return roundToHundredths(window.average(thresholds.averageWindow, {Resource::cpu},
                                          [](const Snapshot& s) { return s.cpu.busyFraction; }));
}

std::optional<AppUsage> Diagnoser::cpuHog(const SnapshotWindow& window) const {
  const auto stretch = window.recent(thresholds.singleAppDuration);
  if (stretch.empty() ||
      SnapshotWindow::coveredTime(stretch) < thresholds.singleAppDuration * 0.95) {
    return std::nullopt;
  }
  std::unordered_map<std::string_view, int> busyCounts;
  for (const Snapshot* snapshot : stretch) {
    const auto& apps = snapshot->apps;
    for (auto app = apps.begin(); app != apps.end(); ++app) {
      if (app->cpuCores < thresholds.singleAppCores) continue;
      // An app listed twice in one snapshot counts once, as its first entry says.
      const auto first = std::ranges::find(apps.begin(), app, app->id, &AppUsage::id);
      if (first == app) ++busyCounts[app->id];
    }
  }
  std::vector<const AppUsage*> newest;
  for (const AppUsage& app : stretch.back()->apps) newest.push_back(&app);
  std::ranges::stable_sort(
      newest, [](const AppUsage* a, const AppUsage* b) { return a->cpuCores > b->cpuCores; });
  const auto snapshots = static_cast<double>(stretch.size());
  for (const AppUsage* app : newest) {
    const auto count = busyCounts.find(app->id);
    if (count != busyCounts.end() &&
        static_cast<double>(count->second) / snapshots >= thresholds.singleAppShare) {
      return *app;
    }
  }
  return std::nullopt;
}

bool Diagnoser::swapMoved(const SnapshotWindow& window) const {
  const auto lookback = window.recent(thresholds.swapActivityLookback);
  return std::ranges::any_of(lookback, [](const Snapshot* s) { return swapTraffic(*s) > 0; });
}

std::vector<Tip> Diagnoser::tips(const SnapshotWindow& window) const {
  std::vector<Tip> tips;
  const Snapshot* now = window.latest();
  if (now == nullptr) return tips;
  if (now->lowPowerMode) tips.push_back(Tip::lowPowerMode());
  if (now->uptime >= thresholds.longUptime) {
    const double days = std::trunc(std::min(now->uptime / 86400, 1e9));
    tips.push_back(Tip::longUptime(static_cast<int>(days)));
  }
  const double swapLimit =
      thresholds.swapShareOfRAMForStrain * static_cast<double>(now->memory.totalBytes);
  if (static_cast<double>(now->memory.swapUsedBytes) > swapLimit && !swapMoved(window) &&
      window.covered(thresholds.swapActivityLookback) >= thresholds.swapActivityLookback * 0.95) {
    tips.push_back(Tip::idleSwap(now->memory.swapUsedBytes));
  }
  return tips;
}

}  // namespace pellwin
