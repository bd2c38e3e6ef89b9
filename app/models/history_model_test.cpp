#include "app/models/history_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "app/commands/seed_history.h"
#include "app/models/alerts_model.h"
#include "app/models/report_model.h"
#include "testing/owner_loop.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

using testing::OwnerLoop;
using testing::ScratchFolder;

constexpr double kNow = 1'717'430'400;  // Mon 3 June 2024 16:00 UTC
constexpr double kSeedStart = kNow - 86395;

// One seeded history for every test here: seeding runs the whole live pipeline over a day.
class SeededHistory : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    scratch_ = new ScratchFolder();
    std::ostringstream out, err;
    ASSERT_EQ(SeedHistory::run(*scratch_ / "seeded.sqlite", *scratch_ / "real.sqlite", kNow,
                               Calendar(), out, err),
              0)
        << err.str();
  }
  static void TearDownTestSuite() {
    delete scratch_;
    scratch_ = nullptr;
  }
  // A copy, so a test that writes or clears leaves the others their history.
  std::filesystem::path copy() {
    const auto path = local_ / "history.sqlite";
    std::filesystem::copy_file(*scratch_ / "seeded.sqlite", path);
    return path;
  }
  HistoryRecorderSetup setup(const std::filesystem::path& url) {
    return HistoryRecorderSetup{.url = url,
                                .post = loop_.poster(),
                                .now = [] { return kNow; },
                                .calendar = [](double) { return Calendar(); }};
  }
  HistoryModel::Setup modelSetup(HistoryRecorder& recorder) {
    return HistoryModel::Setup{.recorder = recorder,
                               .now = [] { return kNow; },
                               .calendar = [](double) { return Calendar(); },
                               .coreCount = 8,
                               .changed = [this] { ++changes_; }};
  }
  // For the alerts and report models, whose setups are alike.
  template <class Model>
  typename Model::Setup screenSetup(HistoryRecorder& recorder) {
    return {.recorder = recorder,
            .now = [] { return kNow; },
            .calendar = [](double) { return Calendar(); },
            .changed = {}};
  }
  void settle(const std::function<bool()>& done) { ASSERT_TRUE(loop_.runUntil(done)); }
  HistoryStore store(const std::filesystem::path& path) {
    return std::move(*HistoryStore::open(path));
  }

  static ScratchFolder* scratch_;
  ScratchFolder local_;
  OwnerLoop loop_;
  int changes_ = 0;
};

ScratchFolder* SeededHistory::scratch_ = nullptr;

TEST_F(SeededHistory, ChartsEveryRangeFromTheStoredRowsWithTheGapAsABreak) {
  const auto path = copy();
  HistoryRecorder recorder(setup(path));
  HistoryModel model(modelSetup(recorder));
  for (HistoryRange range : allHistoryRanges) {
    SCOPED_TRACE(rawValue(range));
    model.setRange(range);
    EXPECT_TRUE(model.loading());
    settle([&] { return !model.loading(); });
    ASSERT_TRUE(model.view().has_value());
    const HistoryView& view = *model.view();
    EXPECT_EQ(view.range, range);
    EXPECT_EQ(view.series.size(), allHistoryMetrics.size());
    const ChartSeries& cpu = view.series.at(HistoryMetric::cpuBusy);
    ASSERT_FALSE(cpu.isEmpty());
    std::size_t points = 0;
    for (const auto& run : cpu.runs) {
      for (const ChartPoint& p : run) {
        ++points;
        EXPECT_GE(p.time, kNow - span(range) - bucket(range));
        EXPECT_LT(p.time, kNow);
        EXPECT_EQ(std::fmod(p.time, bucket(range)), 0);
        EXPECT_GE(p.value, 0);
        EXPECT_LE(p.value, 1);
      }
    }
    // The hour shows a full hour of samples; longer ranges hold only the seeded day.
    const double seededBuckets = std::min(span(range), 86395.0) / bucket(range);
    EXPECT_GT(static_cast<double>(points), 0.9 * seededBuckets - 2700 / bucket(range) - 2);
    // The seeded hole in the record, 40,000 to 42,705 s into the day, breaks the day's line
    // (in the longer ranges its 2,700 s are too short to leave a whole bucket empty or not).
    if (range == HistoryRange::day) {
      ASSERT_EQ(cpu.runs.size(), 2u);
      EXPECT_LE(cpu.runs[0].back().time, kSeedStart + 40000);
      EXPECT_GE(cpu.runs[1].front().time + bucket(range), kSeedStart + 42705);
    }
  }
  const HistoryView& month = *model.view();
  ASSERT_EQ(month.strip.size(), 30u);
  EXPECT_EQ(month.strip.back().day, "2024-06-03");
  EXPECT_EQ(month.strip.front().day, "2024-05-05");
  int recordedDays = 0;
  for (const StripDay& day : month.strip) recordedDays += day.cells[0].recorded ? 1 : 0;
  EXPECT_EQ(recordedDays, 2 + SeedHistory::earlierDays) << "the seeded day spans two dates";
  ASSERT_FALSE(month.slowPeriods.empty());
  bool chrome = false;
  for (const SlowPeriodLine& line : month.slowPeriods) {
    chrome = chrome || (line.resource == Resource::memory && line.blame &&
                        line.blame->starts_with("Google Chrome"));
  }
  EXPECT_TRUE(chrome) << "Chrome's memory storm is a slow period with Chrome to blame";
}

