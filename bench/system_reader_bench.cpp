// One SystemReader::read() of this machine with about 500 extra idle processes alive, beside
// the floor: listing the proc root and reading stat, status and io of every process, nothing
// else.
// Also: top -b's CPU time per refresh over the same processes, and the reader's heap over 1,000
// readings while processes come and go.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <vector>

#include "app/system_roots.h"
#include "bench/idle_children.h"
#include "probe/system/system_reader.h"

extern char** environ;

namespace pellwin {
namespace {

using Children = bench::IdleChildren;
Children& children() { return bench::idleChildren(); }

SystemReader::Roots roots() { return systemReaderRoots(Environment{}); }

int processCount() {
  int count = 0;
  DIR* dir = ::opendir(Environment{}.procRoot.c_str());
  while (const dirent* entry = ::readdir(dir))
    count += entry->d_name[0] >= '1' && entry->d_name[0] <= '9';
  ::closedir(dir);
  return count;
}

double wallClock() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// Readings back to back, on a clock that moves by the timer's period (2 s while a window is
// open, 5 s otherwise) between them, so every rule that counts time (disk space every 30 s,
// status and io of idle processes every 10 s) runs at its real pace. A period of 10 s or more
// reads every process in full: the cost when every process ran since the last reading.
void BM_SystemReaderRead(benchmark::State& state) {
  children();
  const double period = static_cast<double>(state.range(0));
  double now = wallClock();
  SystemReader reader(roots(), SystemReader::Options{.clock = [&] { return now += period; }});
  benchmark::DoNotOptimize(reader.read());
  std::size_t processes = 0;
  for (auto _ : state) {
    const SystemSample sample = reader.read();
    processes = sample.processes.size();
    benchmark::DoNotOptimize(sample);
  }
  state.counters["processes"] = static_cast<double>(processes);
}
BENCHMARK(BM_SystemReaderRead)
    ->ArgName("period_s")
    ->Arg(2)
    ->Arg(5)
    ->Arg(10)
    ->Unit(benchmark::kMillisecond);

// The least any reader must do: list the processes, then open, read and close their stat,
// status and io files once each.
void BM_FloorStatStatusIO(benchmark::State& state) {
  children();
  char buffer[16384];
  char path[300];
  int processes = 0;
  for (auto _ : state) {
    processes = 0;
    DIR* dir = ::opendir(Environment{}.procRoot.c_str());
    const int procFd = ::dirfd(dir);
    while (const dirent* entry = ::readdir(dir)) {
      if (entry->d_name[0] < '1' || entry->d_name[0] > '9') continue;
      ++processes;
      for (const char* file : {"stat", "status", "io"}) {
        std::snprintf(path, sizeof path, "%s/%s", entry->d_name, file);
        const int fd = ::openat(procFd, path, O_RDONLY | O_CLOEXEC);
        if (fd < 0) continue;
        benchmark::DoNotOptimize(::read(fd, buffer, sizeof buffer));
        ::close(fd);
      }
    }
    ::closedir(dir);
  }
  state.counters["processes"] = processes;
}
BENCHMARK(BM_FloorStatStatusIO)->Unit(benchmark::kMillisecond);

// CPU time (user + system) of one run of top in batch mode.
double topCPUSeconds(int refreshes) {
  const std::string count = std::to_string(refreshes);
  const char* argv[] = {"top", "-b", "-d", "0.2", "-n", count.c_str(), nullptr};
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int failed =
      ::posix_spawnp(&pid, "top", &actions, nullptr, const_cast<char**>(argv), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) return -1;
  int status = 0;
  rusage usage{};
  ::wait4(pid, &status, 0, &usage);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1;
  auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// top's CPU time per refresh: the difference between a long and a short run, so start-up and
// the first pass (which reads every process's identity) cancel out.
void BM_TopPerRefresh(benchmark::State& state) {
  children();
  constexpr int shortRun = 2, longRun = 12;
  for (auto _ : state) {
    const double shortCPU = topCPUSeconds(shortRun);
    const double longCPU = topCPUSeconds(longRun);
    if (shortCPU < 0 || longCPU < 0) {
      state.SkipWithError("top -b could not run");
      return;
    }
    state.SetIterationTime((longCPU - shortCPU) / (longRun - shortRun));
  }
  state.counters["processes"] = processCount();
}
BENCHMARK(BM_TopPerRefresh)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

// 1,000 readings while one process ends and another starts before each: the heap in use after
// the first 100 readings, and its growth over the next 500 and the 500 after those.
void BM_HeapOver1000Readings(benchmark::State& state) {
  Children& alive = children();
  for (auto _ : state) {
    SystemReader reader(roots());
    auto churn = [&](int readings) {
      for (int i = 0; i < readings; ++i) {
        alive.endOldest();
        alive.start();
        benchmark::DoNotOptimize(reader.read());
      }
      return static_cast<double>(::mallinfo2().uordblks) / 1024;
    };
    const double warm = churn(100);
    const double middle = churn(500);
    const double end = churn(500);
    state.counters["heap_KB"] = warm;
    state.counters["growth_first_500_KB"] = middle - warm;
    state.counters["growth_last_500_KB"] = end - middle;
  }
}
BENCHMARK(BM_HeapOver1000Readings)->Unit(benchmark::kSecond)->Iterations(1);

}  // namespace
}  // namespace pellwin
