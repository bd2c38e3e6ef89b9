// The process CPU time of one live-model tick of this machine with about 500 extra idle processes (read, snapshot,
// judgement, notification check, the hand-off to a real history recorder and the publish),
// beside SystemReader::read() alone at the same pace, measured the same way; and the heap a full 600-second window
// at the 2-second period holds.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <time.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <vector>

#include "app/models/history_recorder.h"
#include "app/models/live_model.h"
#include "app/system_calendar.h"
#include "app/system_roots.h"
#include "bench/idle_children.h"
#include "probe/system/system_reader.h"

namespace pellwin {
namespace {

constexpr double kPeriod = LiveModel::visiblePeriod;

// Fires only when the benchmark says so.
class ManualTicker final : public Ticker {
 public:
  std::unique_ptr<RepeatingTimer> repeat(double, double, std::function<void()> fire) override {
    fire_ = std::move(fire);
    return std::make_unique<RepeatingTimer>();
  }
  void fire() const { fire_(); }

 private:
  std::function<void()> fire_;
};

// The owner's thread of the benchmark: what the models post runs when `drain` is called.
class Owner {
 public:
  std::function<void(std::function<void()>)> poster() {
    return [this](std::function<void()> step) {
      std::lock_guard lock(mutex_);
      steps_.push_back(std::move(step));
    };
  }
  void drain() {
    std::vector<std::function<void()>> steps;
    {
      std::lock_guard lock(mutex_);
      steps.swap(steps_);
    }
    for (auto& step : steps) step();
  }

 private:
  std::mutex mutex_;
  std::vector<std::function<void()>> steps_;
};

// CPU time of every thread of this process: the tick's cost includes the sampler's and the
// history queue's work, not only the waiting benchmark thread's.
double processCPU() {
  timespec t{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

double wallClock() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// A live model over the real reader, on a clock that moves by the visible period per reading,
// recording into a fresh history file.
struct Rig {
  std::filesystem::path file = std::filesystem::temp_directory_path() / "live_tick_bench.sqlite";
  Owner owner;
  ManualTicker ticker;
  double now = wallClock();
  SystemReader reader{systemReaderRoots(Environment{}),
                      SystemReader::Options{.clock = [this] { return now += kPeriod; }}};
  HistoryRecorder history{HistoryRecorderSetup{
      .url = file, .post = owner.poster(), .now = wallClock, .calendar = systemCalendar}};
  LiveModel model{LiveModel::Services{
      .read = [this] { return reader.read(); },
      .setting = [](std::string_view) { return std::optional<bool>{}; },
      .notify = [](std::string, std::string) {},
      .record = [this](Snapshot snapshot, std::map<Resource, Health> displayed,
                       std::map<Resource, Lead> leads, std::vector<AlertNotice> alerted) {
        history.record(std::move(snapshot), std::move(displayed), std::move(leads),
                       std::move(alerted));
      },
      .post = owner.poster(),
      .ticker = &ticker}};

  ~Rig() { std::filesystem::remove(file); }

  void tick() {
    ticker.fire();
    model.waitForSampler();
    owner.drain();
  }
};

void BM_LiveTick(benchmark::State& state) {
  bench::idleChildren();
  Rig rig;
  rig.tick();
  rig.tick();
  for (auto _ : state) {
    const double start = processCPU();
    rig.tick();
    state.SetIterationTime(processCPU() - start);
  }
  state.counters["apps"] = static_cast<double>(rig.model.state().snapshot->apps.size());
}
BENCHMARK(BM_LiveTick)->Unit(benchmark::kMillisecond)->UseManualTime();

void BM_ReadAlone(benchmark::State& state) {
  bench::idleChildren();
  double now = wallClock();
  SystemReader reader(systemReaderRoots(Environment{}),
                      SystemReader::Options{.clock = [&] { return now += kPeriod; }});
  benchmark::DoNotOptimize(reader.read());
  for (auto _ : state) {
    const double start = processCPU();
    benchmark::DoNotOptimize(reader.read());
    state.SetIterationTime(processCPU() - start);
  }
}
BENCHMARK(BM_ReadAlone)->Unit(benchmark::kMillisecond)->UseManualTime();

// The heap after the window has filled (301 ticks) less the heap after the first snapshot:
// 299 lean snapshots and one full one more, with the reader already at its steady state.
void BM_FullWindowHeap(benchmark::State& state) {
  bench::idleChildren();
  for (auto _ : state) {
    Rig rig;
    for (int i = 0; i < 2; ++i) rig.tick();
    ::malloc_trim(0);
    const double first = static_cast<double>(::mallinfo2().uordblks);
    for (int i = 0; i < 300; ++i) rig.tick();
    const double full = static_cast<double>(::mallinfo2().uordblks);
    state.counters["window_KB"] = (full - first) / 1024;
    state.counters["snapshots"] = static_cast<double>(LiveModel::windowSpan / kPeriod);
  }
}
BENCHMARK(BM_FullWindowHeap)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace pellwin
