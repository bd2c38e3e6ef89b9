// The core work of one monitor tick at realistic sizes: a snapshot from two readings of 600
// processes with app grouping, then health, the stabilizer and the verdict over a full
// 600-second window at a 2-second period, whose older snapshots are kept lean.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "core/monitor/diagnoser.h"
#include "core/monitor/snapshot_builder.h"
#include "core/monitor/snapshot_window.h"
#include "core/monitor/stabilizer.h"

namespace pellwin {
namespace {

constexpr double kPeriod = 2.0;
constexpr double kStart = 1'700'000'000;

std::vector<std::string> arguments(const std::string& program, int count) {
  std::vector<std::string> args = {program};
  for (int i = 1; i < count; ++i) args.push_back("--option-" + std::to_string(i) + "=some/value");
  return args;
}

AppIdentity identity(const std::string& id, const std::string& name,
                     std::vector<std::string> categories) {
  return {.id = id,
          .name = name,
          .entryPath = "/usr/share/applications/" + id + ".desktop",
          .categories = std::move(categories)};
}

// What `ps` shows on a busy developer's desktop: many kernel threads, system daemons, a few
// desktop apps with many helpers, shells, a build, scripts and one program spinning on a core.
// `cpuNanosPerTick` is how much CPU each process uses per tick.
struct Population {
  std::vector<ProcessSample> processes;
  std::vector<std::uint64_t> cpuNanosPerTick;

  void add(ProcessSample p, double cores) {
    p.footprintBytes = p.kernelThread ? 0 : 20'000'000 + 1'000'000ULL * (processes.size() % 90);
    p.startTime = kStart - 3600;
    if (!p.kernelThread) p.workingDirectory = "/home/ada/src/project";
    processes.push_back(std::move(p));
    cpuNanosPerTick.push_back(static_cast<std::uint64_t>(cores * kPeriod * 1e9));
  }
};

Population population() {
  Population pop;
  std::int32_t pid = 1;
  const char* kernel[] = {"kworker/%d:1-events", "ksoftirqd/%d",
                          "migration/%d",        "cpuhp/%d",
                          "irq/%d-nvme0q1",      "kworker/u16:%d+flush-259:0"};
  for (int i = 0; i < 180; ++i) {
    char name[64];
    std::snprintf(name, sizeof name, kernel[i % 6], i / 6);
    pop.add({.pid = pid++, .name = name, .kernelThread = true}, 0.001);
  }
  const char* daemons[] = {"/usr/lib/systemd/systemd-journald",
                           "/usr/sbin/NetworkManager",
                           "/usr/bin/pipewire",
                           "/usr/libexec/gsd-media-keys",
                           "/usr/libexec/tracker-miner-fs-3",
                           "/usr/bin/dbus-daemon",
                           "/usr/sbin/cupsd",
                           "/usr/libexec/xdg-desktop-portal-gtk",
                           "/usr/bin/gnome-shell",
                           "/usr/libexec/evolution-source-registry"};
  for (int i = 0; i < 60; ++i) {
    const std::string path = daemons[i % 10];
    const std::string name = path.substr(path.rfind('/') + 1);
    // Half of them belong to other users: no path, and a name the kernel cut to 15 characters.
    const bool theirs = i % 2 == 1;
    pop.add({.pid = pid++,
             .name = theirs ? name.substr(0, 15) : name,
             .path = theirs ? "" : path,
             .arguments = arguments(path, 3)},
            0.01);
  }
  struct Desktop {
    AppIdentity app;
    std::string path;
    int processes;
    double cores;
  };
  const Desktop desktops[] = {
      {identity("firefox", "Firefox", {"Network", "WebBrowser"}), "/usr/lib/firefox/firefox", 30,
       0.02},
      {identity("google-chrome", "Google Chrome", {"Network", "WebBrowser"}),
       "/opt/google/chrome/chrome", 35, 0.01},
      {identity("code", "Visual Studio Code", {"Development", "IDE"}), "/usr/share/code/code", 18,
       0.02},
      {identity("slack", "Slack", {"Network", "InstantMessaging"}), "/usr/lib/slack/slack", 8,
       0.01},
      {identity("spotify", "Spotify", {"Audio", "Music", "Player"}), "/usr/share/spotify/spotify",
       6, 0.02},
      {identity("org.gnome.Terminal", "Terminal", {"GNOME", "System", "TerminalEmulator"}),
       "/usr/libexec/gnome-terminal-server", 1, 0.01},
  };
  for (const Desktop& d : desktops) {
    for (int i = 0; i < d.processes; ++i) {
      pop.add({.pid = pid++,
               .name = d.path.substr(d.path.rfind('/') + 1),
               .path = d.path,
               .arguments = arguments(d.path, 8),
               .app = d.app},
              d.cores);
    }
  }
  for (int i = 0; i < 60; ++i) {
    pop.add({.pid = pid++, .name = "bash", .path = "/usr/bin/bash", .arguments = {"bash"}}, 0);
  }
  for (int i = 0; i < 40; ++i) {
    pop.add({.pid = pid++,
             .name = "cc1plus",
             .path = "/usr/lib/gcc/x86_64-linux-gnu/12/cc1plus",
             .arguments = arguments("/usr/lib/gcc/x86_64-linux-gnu/12/cc1plus", 30)},
            0.04);
  }
  for (int i = 0; i < 30; ++i) {
    pop.add({.pid = pid++,
             .name = i % 2 ? "python3.11" : "node",
             .path = i % 2 ? "/usr/bin/python3.11" : "/usr/bin/node",
             .arguments = arguments(i % 2 ? "python3" : "node", 4)},
            0.005);
  }
  pop.add({.pid = pid++, .name = "yes", .path = "/usr/bin/yes", .arguments = {"yes"}}, 1.0);
  while (pop.processes.size() < 600) {
    const std::string name = "tool-" + std::to_string(pid);
    pop.add({.pid = pid++, .name = name, .path = "/usr/bin/" + name, .arguments = {name, "-v"}}, 0);
  }
  return pop;
}

// The reading of tick `tick`: every counter grown by its per-tick amount.
SystemSample reading(const Population& pop, int tick) {
  SystemSample s = SystemSample::at(kStart + kPeriod * tick);
  s.bootTime = kStart - 86'400;
  s.physicalMemoryBytes = 16ULL << 30;
  s.pageSize = 4096;
  s.internalPages = 2'000'000;
  s.wiredPages = 200'000;
  s.cpuBusyTicks = 100'000 + 250ULL * static_cast<std::uint64_t>(tick);
  s.cpuTotalTicks = 400'000 + 800ULL * static_cast<std::uint64_t>(tick);
  s.coreCount = 4;
  s.diskFreeBytes = 120'000'000'000;
  s.diskTotalBytes = 500'000'000'000;
  s.diskReadBytes = 1'000'000ULL * static_cast<std::uint64_t>(tick);
  s.processes = pop.processes;
  for (std::size_t i = 0; i < s.processes.size(); ++i) {
    s.processes[i].cpuTimeNanos = pop.cpuNanosPerTick[i] * static_cast<std::uint64_t>(tick);
    s.processes[i].wakeups = 20ULL * static_cast<std::uint64_t>(tick);
  }
  return s;
}

// The state one monitor keeps between ticks, with a full window behind it.
struct Monitor {
  SnapshotBuilder builder;
  SnapshotWindow window{600};
  Diagnoser diagnoser;
  Stabilizer stabilizer{30};
  int tick = 0;

