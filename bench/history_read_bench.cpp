// What the history screens cost on a full file: one metric's chart read and laid out for each
// range (and the 30-day chart of every metric, for comparison), and the weekly report read and
// summed, on 30 days of a machine that was on all day (see testing/month_history.h). The file is
// generated once per run; its size is reported.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "app/models/report_model.h"
#include "core/history/chart_series.h"
#include "testing/month_history.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

constexpr double kEnd = 1'717'430'400;  // Mon 3 June 2024 16:00 UTC

struct MonthFile {
  testing::ScratchFolder scratch;
  std::filesystem::path path = scratch / "history.sqlite";
  std::optional<HistoryStore> store;
  std::string error;
};

// Generated on first use and kept for the whole run.
MonthFile& monthFile() {
  static const std::unique_ptr<MonthFile> file = [] {
    auto made = std::make_unique<MonthFile>();
    auto opened = HistoryStore::open(made->path);
    if (!opened) {
      made->error = description(opened.error());
      return made;
    }
    if (auto written = testing::writeMonth(*opened, kEnd, Calendar()); !written) {
      made->error = written.error().description();
      return made;
    }
    made->store.emplace(std::move(*opened));
    return made;
  }();
  return *file;
}

void addFileSize(benchmark::State& state, const MonthFile& file) {
  std::error_code ignored;
  double bytes = static_cast<double>(std::filesystem::file_size(file.path, ignored));
  const auto wal = std::filesystem::path(file.path.string() + "-wal");
  if (std::filesystem::exists(wal, ignored)) {
    bytes += static_cast<double>(std::filesystem::file_size(wal, ignored));
  }
  state.counters["file_MB"] = bytes / 1e6;
}

// What the History screen reads on its thread: one metric's chart (memory used, the first one
// shown) over the range given as the argument, read and laid out.
void BM_Chart(benchmark::State& state) {
  MonthFile& file = monthFile();
  if (!file.store) {
    state.SkipWithError(file.error.c_str());
    return;
  }
  const auto range = static_cast<HistoryRange>(state.range(0));
  constexpr HistoryMetric metric = HistoryMetric::memoryUsed;
  std::size_t points = 0;
  for (auto _ : state) {
    auto read = file.store->chartPoints(range, kEnd, std::span(&metric, 1));
    if (!read) {
      state.SkipWithError("read failed");
      return;
    }
    const auto series = chartSeries(*read, metric, range, kEnd);
    points = read->size();
    benchmark::DoNotOptimize(series);
  }
  state.SetLabel(std::string(rawValue(range)));
  state.counters["points"] = static_cast<double>(points);
  addFileSize(state, file);
}
BENCHMARK(BM_Chart)
    ->DenseRange(0, static_cast<int>(HistoryRange::month))
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The 30-day chart of every metric at once, as the screen read it before it read one.
void BM_MonthChartEveryMetric(benchmark::State& state) {
  MonthFile& file = monthFile();
  if (!file.store) {
    state.SkipWithError(file.error.c_str());
    return;
  }
  std::size_t points = 0;
  for (auto _ : state) {
    auto read = file.store->chartPoints(HistoryRange::month, kEnd);
    if (!read) {
      state.SkipWithError("read failed");
      return;
    }
    const auto series = chartSeries(*read, HistoryRange::month, kEnd);
    points = read->size();
    benchmark::DoNotOptimize(series);
  }
  state.counters["points"] = static_cast<double>(points);
  addFileSize(state, file);
}
BENCHMARK(BM_MonthChartEveryMetric)->Unit(benchmark::kMillisecond)->UseRealTime();

// The two halves of the chart apart: the read alone, and the layout of rows already read.
void BM_MonthChartReadOnly(benchmark::State& state) {
  MonthFile& file = monthFile();
  if (!file.store) {
    state.SkipWithError(file.error.c_str());
    return;
  }
  for (auto _ : state) {
    auto read = file.store->points(HistoryRange::month, kEnd);
    benchmark::DoNotOptimize(read);
  }
}
BENCHMARK(BM_MonthChartReadOnly)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MonthChartLayoutOnly(benchmark::State& state) {
  MonthFile& file = monthFile();
  if (!file.store) {
    state.SkipWithError(file.error.c_str());
    return;
  }
  const auto read = file.store->points(HistoryRange::month, kEnd);
  if (!read) {
    state.SkipWithError("read failed");
    return;
  }
  for (auto _ : state) {
    const auto series = chartSeries(*read, HistoryRange::month, kEnd);
    benchmark::DoNotOptimize(series);
  }
}
BENCHMARK(BM_MonthChartLayoutOnly)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WeeklyReport(benchmark::State& state) {
  MonthFile& file = monthFile();
  if (!file.store) {
    state.SkipWithError(file.error.c_str());
    return;
  }
  for (auto _ : state) {
    auto report = readWeeklyReport(*file.store, kEnd, Calendar());
    if (!report) {
      state.SkipWithError("read failed");
      return;
    }
    benchmark::DoNotOptimize(report);
  }
  addFileSize(state, file);
}
BENCHMARK(BM_WeeklyReport)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace pellwin
