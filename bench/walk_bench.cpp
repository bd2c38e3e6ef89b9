// The space map's walk against `du -sx` and `ncdu -0 -x -o /dev/null` on one generated tree of
// about 203,000 entries, with a warm cache, in one run; and the peak memory of each program
// scanning it (`tovrin --check-storage`, du, ncdu), from the kernel's account of the child.
// The tree is made in a temporary folder (or $TOVRIN_BENCH_DIR) and removed at the end.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "probe/disk_scanner.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;

constexpr int kTop = 20;         // top-level folders
constexpr int kMiddle = 10;      // folders in each
constexpr int kLeaves = 10;      // folders in each of those
constexpr int kFilesPerLeaf = 100;

void writeFile(const std::string& path, std::size_t bytes) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) std::abort();
  if (bytes > 0) {
    const std::string data(bytes, 'x');
    if (::write(fd, data.data(), data.size()) != static_cast<ssize_t>(data.size())) std::abort();
  }
  ::close(fd);
}

// 2,220 folders holding 200,000 files (one in ten with data, some of 20 KB, one large file per
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
};

// Runs a program with its output thrown away; its peak resident memory from wait4.
ChildRun runChild(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int spawned = ::posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) return {};
  int status = 0;
  struct rusage usage {};
  if (::wait4(child, &status, 0, &usage) != child) return {};
  return {.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0,
          .peakMB = static_cast<double>(usage.ru_maxrss) / 1024.0};
}

std::string tovrinProgram() {
  std::error_code error;
  const fs::path self = fs::read_symlink("/proc/self/exe", error);
  return (self.parent_path().parent_path() / "app" / "tovrin").string();
}

void benchmarkChild(benchmark::State& state, const std::vector<std::string>& arguments) {
  double peak = 0;
  for (auto _ : state) {
    const ChildRun run = runChild(arguments);
    if (!run.ok) {
      state.SkipWithError(("could not run " + arguments[0]).c_str());
      return;
    }
    peak = std::max(peak, run.peakMB);
  }
  state.counters["peak_MB"] = peak;
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

BENCHMARK(BM_WarmUp)->Iterations(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TovrinWalk)->MinTime(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TovrinCheckStorage)->MinTime(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DuSx)->MinTime(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_NcduExport)->MinTime(3)->Unit(benchmark::kMillisecond)->UseRealTime();
