// One HistoryStore::write of the batches the recorder writes in normal running: a sample row
// alone (most ticks), and the batch of a minute's end (a sample, the minute row, ten ranking
// rows and the five day rows). Each iteration writes new keys into a growing file.
#include <benchmark/benchmark.h>

#include "core/history/rollup_output.h"
#include "store/history_store.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

SampleRow sample(double time) {
  SampleRow row{.time = time, .span = 5};
  for (HistoryMetric metric : allHistoryMetrics) row.values[metric] = 1e9 + time;
  for (Resource resource : allResources) row.health[resource] = Health::ok;
  return row;
}

RollupOutput minuteEnd(double time) {
  RollupOutput output{.samples = {sample(time)}};
  MinuteRow minute{.minute = time - 60, .covered = 60};
  for (HistoryMetric metric : allHistoryMetrics) {
    minute.stats[metric] = Stat{.average = time, .low = time - 1, .high = time + 1};
  }
  for (Resource resource : allResources) minute.worst[resource] = Health::strain;
  output.minutes.push_back(minute);
  const char* names[] = {"Google Chrome", "Slack", "Claude", "OrbStack", "mds_stores"};
  for (AppRank rank : {AppRank::cpu, AppRank::memory}) {
    for (int position = 1; position <= 5; ++position) {
      const std::string name = names[position - 1];
      output.apps.push_back(MinuteAppRow{.minute = time - 60,
                                         .rank = rank,
                                         .position = position,
                                         .appID = "app:/Applications/" + name + ".app",
                                         .name = name,
                                         .bundleIdentifier = "com.example." + name,
                                         .value = 1e9 / position});
    }
  }
  for (Resource resource : allResources) {
    output.days.push_back(DayRow{.day = "2024-06-03",
                                 .resource = resource,
                                 .strainSeconds = time,
                                 .problemSeconds = 60,
                                 .causes = {{.appID = "app:/Applications/Google Chrome.app",
                                             .name = "Google Chrome",
                                             .seconds = 60}}});
  }
  return output;
}

template <RollupOutput (*Batch)(double)>
void BM_Write(benchmark::State& state) {
  testing::ScratchFolder scratch;
  auto store = HistoryStore::open(scratch / "history.sqlite");
  if (!store) {
    state.SkipWithError(description(store.error()).c_str());
    return;
  }
  double time = 1'717'416'000;
  RollupOutput batch = Batch(time);
  for (auto _ : state) {
    // New keys each time, as in normal running; moving the times costs next to nothing.
    time += 60;
    for (SampleRow& row : batch.samples) row.time = time;
    for (MinuteRow& row : batch.minutes) row.minute = time - 60;
    for (MinuteAppRow& row : batch.apps) row.minute = time - 60;
    if (!store->write(batch)) {
      state.SkipWithError("write failed");
      return;
    }
  }
}

RollupOutput sampleOnly(double time) { return RollupOutput{.samples = {sample(time)}}; }

BENCHMARK_TEMPLATE(BM_Write, sampleOnly)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK_TEMPLATE(BM_Write, minuteEnd)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace pellwin
