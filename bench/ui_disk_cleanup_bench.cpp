// The Disk cleanup screen over the scan of a 460,000-entry tree ($TOVRIN_WALK_TREE, else
// /var/tmp/tovrin-walk-460k; make it with bench/make_walk_tree.py). The scan cache is made by a
// real scan into a scratch data folder, never the user's.
//
// OpenWithCache: from making and showing the screen, with its real model reading that cache,
//   until the rings are painted with the tree. One open per repetition; see the median and max.
// ScanStall: the screen open on that cache while a scan of the same tree runs, started from the
//   model as the "Scan a folder…" button does, until the finished map is painted. A 5 ms timer
//   on the UI thread records every gap between its ticks; `max_gap_ms` and `p99_gap_ms` are the
//   largest and the 99th percentile (5 ms when nothing stalls), `ticks` how many there were,
//   and `max_busy_ms` the most CPU time the UI thread itself spent within one gap.
// IdleStall: the same timer on the open screen with nothing running, the machine's own gaps.
//
// Malloc keeps the tray app's arenas (`limitMallocArenas`), which the UI thread shares with the
// scan's reading threads.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/models/space_map.h"
#include "app/removal_guards.h"
#include "testing/scratch_folder.h"
#include "ui/disk_cleanup_screen.h"
#include "ui/malloc_arenas.h"
#include "ui/post_to.h"

namespace pellwin {
namespace {

QApplication& application() {
  ui::limitMallocArenas();
  static int argc = 1;
  static char name[] = "ui_disk_cleanup_bench";
  static char* argv[] = {name, nullptr};
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static QApplication app(argc, argv);
  return app;
}

std::string walkTree() {
  const char* chosen = std::getenv("TOVRIN_WALK_TREE");
  return chosen != nullptr ? chosen : "/var/tmp/tovrin-walk-460k";
}

// Sees the rings' paint events: `painted` turns true once they paint arcs of a tree other than
// `stale`. The paint itself runs right after the event passes here, in the same dispatch.
class PaintWatch : public QObject {
 public:
  PaintWatch(ui::DiskCleanupScreen& screen, const SizeNode* stale)
      : QObject(&screen), screen_(screen), stale_(stale) {
    screen.rings()->installEventFilter(this);
  }
  [[nodiscard]] bool painted() const { return painted_; }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    const SizeNode* tree = screen_.model().tree();
    if (event->type() == QEvent::Paint && !screen_.rings()->arcs().empty() && tree != nullptr &&
        tree != stale_ && screen_.model().phase() == SpaceMapModel::Phase::ready)
      painted_ = true;
    return false;
  }

 private:
  ui::DiskCleanupScreen& screen_;
  const SizeNode* stale_;
  bool painted_ = false;
};

// A scratch home and data folder holding the cache of one real scan of the tree.
struct CachedTree {
  testing::ScratchFolder scratch;
  Environment environment{.home = (scratch / "home").string(),
                          .xdgDataHome = (scratch / "data").string()};
  std::string tree = walkTree();
  std::int64_t items = 0;

