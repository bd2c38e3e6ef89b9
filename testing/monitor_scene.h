// A busy afternoon on a 16 GB laptop, as the live model would publish it: memory tight, the
// CPU busy, the disk low on space, a browser, an editor, a training script, chat and music,
// parts of the desktop, and the app itself. Widget tests, screenshots and benchmarks use it.
// Test support only: production code never includes it.
#pragma once

#include <string>
#include <vector>

#include "app/models/live_model.h"
#include "core/monitor/diagnoser.h"
#include "core/monitor/snapshot_window.h"

namespace pellwin::testing {

// The scene's "now", seconds since 1970 (a weekday afternoon).
inline constexpr double sceneNow = 1'749'820'000.0;

inline AppUsage sceneApp(std::string id, std::string name, AppCategory category,
                         std::vector<std::int32_t> pids, double megabytes, double cores,
                         double diskBytesPerSecond, double startedMinutesAgo) {
  AppUsage app{.id = std::move(id),
               .name = std::move(name),
               .category = category,
               .runningSince = sceneNow - startedMinutesAgo * 60,
               .processCount = static_cast<int>(pids.size()),
               .pids = std::move(pids),
               .footprintBytes = static_cast<std::uint64_t>(megabytes * 1024 * 1024),
               .cpuCores = cores,
               .diskBytesPerSecond = diskBytesPerSecond};
  app.energyImpact = (cores + diskBytesPerSecond * 4e-10) * 100;
  return app;
}

inline std::vector<std::int32_t> pidRun(std::int32_t first, int count) {
  std::vector<std::int32_t> pids;
  for (int i = 0; i < count; ++i) pids.push_back(first + i);
  return pids;
}

// The scene's apps, busiest first as the grouping orders them. `extraApps` adds small
// command-line programs of two processes each, for a machine with many processes.
inline std::vector<AppUsage> sceneApps(int extraApps = 0) {
  std::vector<AppUsage> apps = {
      sceneApp("pid:4120", "python3.12 train.py", AppCategory::developer, {4120}, 2310, 1.02, 4.1e6,
               48),
      sceneApp("app:org.mozilla.firefox", "Firefox", AppCategory::browsers, pidRun(2200, 14), 3480,
               0.86, 310e3, 190),
      sceneApp("app:code", "Visual Studio Code", AppCategory::developer, pidRun(3100, 9), 1890,
               0.41, 52e3, 185),
      sceneApp("proc:gnome-shell", "gnome-shell", AppCategory::system, {1650}, 612, 0.33, 0, 400),
      sceneApp("app:com.slack.Slack", "Slack", AppCategory::communication, pidRun(2900, 6), 940,
               0.12, 8e3, 180),
      sceneApp("proc:Xwayland", "Xwayland", AppCategory::system, {1702}, 148, 0.08, 0, 400),
      sceneApp("app:com.spotify.Client", "Spotify", AppCategory::media, pidRun(3300, 5), 520, 0.06,
               21e3, 95),
      sceneApp("proc:tracker-miner-fs-3", "tracker-miner-fs-3", AppCategory::system, {1880}, 96,
               0.05, 1.2e6, 398),
      sceneApp("app:org.gnome.Nautilus", "Files", AppCategory::other, {2050}, 180, 0.02, 0, 120),
      sceneApp("app:com.pellwin.Pellwin", "Tovrin", AppCategory::other, {5200}, 64, 0.01, 2e3, 190),
      sceneApp("proc:pipewire", "pipewire", AppCategory::system, {1610, 1611}, 24, 0.01, 0, 400),
      sceneApp("proc:bash", "bash", AppCategory::developer, pidRun(3400, 4), 18, 0.0, 0, 170),
  };
  apps[0].detail = "python3.12 train.py --epochs 40";
  apps[0].workingDirectory = "/home/sam/projects/vision";
  apps[1].bundlePath = "/usr/share/applications/org.mozilla.firefox.desktop";
  apps[3].explanation = "Draws the desktop: windows, the top bar and the overview.";
  for (int i = 0; i < extraApps; ++i) {
    const std::string name = "tool-" + std::to_string(i);
    apps.push_back(sceneApp("proc:" + name, name, AppCategory::other,
                            {10'000 + 2 * i, 10'001 + 2 * i}, 4 + i % 50, (i % 7) * 0.001,
                            (i % 5) * 1e3, 30 + i));
  }
  return apps;
}

// One reading of the scene, `secondsAgo` before its "now".
inline Snapshot sceneSnapshot(double secondsAgo, int extraApps = 0) {
  return Snapshot{.timestamp = sceneNow - secondsAgo,
                  .interval = 2.0,
                  .memory = {.totalBytes = 16ull << 30,
                             .usedBytes = 14'412'000'000,
                             .compressedBytes = 1'100'000'000,
                             .swapUsedBytes = 900'000'000,
                             .pressureLevel = 2},
                  .cpu = {.busyFraction = 0.74, .coreCount = 8},
                  .disk = {.freeBytes = 48'200'000'000,
                           .totalBytes = 512'000'000'000,
                           .readBytesPerSecond = 4.9e6,
                           .writeBytesPerSecond = 1.3e6},
                  .uptime = 16 * 86400.0 + 3600,
                  .apps = sceneApps(extraApps),
                  .systemRemainderBytes = 1'800'000'000,
                  .battery = BatteryReading{.percent = 64, .onBattery = true, .minutesLeft = 170}};
}

// What the live model publishes after a minute of the scene, judged as it would judge it.
inline LiveState sceneState(int extraApps = 0) {
  SnapshotWindow window(600);
  LiveState state;
  for (int i = 30; i >= 0; --i) {
    window.append(sceneSnapshot(2.0 * i, extraApps));
    state.battery.ingest(sceneNow - 2.0 * i - 3600 * (i == 30), window.latest()->battery,
                         window.latest());
  }
  const Diagnoser diagnoser;
  state.displayed = diagnoser.health(window);
  state.verdict = diagnoser.verdict(window, state.displayed);
  state.snapshot = *window.latest();
  return state;
}

}  // namespace pellwin::testing
