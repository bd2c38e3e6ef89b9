// The words of the verdict: for each resource and shown health, the headline, the short
// status, the reason with its figures, the apps behind it and the advice lines.
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "core/base/format.h"
#include "core/monitor/advice.h"
#include "core/monitor/diagnoser.h"

namespace pellwin {
namespace {

constexpr std::uint64_t kGiB = 1ULL << 30;

// The apps with some of `measure`, largest first (equals keep the snapshot's order), at most 3.
std::vector<const AppUsage*> topApps(const Snapshot& now,
                                     const std::function<double(const AppUsage&)>& measure) {
  std::vector<const AppUsage*> apps;
  for (const AppUsage& app : now.apps) {
    if (measure(app) > 0) apps.push_back(&app);
  }
  std::ranges::stable_sort(
      apps, [&](const AppUsage* a, const AppUsage* b) { return measure(*a) > measure(*b); });
  if (apps.size() > 3) apps.resize(3);
  return apps;
}

double memoryOf(const AppUsage& app) { return static_cast<double>(app.footprintBytes); }
double cpuOf(const AppUsage& app) { return app.cpuCores; }
double diskOf(const AppUsage& app) { return app.diskBytesPerSecond; }

// The app's share of the whole machine.
std::string cpuShare(const AppUsage& app, int coreCount) {
  return Format::percent(app.cpuCores / std::max(coreCount, 1));
}

std::vector<Contributor> cpuContributors(const std::vector<const AppUsage*>& apps, int cores) {
  std::vector<Contributor> contributors;
  for (const AppUsage* app : apps) {
    contributors.push_back({.appID = app->id, .name = app->name, .value = cpuShare(*app, cores)});
  }
  return contributors;
}

ResourceVerdict words(Resource resource, Health h, std::string headline, std::string shortStatus,
                      std::string reason) {
  return ResourceVerdict{.resource = resource,
                         .health = h,
                         .headline = std::move(headline),
                         .shortStatus = std::move(shortStatus),
                         .reason = std::move(reason)};
}

ResourceVerdict unavailableVerdict(Resource resource) {
  return words(resource, Health::ok, std::string(title(resource)) + " reading unavailable",
               "Unavailable", "macOS didn't return this reading.");
}

}  // namespace

std::optional<Verdict> Diagnoser::verdict(const SnapshotWindow& window,
                                          const std::map<Resource, Health>& displayed) const {
  const Snapshot* now = window.latest();
  if (now == nullptr) return std::nullopt;
  Verdict verdict{.tips = tips(window)};
  for (Resource resource : allResources) {
    const auto shown = displayed.find(resource);
    const Health h = shown == displayed.end() ? Health::ok : shown->second;
    if (now->isUnavailable(resource)) {
      verdict.resources.push_back(unavailableVerdict(resource));
      continue;
    }
    switch (resource) {
      case Resource::memory: verdict.resources.push_back(memoryVerdict(*now, h)); break;
      case Resource::cpu: verdict.resources.push_back(cpuVerdict(window, *now, h)); break;
      case Resource::diskSpace: verdict.resources.push_back(diskSpaceVerdict(*now, h)); break;
      case Resource::diskActivity:
        verdict.resources.push_back(diskActivityVerdict(window, *now, h));
        break;
      case Resource::heat: verdict.resources.push_back(heatVerdict(*now, h)); break;
    }
  }
  return verdict;
}

ResourceVerdict Diagnoser::memoryVerdict(const Snapshot& now, Health h) const {
  const std::string total = Format::ram(now.memory.totalBytes);
  ResourceVerdict v =
      h == Health::problem
          ? words(Resource::memory, h, "Your Mac is slow because memory is full", "Memory full",
                  "Apps want more than your " + total +
                      ", so macOS keeps moving data to disk and back. That's the stutter.")
      : h == Health::strain
          ? words(Resource::memory, h, "Memory is getting tight", "Memory tight",
                  "macOS is compressing memory to make room. Opening more apps will start the "
                  "stutter.")
          : words(Resource::memory, h, "Memory is fine", "Healthy",
                  Format::memory(now.memory.usedBytes) + " of " + total + " in use.");

  const auto top = topApps(now, memoryOf);
  for (const AppUsage* app : top) {
    std::optional<std::string> detail;
    if (app->processCount >= 2) detail = std::to_string(app->processCount) + " processes";
    v.contributors.push_back({.appID = app->id,
                              .name = app->name,
                              .value = Format::memory(app->footprintBytes),
                              .detail = detail});
  }
  if (h != Health::ok && !top.empty()) {
    v.advice.push_back(Advice::quitLine(*top[0]));
    if (top.size() >= 2 && top[1]->footprintBytes >= kGiB) {
      v.advice.push_back(Advice::quitLine(*top[1]));
    }
  }
  return v;
}

ResourceVerdict Diagnoser::cpuVerdict(const SnapshotWindow& window, const Snapshot& now,
                                      Health h) const {
  const std::string pct = Format::percent(busyAverage(window));
  const std::string cores = std::to_string(now.cpu.coreCount);
  const std::optional<AppUsage> hog =
      h == Health::strain ? cpuHog(window) : std::optional<AppUsage>();
  const auto minutes = static_cast<long long>(std::trunc(thresholds.singleAppDuration / 60));

  ResourceVerdict v =
      h == Health::problem
          ? words(Resource::cpu, h, "Your Mac is slow because the CPU is maxed out", "CPU maxed",
                  pct + " busy across all " + cores + " cores over the last minute.")
      : h == Health::strain && hog
          ? words(Resource::cpu, h, "One app is keeping the CPU busy", "CPU busy",
                  hog->name + " has used a full core for over " + std::to_string(minutes) +
                      " minutes.")
      : h == Health::strain ? words(Resource::cpu, h, "The CPU is busy", "CPU busy",
                                    pct + " busy across " + cores + " cores over the last minute.")
                            : words(Resource::cpu, h, "CPU is fine", "Healthy",
                                    pct + " busy across " + cores + " cores.");

  const auto top = topApps(now, cpuOf);
  v.contributors = cpuContributors(top, now.cpu.coreCount);
  if (h != Health::ok) {
    if (hog) {
      v.advice.push_back(Advice::cpuLine(*hog));
    } else if (!top.empty()) {
      v.advice.push_back(Advice::cpuLine(*top[0]));
    }
  }
  return v;
}

ResourceVerdict Diagnoser::diskSpaceVerdict(const Snapshot& now, Health h) const {
  const std::string free = Format::disk(now.disk.freeBytes);
  const std::string total = Format::disk(now.disk.totalBytes);
  // "5%" and "10 GB" are words of the sentences, not read from the thresholds.
  ResourceVerdict v =
      h == Health::problem && now.disk.freeBytes >= thresholds.diskFreeProblemBytes
          ? words(Resource::diskSpace, h, "Your disk is almost full", "Disk almost full",
                  "Only " + free +
                      " free, less than 5% of your disk. macOS slows down when the disk is this "
                      "full.")
      : h == Health::problem
          ? words(Resource::diskSpace, h, "Your disk is almost full", "Disk almost full",
                  "Only " + free + " free. Below 10 GB, macOS slows down and updates fail.")
      : h == Health::strain
          ? words(Resource::diskSpace, h, "Disk space is running low", "Disk space low",
                  free + " free of " + total +
                      ". macOS needs free space to move memory to disk and to update.")
          : words(Resource::diskSpace, h, "Disk space is fine", "Healthy",
                  free + " free of " + total + ".");
  if (h != Health::ok) v.advice.push_back("Empty the Trash and delete big files you don't need.");
  return v;
}

ResourceVerdict Diagnoser::diskActivityVerdict(const SnapshotWindow& window, const Snapshot& now,
                                               Health h) const {
  // The colour leaves paging out, the sentence reports all reading and writing.
  const std::string rate = Format::rate(
      window.average(thresholds.averageWindow, {Resource::diskActivity},
                     [](const Snapshot& s) { return s.disk.trafficBytesPerSecond(); }));
  ResourceVerdict v = h != Health::ok
                          ? words(Resource::diskActivity, h, "The disk is very busy", "Disk busy",
                                  rate + " of reading and writing over the last minute.")
                          : words(Resource::diskActivity, h, "Disk activity is normal", "Healthy",
                                  rate + " of reading and writing.");
  for (const AppUsage* app : topApps(now, diskOf)) {
    v.contributors.push_back(
        {.appID = app->id, .name = app->name, .value = Format::rate(app->diskBytesPerSecond)});
  }
  if (h != Health::ok) v.advice.push_back("This usually settles on its own.");
  return v;
}

ResourceVerdict Diagnoser::heatVerdict(const Snapshot& now, Health h) const {
  ResourceVerdict v =
      h == Health::problem
          ? words(Resource::heat, h, "Your Mac is very hot and running much slower", "Very hot",
                  "macOS is holding back hard to cool down.")
      : h == Health::strain
          ? words(Resource::heat, h, "Your Mac is hot and slowing itself down", "Hot",
                  "macOS lowers speed to cool down.")
          : words(Resource::heat, h, "Temperature is normal", "Healthy", "No slowdown from heat.");
  v.contributors = cpuContributors(topApps(now, cpuOf), now.cpu.coreCount);
  if (h != Health::ok) v.advice.push_back("Close heavy apps and keep the vents clear.");
  return v;
}

}  // namespace pellwin
