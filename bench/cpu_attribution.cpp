// How much of the machine's CPU the app lines account for: readings every 2 s, as the live
// model takes them while a window is open, summed over windows of 20 s. Prints, per window,
// the CPU the "cpu" line counts outside the kernel (user + nice + system ticks, less the
// kernel threads), the app lines' sum (kernel threads aside), their ratio, and the busiest
// lines. Run it beside a workload: bench/cpu_attribution.sh starts the workloads.
// Usage: cpu_attribution [window seconds] [windows] [period seconds]
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "app/system_roots.h"
#include "core/monitor/snapshot_builder.h"
#include "probe/proc_file.h"
#include "probe/system/system_reader.h"

namespace pellwin {
namespace {

// The "cpu" line of /proc/stat: user, nice, system, idle, iowait, irq, softirq, steal.
struct Ticks {
  std::uint64_t outsideKernel = 0;  // user + nice + system
  std::uint64_t interrupts = 0;     // irq + softirq
  std::uint64_t steal = 0;
};

Ticks machineTicks(const std::string& procRoot) {
  const std::string text = readTextFile(procRoot + "/stat").value_or("");
  std::vector<std::uint64_t> fields;
  const char* at = text.data() + 3;  // after "cpu"
  const char* end = text.data() + text.find('\n');
  while (at < end) {
    while (at < end && *at == ' ') ++at;
    std::uint64_t value = 0;
    const auto [next, error] = std::from_chars(at, end, value);
    if (error != std::errc()) break;
    fields.push_back(value);
    at = next;
  }
  fields.resize(10, 0);
  return Ticks{.outsideKernel = fields[0] + fields[1] + fields[2],
               .interrupts = fields[5] + fields[6],
               .steal = fields[7]};
}

// Kernel threads' CPU seconds between two readings, rated as the snapshot builder rates.
double kernelThreadSeconds(const SystemSample& older, const SystemSample& newer) {
  std::map<std::int32_t, const ProcessSample*> before;
  for (const auto& p : older.processes) before.emplace(p.pid, &p);
  double seconds = 0;
  for (const auto& p : newer.processes) {
    const auto found = before.find(p.pid);
    if (!p.kernelThread || found == before.end() || found->second->startTime != p.startTime) {
      continue;
    }
    if (p.cpuTimeNanos > found->second->cpuTimeNanos) {
      seconds += static_cast<double>(p.cpuTimeNanos - found->second->cpuTimeNanos) / 1e9;
    }
  }
  return seconds;
}

double now() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

double argument(int argc, char** argv, int index, double fallback) {
  return argc > index ? std::stod(argv[index]) : fallback;
}

int run(int argc, char** argv) {
  const double windowSeconds = argument(argc, argv, 1, 20);
  const int windows = static_cast<int>(argument(argc, argv, 2, 5));
  const double period = argument(argc, argv, 3, 2);
  const Environment environment;
  const auto hz = static_cast<double>(::sysconf(_SC_CLK_TCK));
  SystemReader reader(systemReaderRoots(environment));
  SnapshotBuilder builder;

  SystemSample previous = reader.read();
  (void)builder.ingest(previous);
  Ticks before = machineTicks(environment.procRoot);
  for (int window = 1; window <= windows; ++window) {
    const double start = now();
    double lines = 0, kernelThreads = 0;
    std::map<std::string, double> byLine;
    while (now() - start < windowSeconds - 0.01) {
      std::this_thread::sleep_for(std::chrono::duration<double>(period));
      SystemSample sample = reader.read();
      const double threads = kernelThreadSeconds(previous, sample);
      previous = sample;
      const auto snapshot = builder.ingest(std::move(sample));
      if (!snapshot) continue;
      kernelThreads += threads;
      for (const AppUsage& app : snapshot->apps) {
        lines += app.cpuCores * snapshot->interval;
        byLine[app.name] += app.cpuCores * snapshot->interval;
      }
    }
    const Ticks after = machineTicks(environment.procRoot);
    const double outside = static_cast<double>(after.outsideKernel - before.outsideKernel) / hz;
    const double interrupts = static_cast<double>(after.interrupts - before.interrupts) / hz;
    const double steal = static_cast<double>(after.steal - before.steal) / hz;
    before = after;
    const double counted = outside - kernelThreads;
    const double shown = lines - kernelThreads;
    std::printf(
        "window %d: cpu outside the kernel %.2f core-s, app lines %.2f core-s: %.1f %% "
        "(kernel threads %.2f, irq+softirq %.2f, steal %.2f; with irq+softirq counted: "
        "%.1f %%)\n",
        window, counted, shown, 100 * shown / counted, kernelThreads, interrupts, steal,
        100 * shown / (counted + interrupts));
    std::vector<std::pair<double, std::string>> top;
    for (const auto& [name, seconds] : byLine) top.emplace_back(seconds, name);
    std::sort(top.rbegin(), top.rend());
    std::printf("  busiest:");
    for (std::size_t i = 0; i < top.size() && i < 6; ++i) {
      std::printf(" %s %.1f %%;", top[i].second.c_str(), 100 * top[i].first / counted);
    }
    std::printf("\n");
    std::fflush(stdout);
  }
  return 0;
}

}  // namespace
}  // namespace pellwin

int main(int argc, char** argv) { return pellwin::run(argc, argv); }