TEST_F(SeededHistory, ChartsTheChosenMetricAloneAndReadsAgainWhenItChanges) {
  const auto path = copy();
  HistoryRecorder recorder(setup(path));
  HistoryModel every(modelSetup(recorder));
  every.setRange(HistoryRange::week);
  settle([&] { return !every.loading(); });
  HistoryModel::Setup chosen = modelSetup(recorder);
  chosen.metric = HistoryMetric::cpuBusy;
  HistoryModel model(chosen);
  model.setRange(HistoryRange::week);
  settle([&] { return !model.loading(); });
  for (HistoryMetric metric : {HistoryMetric::diskRead, HistoryMetric::memoryUsed}) {
    SCOPED_TRACE(std::string(rawValue(*model.metric())));
    ASSERT_EQ(model.view()->series.size(), 1u);
    const ChartSeries& shown = model.view()->series.begin()->second;
    EXPECT_EQ(shown.metric, *model.metric());
    EXPECT_FALSE(shown.isEmpty());
    EXPECT_EQ(shown, every.view()->series.at(*model.metric()));
    model.setMetric(metric);
    EXPECT_TRUE(model.loading()) << "another metric is read afresh";
    settle([&] { return !model.loading(); });
  }
  model.setMetric(HistoryMetric::memoryUsed);
  EXPECT_FALSE(model.loading()) << "the metric shown is not read again";
  EXPECT_EQ(model.view()->series.at(HistoryMetric::memoryUsed),
            every.view()->series.at(HistoryMetric::memoryUsed));
}

TEST_F(SeededHistory, TheMinuteLookupShowsThatMinutesStoredRanking) {
  const auto path = copy();
  HistoryRecorder recorder(setup(path));
  HistoryModel model(modelSetup(recorder));
  const double moment = kSeedStart + 5 * 2200 + 17;  // in Chrome's memory storm
  model.lookUp(moment);
  settle([&] { return model.lookup().has_value(); });
  const MinuteLookup& lookup = *model.lookup();
  EXPECT_TRUE(lookup.recorded);

  const auto stored = store(path).topApps(minuteOf(moment)).value();
  ASSERT_FALSE(stored.empty());
  std::map<AppRank, std::vector<std::pair<std::string, double>>> expected, shown;
  for (const MinuteAppRow& row : stored) expected[row.rank].push_back({row.name, row.value});
  for (const LookupRanking& ranking : lookup.rankings) {
    for (const LookupApp& app : ranking.apps) shown[ranking.rank].push_back({app.name, app.value});
  }
  EXPECT_EQ(shown, expected);
  EXPECT_EQ(expected.size(), 3u) << "memory, CPU and disk are all ranked";
  EXPECT_EQ(lookup.rankings[0].title, "Memory");
  EXPECT_EQ(lookup.rankings[0].apps[0].name, "Google Chrome");
  ASSERT_TRUE(lookup.rankings[0].apps[0].share.has_value());
  EXPECT_GT(*lookup.rankings[0].apps[0].share, 0.5);

  model.lookUp(kSeedStart + 5 * 8200);  // in the hole
  settle([&] { return !model.lookup()->recorded; });
  EXPECT_TRUE(model.lookup()->rankings.empty());
}

TEST_F(SeededHistory, ReadsAgainOnlyWhenTheRecorderWroteAndClearsAfterConfirming) {
  const auto path = copy();
  HistoryRecorder recorder(setup(path));
  HistoryModel model(modelSetup(recorder));
  model.refresh();
  settle([&] { return model.view().has_value(); });
  model.refresh();
  EXPECT_FALSE(model.loading()) << "nothing was written since";

  model.requestClear();
  EXPECT_TRUE(model.confirmingClear());
  model.cancelClear();
  EXPECT_FALSE(model.confirmingClear());
  std::optional<std::expected<void, HistoryFailure>> cleared;
  model.requestClear();
  model.confirmClear([&](std::expected<void, HistoryFailure> r) { cleared = r; });
  settle([&] { return cleared.has_value() && !model.loading(); });
  ASSERT_TRUE(cleared->has_value());
  EXPECT_TRUE(model.view()->series.at(HistoryMetric::cpuBusy).isEmpty());
  for (const StripDay& day : model.view()->strip) EXPECT_FALSE(day.cells[0].recorded);
  EXPECT_TRUE(model.view()->slowPeriods.empty());
}

