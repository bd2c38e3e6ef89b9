// The synthetic day of "--seed-history": a fixed cast of apps and curves that slow the machine
// down several times, each in its own way. Everything is a function of the moment's index, so
// every run writes the same history relative to its start.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "app/commands/seed_history.h"

namespace pellwin::SeedHistory {

namespace {

constexpr double kGiB = 1073741824.0;
constexpr double kGB = 1e9;

// 0 outside [from, to), 1 inside, with `ramp` moments of linear slope at both ends.
double window(int i, int from, int to, int ramp = 12) {
  if (i < from || i >= to) return 0;
  const double up = std::min(1.0, (i - from + 1) / static_cast<double>(ramp));
  const double down = std::min(1.0, (to - i) / static_cast<double>(ramp));
  return std::min(up, down);
}

// A slow, deterministic wiggle between -1 and 1.
double wiggle(int i, double period, double phase = 0) {
  return std::sin(2 * std::numbers::pi * (i / period + phase));
}

std::uint64_t bytes(double value) { return static_cast<std::uint64_t>(std::max(0.0, value)); }

// The episodes of the day, by moment (5 s each; the record has a hole from 8001 to 8540).
struct Episodes {
  double memoryStorm;    // Chrome's tabs push memory into swap: red, notified
  double memoryRelapse;  // a short relapse within the hour: red, not notified again
  double lateStorm;      // a second notified storm in the evening
  double training;       // python3.12 train.py keeps every core busy
  double afterTraining;  // the run winds down: CPU amber
  double imagePull;      // OrbStack pulls images: disk activity amber
  double diskFull;       // OrbStack's disk image fills the disk: red until cleaned up
  double hot;            // a long Claude session on a warm afternoon: heat red
  double warm;           // before and after it: heat amber
};

Episodes episodesAt(int i) {
  const double filling =
      i >= 10000 && i < 11500 ? std::min(1.0, (i - 10000) / 600.0) * (i < 11200 ? 1.0 : 0.0) : 0.0;
  return Episodes{.memoryStorm = window(i, 2000, 2360),
                  .memoryRelapse = window(i, 2650, 2720),
                  .lateStorm = window(i, 15500, 15800),
                  .training = window(i, 5000, 5500, 6),
                  .afterTraining = window(i, 5500, 6200, 6),
                  .imagePull = window(i, 7000, 7300),
                  .diskFull = filling,
                  .hot = window(i, 13000, 13200, 2),
                  .warm = std::max(window(i, 12900, 13000, 2), window(i, 13200, 13400, 2))};
}

AppUsage castApp(const char* id, const char* name, const char* bundle, AppCategory category,
                 int processes, std::int32_t firstPID, double cores, double memory, double disk) {
  AppUsage app{.id = id,
               .name = name,
               .category = category,
               .bundlePath = std::string(id).substr(4),
               .bundleIdentifier = bundle,
               .processCount = processes,
               .footprintBytes = bytes(memory),
               .cpuCores = std::max(0.0, cores),
               .diskBytesPerSecond = std::max(0.0, disk)};
  for (int p = 0; p < processes; ++p) app.pids.push_back(firstPID + p);
  return app;
}

std::vector<AppUsage> apps(int i, const Episodes& e) {
  const double storm = std::max({e.memoryStorm, e.memoryRelapse, e.lateStorm});
  std::vector<AppUsage> cast = {
      castApp("app:/Applications/Google Chrome.app", "Google Chrome", "com.google.Chrome",
              AppCategory::browsers, 24, 1200, 0.35 + 0.15 * wiggle(i, 97) + 0.6 * e.hot,
              3.6 * kGiB + 0.4 * kGiB * wiggle(i, 2880) + storm * 7.0 * kGiB,
              2e5 + 1e5 * wiggle(i, 31)),
      castApp("app:/Applications/Slack.app", "Slack", "com.tinyspeck.slackmacgap",
              AppCategory::communication, 6, 2100, 0.06 + 0.03 * wiggle(i, 53), 0.9 * kGiB, 4e4),
      castApp("app:/Applications/Claude.app", "Claude", "com.anthropic.claudefordesktop",
              AppCategory::ai, 5, 3300, 0.12 + 0.05 * wiggle(i, 41) + 4.8 * e.hot + 1.2 * e.warm,
              1.3 * kGiB + 0.5 * kGiB * (e.hot + e.warm), 6e4),
      castApp("app:/Applications/OrbStack.app", "OrbStack", "dev.kdrag0n.MacVirt",
              AppCategory::developer, 4, 4400, 0.2 + 0.6 * e.imagePull + 0.4 * e.diskFull,
              2.4 * kGiB + 1.5 * kGiB * e.imagePull, 3e5 + 1.6e8 * e.imagePull + 4e7 * e.diskFull),
  };
  AppUsage indexer{.id = "pid:640",
                   .name = "mds_stores",
                   .category = AppCategory::system,
                   .processCount = 1,
                   .pids = {640},
                   .footprintBytes = bytes(160e6 + 40e6 * wiggle(i, 300)),
                   .cpuCores = 0.03 + 0.02 * std::max(0.0, wiggle(i, 700)),
                   .diskBytesPerSecond = 5e5 + 4e5 * std::max(0.0, wiggle(i, 700))};
  cast.push_back(indexer);
  if (i >= 4900 && i < 6200) {
    cast.push_back(AppUsage{.id = "pid:6122",
                            .name = "python3.12",
                            .detail = "python3.12 train.py",
                            .category = AppCategory::developer,
                            .workingDirectory = "/Users/me/code/site",
                            .processCount = 1,
                            .pids = {6122},
                            .footprintBytes = bytes(4.2 * kGiB * (0.3 + 0.7 * e.training)),
                            .cpuCores = 0.4 + 7.2 * e.training + 5.0 * e.afterTraining,
                            .diskBytesPerSecond = 2e6});
  }
  return cast;
}

}  // namespace

Snapshot snapshot(int i, double time) {
  const Episodes e = episodesAt(i);
  Snapshot s;
  s.timestamp = time;
  s.interval = 5;
  s.apps = apps(i, e);
  // Busiest first, as the grouping hands them over.
  std::stable_sort(s.apps.begin(), s.apps.end(),
                   [](const AppUsage& a, const AppUsage& b) { return a.cpuCores > b.cpuCores; });

  const double storm = std::max({e.memoryStorm, e.memoryRelapse, e.lateStorm});
  const double total = 16 * kGiB;
  double used = 2.1 * kGiB;  // the kernel and the system
  for (const AppUsage& app : s.apps) used += static_cast<double>(app.footprintBytes);
  s.memory = MemoryReading{.totalBytes = bytes(total),
                           .usedBytes = bytes(std::min(used, total)),
                           .compressedBytes = bytes(0.4 * kGiB + storm * 2.2 * kGiB),
                           .swapUsedBytes = bytes(0.6 * kGiB + storm * 3.5 * kGiB),
                           .swapInBytesPerSecond = storm * (1.3e7 + 2e6 * wiggle(i, 7)),
                           .swapOutBytesPerSecond = storm * (1.2e7 + 2e6 * wiggle(i, 11)),
                           .pressureLevel = storm > 0 ? 2 : 1};

  double cores = 0;
  for (const AppUsage& app : s.apps) cores += app.cpuCores;
  s.cpu = CPUReading{.busyFraction = std::clamp((cores + 0.25) / 8.0, 0.0, 1.0), .coreCount = 8};

  const double freeBytes = 121 * kGB - 600 * 1e6 * (i / 1000.0) - e.diskFull * 108 * kGB;
  double appDisk = 0;
  for (const AppUsage& app : s.apps) appDisk += app.diskBytesPerSecond;
  s.disk = DiskReading{.freeBytes = bytes(freeBytes),
                       .totalBytes = bytes(494.4 * kGB),
                       .readBytesPerSecond = 0.35 * appDisk + s.memory.swapInBytesPerSecond,
                       .writeBytesPerSecond = 0.65 * appDisk + s.memory.swapOutBytesPerSecond};

  s.thermal = e.hot > 0.5        ? ThermalLevel::critical
              : e.warm > 0.5     ? ThermalLevel::serious
              : e.training > 0.5 ? ThermalLevel::fair
                                 : ThermalLevel::nominal;
  s.uptime = 3 * 86400.0 + 5.0 * i;
  s.systemRemainderBytes = bytes(2.1 * kGiB);
  return s;
}

std::vector<DayRow> dayRows(int offset, const std::string& day) {
  // Last week was slower than the week before: more red, mostly memory and CPU.
  const double week = offset <= 7 ? 1.0 : offset <= 14 ? 0.55 : 0.4;
  const double vary = 0.6 + 0.4 * std::fabs(std::sin(offset * 1.7));
  const auto cause = [](const char* id, const char* name, double seconds) {
    return Cause{.appID = id, .name = name, .seconds = std::round(seconds)};
  };
  const double memoryRed = std::round(2400 * week * vary);
  const double cpuRed = std::round((offset % 3 == 0 ? 1800 : 300) * week);
  const double diskRed = offset % 9 == 4 ? 2700 : 0;
  const double heatRed = offset % 5 == 2 ? std::round(600 * vary) : 0;
  return {
      DayRow{
          .day = day,
          .resource = Resource::memory,
          .strainSeconds = std::round(5400 * vary),
          .problemSeconds = memoryRed,
          .causes = {cause("app:/Applications/Google Chrome.app", "Google Chrome", memoryRed * 0.7),
                     cause("app:/Applications/Slack.app", "Slack", memoryRed * 0.2),
                     cause("app:/Applications/Claude.app", "Claude", memoryRed * 0.1)}},
      DayRow{
          .day = day,
          .resource = Resource::cpu,
          .strainSeconds = std::round(3600 * week),
          .problemSeconds = cpuRed,
          .causes = {cause("pid:6122", "python3.12", cpuRed * 0.8),
                     cause("app:/Applications/Google Chrome.app", "Google Chrome", cpuRed * 0.2)}},
      DayRow{.day = day,
             .resource = Resource::diskSpace,
             .strainSeconds = diskRed > 0 ? 7200.0 : 0.0,
             .problemSeconds = diskRed,
             .causes = {}},
      DayRow{.day = day,
             .resource = Resource::diskActivity,
             .strainSeconds = std::round(900 * vary),
             .problemSeconds = 0,
             .causes = {}},
      DayRow{.day = day,
             .resource = Resource::heat,
             .strainSeconds = std::round(1200 * vary),
             .problemSeconds = heatRed,
             .causes = heatRed > 0 ? std::vector<Cause>{cause("app:/Applications/Claude.app",
                                                              "Claude", heatRed)}
                                   : std::vector<Cause>{}},
  };
}

}  // namespace pellwin::SeedHistory