  CachedTree() {
    std::filesystem::create_directories(environment.home);
    QObject owner;
    SpaceMapModel model(environment.home, removalGuards(environment),
                        spaceMapServices(environment, ui::postTo(&owner)));
    model.scanFolder(tree);
    while (model.phase() != SpaceMapModel::Phase::ready)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (model.tree() != nullptr) model.tree()->forEach([&](const SizeNode&) { ++items; });
  }
  [[nodiscard]] bool ok() const {
    return std::filesystem::exists(spaceMapCache(environment).path());
  }
  [[nodiscard]] std::unique_ptr<ui::DiskCleanupScreen> screen() const {
    auto made = std::make_unique<ui::DiskCleanupScreen>(
        environment.home, removalGuards(environment), spaceMapServices(environment, nullptr));
    made->resize(1200, 760);
    return made;
  }
};

const CachedTree* cachedTree(benchmark::State& state) {
  application();
  if (!std::filesystem::is_directory(walkTree())) {
    state.SkipWithError("no tree to scan: make it with bench/make_walk_tree.py");
    return nullptr;
  }
  static const CachedTree cached;
  if (!cached.ok()) state.SkipWithError("the scan saved no cache");
  return cached.ok() ? &cached : nullptr;
}

void waitFor(const PaintWatch& watch) {
  while (!watch.painted()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void OpenWithCache(benchmark::State& state) {
  const CachedTree* cached = cachedTree(state);
  if (cached == nullptr) return;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    auto screen = cached->screen();
    const PaintWatch watch(*screen, nullptr);
    screen->show();
    waitFor(watch);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(took.count());
    if (!screen->model().isFromCache()) state.SkipWithError("the map did not come from the cache");
  }
  state.counters["kept_nodes"] = static_cast<double>(cached->items);
  state.counters["cache_bytes"] =
      static_cast<double>(std::filesystem::file_size(spaceMapCache(cached->environment).path()));
}
BENCHMARK(OpenWithCache)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(9)
    ->ComputeStatistics("max", [](const std::vector<double>& v) {
      return *std::ranges::max_element(v);
    });

double threadCpuMs() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// The gaps between a 5 ms timer's ticks, in milliseconds, and the UI thread's own CPU time in
// each: a long gap with little CPU time is the thread waiting for a processor, not working.
class TickGaps : public QObject {
 public:
  TickGaps() : timer_(this), cpuAtTick_(threadCpuMs()) {
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(5);
    QObject::connect(&timer_, &QTimer::timeout, this, [this] {
      gaps_.push_back(static_cast<double>(clock_.nsecsElapsed()) / 1e6);
      const double cpu = threadCpuMs();
      busy_.push_back(cpu - cpuAtTick_);
      cpuAtTick_ = cpu;
      clock_.restart();
    });
    clock_.start();
    timer_.start();
  }
  void report(benchmark::State& state) const {
    if (gaps_.empty()) return;
    std::vector<double> gaps = gaps_;
    std::ranges::sort(gaps);
    state.counters["ticks"] = static_cast<double>(gaps.size());
    state.counters["max_gap_ms"] = gaps.back();
    state.counters["p99_gap_ms"] = gaps[gaps.size() * 99 / 100];
    state.counters["max_busy_ms"] = *std::ranges::max_element(busy_);
  }

 private:
  QTimer timer_;
  QElapsedTimer clock_;
  double cpuAtTick_;
  std::vector<double> gaps_;
  std::vector<double> busy_;
};

// The screen shown, once its rings are painted with the cached tree.
std::unique_ptr<ui::DiskCleanupScreen> openedScreen(const CachedTree& cached) {
  auto screen = cached.screen();
  const PaintWatch opened(*screen, nullptr);
  screen->show();
  waitFor(opened);
  return screen;
}

void ScanStall(benchmark::State& state) {
  const CachedTree* cached = cachedTree(state);
  if (cached == nullptr) return;
  const auto screen = openedScreen(*cached);
  for (auto _ : state) {
    const PaintWatch rescanned(*screen, screen->model().tree());
    const TickGaps ticks;
    screen->model().scanFolder(cached->tree);
    waitFor(rescanned);
    ticks.report(state);
  }
}
BENCHMARK(ScanStall)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(5);

// The peer: the same open screen and timer for 2.5 s with nothing running, so the gaps the
// machine's other load causes can be told from the scan's.
void IdleStall(benchmark::State& state) {
  const CachedTree* cached = cachedTree(state);
  if (cached == nullptr) return;
  const auto screen = openedScreen(*cached);
  for (auto _ : state) {
    const TickGaps ticks;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 2500) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    ticks.report(state);
  }
}
BENCHMARK(IdleStall)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

}  // namespace
}  // namespace pellwin