  explicit Monitor(const Population& pop) {
    (void)builder.ingest(reading(pop, tick++));
    while (window.snapshots().size() < 300) step(reading(pop, tick++));
  }

  // One tick's core work, as the live model does it.
  void step(SystemSample sample) {
    std::optional<Snapshot> snapshot = builder.ingest(std::move(sample));
    if (!snapshot) return;
    if (const Snapshot* latest = window.latest()) {
      window.replaceLatest(latest->lean(diagnoser.thresholds.singleAppCores));
    }
    const std::set<Resource> unavailable = snapshot->unavailable;
    const double at = snapshot->timestamp;
    window.append(std::move(*snapshot));
    const auto raw = diagnoser.health(window);
    const auto& displayed = stabilizer.update(raw, unavailable, at);
    auto verdict = diagnoser.verdict(window, displayed);
    benchmark::DoNotOptimize(verdict->leads());
  }
};

void BM_Tick(benchmark::State& state) {
  const Population pop = population();
  Monitor monitor(pop);
  for (auto _ : state) {
    state.PauseTiming();
    SystemSample next = reading(pop, monitor.tick++);
    state.ResumeTiming();
    monitor.step(std::move(next));
  }
  state.counters["apps"] = static_cast<double>(monitor.window.latest()->apps.size());
  state.counters["snapshots"] = static_cast<double>(monitor.window.snapshots().size());
}
BENCHMARK(BM_Tick)->Unit(benchmark::kMicrosecond);

void BM_SnapshotWithGrouping(benchmark::State& state) {
  const Population pop = population();
  const SystemSample first = reading(pop, 0);
  SnapshotBuilder builder;
  std::optional<Snapshot> snapshot;
  for (auto _ : state) {
    state.PauseTiming();
    snapshot.reset();
    builder = SnapshotBuilder();
    (void)builder.ingest(first);
    SystemSample second = reading(pop, 1);
    state.ResumeTiming();
    snapshot = builder.ingest(std::move(second));
  }
}
BENCHMARK(BM_SnapshotWithGrouping)->Unit(benchmark::kMicrosecond);

void BM_HealthAndVerdict(benchmark::State& state) {
  const Population pop = population();
  Monitor monitor(pop);
  for (auto _ : state) {
    const auto raw = monitor.diagnoser.health(monitor.window);
    const auto& displayed = monitor.stabilizer.update(raw, {}, monitor.window.latest()->timestamp);
    benchmark::DoNotOptimize(monitor.diagnoser.verdict(monitor.window, displayed));
  }
}
BENCHMARK(BM_HealthAndVerdict)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace pellwin
