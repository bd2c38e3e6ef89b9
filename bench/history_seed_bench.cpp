// The whole "--seed-history" run: 16,740 moments through window, diagnoser, stabilizer, alert
// policy and rollup, each batch written in its own transaction, then three weeks of day rows.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <sstream>

#include "app/commands/seed_history.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

void BM_SeedHistory(benchmark::State& state) {
  testing::ScratchFolder scratch;
  const auto path = scratch / "seed.sqlite";
  const double now = 1'717'430'400;
  for (auto _ : state) {
    std::ostringstream out, err;
    if (SeedHistory::run(path, scratch / "real.sqlite", now, Calendar(), out, err) != 0) {
      state.SkipWithError(err.str().c_str());
      return;
    }
  }
  state.counters["file_bytes"] = static_cast<double>(std::filesystem::file_size(path));
}
BENCHMARK(BM_SeedHistory)->Unit(benchmark::kSecond)->Iterations(2)->UseRealTime();

}  // namespace
}  // namespace pellwin
