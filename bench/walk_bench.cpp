// The space map's walk against `du -sx` and `ncdu -0 -x -o /dev/null` on one generated tree of
// about 203,000 entries, with a warm cache, in one run; and the peak memory of each program
// scanning it (`tovrin --check-storage`, du, ncdu).
// The tree is made in a temporary folder (or $TOVRIN_BENCH_DIR) and removed at the end.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "probe/files/disk_scanner.h"

namespace {

namespace fs = std::filesystem;

constexpr int kTop = 20;     // top-level folders
constexpr int kMiddle = 10;  // folders in each
constexpr int kLeaves = 10;  // folders in each of those
constexpr int kFilesPerLeaf = 100;

void writeFile(const std::string& path, std::size_t bytes) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) std::abort();
  // Blocks are allocated without writing data, which keeps making the tree quick.
  if (bytes > 0 && ::posix_fallocate(fd, 0, static_cast<off_t>(bytes)) != 0) std::abort();
  ::close(fd);
}

// 2,220 folders holding 200,000 files (one in ten with blocks, some of 20 KB, one large file per
// hundred folders), plus 500 hard links and 500 symbolic links.
class BenchTree {
 public:
  BenchTree() {
    std::string base = std::getenv("TOVRIN_BENCH_DIR") ? std::getenv("TOVRIN_BENCH_DIR")
                                                       : fs::temp_directory_path().string();
    std::string pattern = base + "/tovrin-walk-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    root_ = pattern;
    int leaf = 0;
    for (int a = 0; a < kTop; ++a) {
      for (int b = 0; b < kMiddle; ++b) {
        for (int c = 0; c < kLeaves; ++c, ++leaf) {
          const std::string folder = root_ + "/top" + std::to_string(a) + "/mid" +
                                     std::to_string(b) + "/leaf" + std::to_string(c);
          fs::create_directories(folder);
          for (int f = 0; f < kFilesPerLeaf; ++f) {
            const std::size_t bytes = f % 50 == 0 ? 20'000 : (f % 10 == 0 ? 100 : 0);
            writeFile(folder + "/file-" + std::to_string(f) + ".txt", bytes);
          }
          if (leaf % 100 == 0) writeFile(folder + "/large.bin", 2'000'000);
          if (leaf % 4 == 0) {
            fs::create_hard_link(folder + "/file-0.txt", folder + "/hard-link");
            fs::create_symlink(folder + "/file-1.txt", folder + "/soft-link");
          }
        }
      }
    }
  }
  ~BenchTree() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
  }
  [[nodiscard]] const std::string& root() const { return root_; }

 private:
  std::string root_;
};

const BenchTree& tree() {
  static const BenchTree made;
  return made;
}

struct ChildRun {
  bool ok = false;
  double peakMB = 0;
  double cpuSeconds = 0;  // user and system time of the child
};

// The child's peak resident memory, read from /proc as it is about to exit. The kernel's own
// account (wait4's ru_maxrss) would not do: it counts the memory of the process that started
// the child, before exec, which here is this benchmark with its tree of names.
double peakOfStoppedChild(pid_t child) {
  std::ifstream status("/proc/" + std::to_string(child) + "/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with("VmHWM:")) {
      std::istringstream fields(line.substr(6));
      double kilobytes = 0;
      fields >> kilobytes;
      return kilobytes / 1024.0;
    }
  }
  return 0;
}

// Runs a program with its output thrown away, traced only to be stopped once at its exit.
ChildRun runChild(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const pid_t child = ::fork();
  if (child < 0) return {};
  if (child == 0) {
    const int devNull = ::open("/dev/null", O_WRONLY);
    ::dup2(devNull, STDOUT_FILENO);
    ::dup2(devNull, STDERR_FILENO);
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::execvp(argv[0], argv.data());
    ::_exit(127);
  }
  ChildRun run;
  int status = 0;
  // Stopped at exec: from here on, stop again only when it is about to exit.
  if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return {};
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, reinterpret_cast<void*>(PTRACE_O_TRACEEXIT));
  ::ptrace(PTRACE_CONT, child, nullptr, nullptr);
  struct rusage usage {};
  while (::wait4(child, &status, 0, &usage) == child) {
    if (WIFEXITED(status)) {
      run.ok = WEXITSTATUS(status) == 0;
      run.cpuSeconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                       static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
      break;
    }
    if (WIFSIGNALED(status)) break;
    int signal = WSTOPSIG(status);
    if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) {
      run.peakMB = peakOfStoppedChild(child);
      signal = 0;
    }
    ::ptrace(PTRACE_CONT, child, nullptr, reinterpret_cast<void*>(static_cast<long>(signal)));
  }
  return run;
}

std::string tovrinProgram() {
  std::error_code error;
  const fs::path self = fs::read_symlink("/proc/self/exe", error);
  return (self.parent_path().parent_path() / "tovrin").string();
}

// Wall time is what the user waits; the child's processor time is reported beside it because
// it holds steady on a busy machine.
void benchmarkChild(benchmark::State& state, const std::vector<std::string>& arguments) {
  double peak = 0;
  double cpu = 0;
  for (auto _ : state) {
    const ChildRun run = runChild(arguments);
    if (!run.ok) {
      state.SkipWithError(("could not run " + arguments[0]).c_str());
      return;
    }
    peak = std::max(peak, run.peakMB);
    cpu += run.cpuSeconds;
  }
  state.counters["peak_MB"] = peak;
  state.counters["child_cpu_ms"] =
      benchmark::Counter(cpu * 1000, benchmark::Counter::kAvgIterations);
}

void BM_TovrinWalk(benchmark::State& state) {
  const pellwin::DiskScanner scanner("/nonexistent-home");
  std::uint64_t bytes = 0;
  for (auto _ : state) {
    auto result = scanner.scan(tree().root(), std::nullopt, {});
    if (!result) {
      state.SkipWithError("scan failed");
      return;
    }
    bytes = result->tree.bytes;
    benchmark::DoNotOptimize(bytes);
  }
  state.counters["tree_MB"] = static_cast<double>(bytes) / 1e6;
}

void BM_TovrinCheckStorage(benchmark::State& state) {
  benchmarkChild(state, {tovrinProgram(), "--check-storage", tree().root(), "--top", "0"});
}

void BM_DuSx(benchmark::State& state) { benchmarkChild(state, {"du", "-sx", tree().root()}); }

void BM_NcduExport(benchmark::State& state) {
  benchmarkChild(state, {"ncdu", "-0", "-x", "-o", "/dev/null", tree().root()});
}

// Builds the tree and warms the cache before the first measurement.
void BM_WarmUp(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(runChild({"du", "-sx", tree().root()}).ok);
}

}  // namespace

// Each is repeated, and the fastest repetition is reported beside the mean: on a shared
// machine the minimum is the figure least disturbed by other work.
double fastest(const std::vector<double>& values) {
  return *std::min_element(values.begin(), values.end());
}

BENCHMARK(BM_WarmUp)->Iterations(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TovrinWalk)
    ->Iterations(3)
    ->Repetitions(3)
    ->ComputeStatistics("min", fastest)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_TovrinCheckStorage)
    ->Iterations(3)
    ->Repetitions(3)
    ->ComputeStatistics("min", fastest)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_DuSx)
    ->Iterations(3)
    ->Repetitions(3)
    ->ComputeStatistics("min", fastest)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_NcduExport)
    ->Iterations(3)
    ->Repetitions(3)
    ->ComputeStatistics("min", fastest)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
