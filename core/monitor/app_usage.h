// One app as the monitor shows it: every process of the app folded into one entry, with sums
// of their usage over the snapshot's interval. Plain values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/monitor/app_category.h"

namespace pellwin {

struct AppUsage {
  std::string id{};  // the grouping key ("app:…", "proc:…", "pid:…"), also stored with history
  std::string name{};
  std::optional<std::string> detail{};  // the command line of a process shown on its own
  AppCategory category = AppCategory::other;
  std::optional<std::string> bundlePath{};        // the app bundle, or the app's desktop entry
  std::optional<std::string> bundleIdentifier{};  // the bundle's identifier, or the desktop id
  std::optional<std::string> explanation{};       // the catalog's sentence for a system part
  std::optional<std::string> workingDirectory{};  // of a process shown on its own
  std::optional<double> runningSince{};           // the earliest start among its processes
  int processCount = 0;
  std::vector<std::int32_t> pids{};
  std::vector<std::int32_t> parentPids{};  // the parent of each of `pids`, in the same order
  std::uint64_t footprintBytes = 0;
  double cpuCores = 0;
  double diskBytesPerSecond = 0;
  double energyImpact = 0;
  friend bool operator==(const AppUsage&, const AppUsage&) = default;
};

// The apps of one category, for lists shown under category headings.
struct AppGroup {
  AppCategory category = AppCategory::other;
  std::vector<AppUsage> apps{};

  [[nodiscard]] AppCategory id() const { return category; }
  [[nodiscard]] int processCount() const {
    int count = 0;
    for (const AppUsage& app : apps) count += app.processCount;
    return count;
  }
  friend bool operator==(const AppGroup&, const AppGroup&) = default;
};

}  // namespace pellwin