TEST_F(SeededHistory, AlertsAreListedUnreadUntilSeenAndStayRead) {
  const auto path = copy();
  HistoryRecorder recorder(setup(path));
  const auto alertsSetup = screenSetup<AlertsModel>(recorder);
  AlertsModel alerts(alertsSetup);
  alerts.refresh();
  settle([&] { return alerts.sections().has_value(); });
  EXPECT_EQ(alerts.unreadCount(), 5);
  std::size_t lines = 0;
  for (const AlertSection& section : *alerts.sections()) {
    EXPECT_TRUE(section.label == "Today" || section.label == "Yesterday") << section.label;
    for (const AlertLine& line : section.lines) {
      ++lines;
      EXPECT_TRUE(line.unread);
      EXPECT_TRUE(line.cleared) << "the seeded day ends with every red stretch over";
    }
  }
  EXPECT_EQ(lines, 5u);

  alerts.markSeen();
  EXPECT_EQ(alerts.unreadCount(), 0);
  for (const AlertSection& section : *alerts.sections()) {
    for (const AlertLine& line : section.lines) EXPECT_FALSE(line.unread);
  }
  AlertsModel again(alertsSetup);  // read after the marking, in queue order
  again.refresh();
  settle([&] { return again.sections().has_value(); });
  for (const AlertSection& section : *again.sections()) {
    for (const AlertLine& line : section.lines) EXPECT_FALSE(line.unread);
  }
  EXPECT_EQ(store(path).unreadAlertCount(), 0);
}

TEST_F(SeededHistory, TheReportNamesTheSeededCausesAndTheWeeksCleanups) {
  const auto path = copy();
  {
    auto writer = store(path);
    ASSERT_TRUE(writer.logClean(kNow - 3600, "Browser caches", 1'200'000'000, 0, 340).has_value());
    ASSERT_TRUE(writer.logClean(kNow - 8 * 86400, "Old logs", 5, 0, 1).has_value());
  }
  HistoryRecorder recorder(setup(path));
  ReportModel model(screenSetup<ReportModel>(recorder));
  model.refresh();
  settle([&] { return model.report().has_value(); });
  const WeeklyReport& report = *model.report();
  EXPECT_TRUE(report.recorded);
  EXPECT_EQ(report.periodText, "Tue 28 May – Mon 3 Jun");
  ASSERT_FALSE(report.causes.empty());
  EXPECT_EQ(report.causes[0].name, "Google Chrome");
  EXPECT_EQ(report.trend, WeekTrend::slower) << "the seeded weeks get slower";
  EXPECT_FALSE(report.changes.empty());
  ASSERT_EQ(report.cleanups.size(), 1u) << "last week's cleanup is not this week's";
  EXPECT_EQ(report.cleanupsText, "1 cleanup freed 1.2 GB");
}

TEST_F(SeededHistory, AnOpenReportShowsACleanupAsSoonAsItIsLogged) {
  HistoryRecorder recorder(setup(copy()));
  ReportModel model(screenSetup<ReportModel>(recorder));
  model.refresh();
  settle([&] { return model.report().has_value() && !model.loading(); });
  EXPECT_TRUE(model.report()->cleanups.empty());
  const auto revision = recorder.revision();

  recorder.logClean("quick clean", 300'000'000, 0, 12);
  settle([&] { return recorder.revision() != revision; });
  model.refresh();
  EXPECT_TRUE(model.loading()) << "the logged cleanup is a change the report reads again for";
  settle([&] { return !model.loading(); });
  ASSERT_EQ(model.report()->cleanups.size(), 1u);
  EXPECT_EQ(model.report()->cleanupsText, "1 cleanup freed 300 MB");
}

TEST_F(SeededHistory, EveryScreenSaysHistoryIsUnavailableWhenTheFileCannotBeOpened) {
  const auto path = local_.write("history.sqlite", "this is a note, not a database\n");
  HistoryRecorder recorder(setup(path));
  HistoryModel history(modelSetup(recorder));
  AlertsModel alerts(screenSetup<AlertsModel>(recorder));
  ReportModel report(screenSetup<ReportModel>(recorder));
  // Asked before the recorder has failed: the read itself fails.
  history.refresh();
  settle([&] { return history.unavailable().has_value(); });
  // Asked after: nothing is read.
  ASSERT_TRUE(recorder.failure().has_value());
  alerts.refresh();
  report.refresh();
  EXPECT_FALSE(alerts.loading());
  const struct {
    const char* why;
    std::optional<HistoryUnavailable> shown;
    const char* explanation;
  } cases[] = {
      {"history", history.unavailable(),
       "Tovrin can't open its history file, so nothing is being kept. Monitor and the menu bar "
       "still work."},
      {"alerts", alerts.unavailable(),
       "Tovrin can't open its history file, so alerts aren't kept. Monitor and the menu bar still "
       "work."},
      {"report", report.unavailable(),
       "Tovrin can't open its history file, so there is nothing to report. Monitor and the menu "
       "bar still work."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    ASSERT_TRUE(c.shown.has_value());
    EXPECT_EQ(c.shown->title, "History isn't available");
    EXPECT_EQ(c.shown->explanation, c.explanation);
  }
  EXPECT_FALSE(history.view().has_value());
  EXPECT_FALSE(report.report().has_value());
}

}  // namespace
}  // namespace pellwin
