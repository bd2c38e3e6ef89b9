#include "store/history_store.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/history/chart_series.h"
#include "store/cause_json.h"
#include "store/retention.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

using testing::ScratchFolder;

class HistoryStoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto opened = HistoryStore::open(scratch_ / "history.sqlite");
    ASSERT_TRUE(opened.has_value()) << description(opened.error());
    store_.emplace(std::move(*opened));
  }
  const HistoryStore& store() { return *store_; }
  void write(const RollupOutput& output) {
    auto written = store_->write(output);
    ASSERT_TRUE(written.has_value()) << written.error().description();
  }
  std::int64_t count(HistoryTable table) { return store_->rowCount(table).value_or(-1); }

  ScratchFolder scratch_;
  std::optional<HistoryStore> store_;
};

SampleRow sampleAt(double time) {
  return SampleRow{.time = time,
                   .span = 5,
                   .values = {{HistoryMetric::cpuBusy, 0.25}, {HistoryMetric::thermal, 2}},
                   .health = {{Resource::cpu, Health::strain}, {Resource::heat, Health::problem}}};
}

MinuteRow minuteAt(double minute) {
  return MinuteRow{.minute = minute,
                   .covered = 55,
                   .stats = {{HistoryMetric::memoryUsed, {.average = 8e9, .low = 7e9, .high = 9e9}},
                             {HistoryMetric::thermal, {.average = 0.5, .low = 0, .high = 1}}},
                   .worst = {{Resource::memory, Health::problem}, {Resource::heat, Health::ok}}};
}

TEST_F(HistoryStoreTest, EveryRowKindComesBackAsItWasWritten) {
  const MinuteAppRow app{.minute = 600,
                         .rank = AppRank::memory,
                         .position = 2,
                         .appID = "app:org.mozilla.firefox",
                         .name = "Firefox",
                         .bundleIdentifier = "org.mozilla.firefox",
                         .value = 1.5e9};
  const MinuteAppRow bare{.minute = 600,
                          .rank = AppRank::cpu,
                          .position = 1,
                          .appID = "pid:640",
                          .name = "python3.12",
                          .value = 0.98};
  const DayRow day{.day = "2024-06-03",
                   .resource = Resource::cpu,
                   .strainSeconds = 120,
                   .problemSeconds = 60.5,
                   .causes = {{.appID = "a", .name = "Ä \"quoted\"", .seconds = 60.5}}};
  const EpisodeRow episode{.resource = Resource::diskSpace,
                           .start = 100,
                           .peak = 5e9,
                           .peakText = "5.0 GB",
                           .topApp = "Slack",
                           .topValue = "2.0 GB"};
  const AlertRow alert{.time = 300,
                       .started = 180,
                       .resource = Resource::heat,
                       .message = "Your Mac is hot",
                       .cause = std::nullopt};
  write(RollupOutput{.samples = {sampleAt(5), SampleRow{.time = 10, .span = 4.5}},
                     .minutes = {minuteAt(600)},
                     .apps = {app, bare},
                     .episodes = {episode},
                     .alerts = {alert},
                     .days = {day}});

  EXPECT_EQ(store().samples(0, 10),
            (std::vector<SampleRow>{sampleAt(5), {.time = 10, .span = 4.5}}));
  EXPECT_EQ(store().samples(6, 10)->size(), 1u);
  EXPECT_EQ(store().minutes(600, 600), std::vector<MinuteRow>{minuteAt(600)});
  EXPECT_EQ(store().topApps(600), (std::vector<MinuteAppRow>{bare, app})) << "cpu ranking first";
  EXPECT_EQ(store().days("2024-06-03", "2024-06-03"), std::vector<DayRow>{day});
  EXPECT_EQ(store().episodes(0, 1000), std::vector<EpisodeRow>{episode});
  auto alerts = store().alerts(10);
  ASSERT_TRUE(alerts.has_value());
  ASSERT_EQ(alerts->size(), 1u);
  EXPECT_GT((*alerts)[0].id, 0);
  AlertRow stored = alert;
  stored.id = (*alerts)[0].id;
  EXPECT_EQ((*alerts)[0], stored);
  EXPECT_EQ(store().unreadAlertCount(), 1);
  EXPECT_EQ(store().lastSampleTime().value(), std::optional<double>(10));
}

TEST_F(HistoryStoreTest, LaterBatchesUpdateEpisodesDaysAndClearAlerts) {
  EpisodeRow open{.resource = Resource::memory, .start = 100, .peak = 2e7, .peakText = "20 MB/s"};
  write(RollupOutput{
      .episodes = {open},
      .alerts = {{.time = 220, .started = 100, .resource = Resource::memory, .message = "m1"},
                 {.time = 220, .started = 90, .resource = Resource::cpu, .message = "c1"}},
      .days = {{.day = "2024-06-03", .resource = Resource::memory, .problemSeconds = 10}}});
  EpisodeRow closed = open;
  closed.end = 400;
  closed.peak = 3e7;
  closed.peakText = "30 MB/s";
  closed.topApp = "Chrome";
  write(RollupOutput{
      .episodes = {closed},
      .clears = {{.resource = Resource::memory, .at = 400}},
      .days = {{.day = "2024-06-03", .resource = Resource::memory, .problemSeconds = 300}}});

  EXPECT_EQ(store().episodes(0, 1000), std::vector<EpisodeRow>{closed});
  EXPECT_EQ(count(HistoryTable::episodes), 1);
  auto days = store().days("2024-06-03", "2024-06-03");
  ASSERT_EQ(days->size(), 1u);
  EXPECT_EQ((*days)[0].problemSeconds, 300);
  auto alerts = store().alerts(10);
  ASSERT_EQ(alerts->size(), 2u);
  EXPECT_EQ((*alerts)[0].message, "c1") << "same time: the later id comes first";
  EXPECT_EQ((*alerts)[0].cleared, std::nullopt) << "only the cleared resource's alerts";
  EXPECT_EQ((*alerts)[1].cleared, std::optional<double>(400));
}

TEST_F(HistoryStoreTest, ABatchThatFailsPartWayLeavesNothingBehind) {
  write(RollupOutput{.alerts = {{.time = 1, .started = 1, .message = "kept"}}});
  // Another connection removes a table the batch writes last, after its alerts and episodes.
  auto other = SQLiteDatabase::open((scratch_ / "history.sqlite").string());
  ASSERT_TRUE(other->exec("DROP TABLE samples").has_value());

  auto failed = store().write(RollupOutput{
      .samples = {sampleAt(5)},
      .episodes = {{.resource = Resource::cpu, .start = 1, .peak = 1, .peakText = "100%"}},
      .alerts = {{.time = 2, .started = 2, .message = "lost"}},
      .clears = {{.resource = Resource::memory, .at = 3}}});
  ASSERT_FALSE(failed.has_value());
  EXPECT_EQ(failed.error().description(), "SQLite error 1: no such table: samples");
  auto alerts = store().alerts(10);
  ASSERT_EQ(alerts->size(), 1u);
  EXPECT_EQ((*alerts)[0].message, "kept");
  EXPECT_EQ((*alerts)[0].cleared, std::nullopt);
  EXPECT_EQ(count(HistoryTable::episodes), 0);
}

TEST_F(HistoryStoreTest, EpisodesOverlappingTheRangeComeNewestFirstOpenOnesIncluded) {
  write(RollupOutput{
      .episodes = {
          {.resource = Resource::cpu, .start = 50, .peakText = "open since 50"},
          {.resource = Resource::memory, .start = 10, .end = 90, .peakText = "ends before"},
          {.resource = Resource::heat, .start = 80, .end = 150, .peakText = "overlaps"},
          {.resource = Resource::diskSpace, .start = 201, .end = 300, .peakText = "after"},
      }});
  const auto episodes = store().episodes(100, 200);
  ASSERT_TRUE(episodes.has_value());
  std::vector<std::string> texts;
  for (const EpisodeRow& e : *episodes) texts.push_back(e.peakText);
  EXPECT_EQ(texts, (std::vector<std::string>{"overlaps", "open since 50"}));
}

TEST_F(HistoryStoreTest, DaysAreSortedByDayThenResourceOrder) {
  write(RollupOutput{.days = {{.day = "2024-06-04", .resource = Resource::memory},
                              {.day = "2024-06-03", .resource = Resource::heat},
                              {.day = "2024-06-03", .resource = Resource::cpu},
                              {.day = "2024-06-02", .resource = Resource::cpu},
                              {.day = "2024-06-05", .resource = Resource::cpu}}});
  auto other = SQLiteDatabase::open((scratch_ / "history.sqlite").string());
  ASSERT_TRUE(other
                  ->exec("INSERT INTO days VALUES ('2024-06-03', 'gpu', 0, 0, '[]');"
                         "INSERT INTO days VALUES ('2024-06-04', 'diskSpace', 1, 2, 'not json')")
                  .has_value());
  const auto days = store().days("2024-06-03", "2024-06-04");
  ASSERT_TRUE(days.has_value()) << days.error().description();
  std::vector<std::string> keys;
  for (const DayRow& d : *days) {
    keys.push_back(d.day + " " + std::string(rawValue(d.resource)));
    EXPECT_TRUE(d.causes.empty());
  }
  EXPECT_EQ(keys, (std::vector<std::string>{"2024-06-03 cpu", "2024-06-03 heat",
                                            "2024-06-04 memory", "2024-06-04 diskSpace"}))
      << "an unknown resource is skipped; undecodable causes read as none";
}

TEST_F(HistoryStoreTest, PruneKeepsADayOfSamplesAndThirtyDaysOfMinutes) {
  const double now = 1'717'416'000;
  write(RollupOutput{.samples = {sampleAt(now - 86401), sampleAt(now - 86399)},
                     .minutes = {minuteAt(now - 30 * 86400 - 1), minuteAt(now - 30 * 86400 + 1)},
                     .apps = {{.minute = now - 30 * 86400 - 1, .appID = "old", .name = "old"},
                              {.minute = now - 30 * 86400 + 1, .appID = "new", .name = "new"}},
                     .episodes = {{.resource = Resource::cpu, .start = 1, .end = 2}},
                     .alerts = {{.time = 1, .started = 1}},
                     .days = {{.day = "1970-01-01"}}});
  ASSERT_TRUE(store().logClean(1, "caches", 1, 2, 3).has_value());
  ASSERT_TRUE(store().prune(now, Retention::defaultDays).has_value());

  EXPECT_EQ(store().samples(0, now)->size(), 1u);
  EXPECT_EQ(store().samples(0, now)->front().time, now - 86399);
  ASSERT_EQ(store().minutes(0, now)->size(), 1u);
  EXPECT_EQ(store().minutes(0, now)->front().minute, now - 30 * 86400 + 1);
  EXPECT_EQ(count(HistoryTable::minuteApps), 1);
  for (HistoryTable kept :
       {HistoryTable::episodes, HistoryTable::alerts, HistoryTable::days, HistoryTable::cleans}) {
    EXPECT_EQ(count(kept), 1) << rawValue(kept);
  }
}

TEST_F(HistoryStoreTest, CloseDanglingEndsOpenRowsAtTheGivenTime) {
  EXPECT_EQ(store().lastSampleTime().value(), std::optional<double>()) << "empty file";
  write(RollupOutput{
      .episodes = {{.resource = Resource::cpu, .start = 10},
                   {.resource = Resource::heat, .start = 20, .end = 30}},
      .alerts = {{.time = 15, .started = 10}, {.time = 25, .started = 20, .cleared = 30}}});
  ASSERT_TRUE(store().closeDangling(99).has_value());
  const auto episodes = store().episodes(0, 1000).value();
  EXPECT_EQ(episodes[0].end, std::optional<double>(30));
  EXPECT_EQ(episodes[1].end, std::optional<double>(99));
  const auto alerts = store().alerts(10).value();
  EXPECT_EQ(alerts[0].cleared, std::optional<double>(30));
  EXPECT_EQ(alerts[1].cleared, std::optional<double>(99));
}

TEST_F(HistoryStoreTest, ClearAllKeepsTheCleanupLog) {
  write(RollupOutput{.samples = {sampleAt(1)},
                     .minutes = {minuteAt(60)},
                     .apps = {{.minute = 60, .appID = "a", .name = "a"}},
                     .episodes = {{.start = 1}},
                     .alerts = {{.time = 1}},
                     .days = {{.day = "2024-01-01"}}});
  ASSERT_TRUE(store().logClean(5, "Browser caches", 18446744073709551615ull, 7, 2).has_value());
  ASSERT_TRUE(store().clearAll().has_value());
  for (HistoryTable table : allHistoryTables) {
    EXPECT_EQ(count(table), table == HistoryTable::cleans ? 1 : 0) << rawValue(table);
  }
  auto logged = store().database().query<std::string>(
      "SELECT rules || ' ' || bytes_deleted || ' ' || bytes_trashed || ' ' || items FROM cleans",
      {}, [](const SQLiteStatement& r) { return r.text(0); });
  EXPECT_EQ(logged, std::vector<std::string>{"Browser caches 9223372036854775807 7 2"});
}

TEST_F(HistoryStoreTest, CleansAreReadBackWithinTheirRangeNewestFirst) {
  ASSERT_TRUE(store().logClean(10, "too early", 1, 0, 1).has_value());
  ASSERT_TRUE(store().logClean(20, "Browser caches", 18446744073709551615ull, 7, 2).has_value());
  ASSERT_TRUE(store().logClean(30, "Old logs", 0, 4096, 3).has_value());
  ASSERT_TRUE(store().logClean(30, "Build files", 5, 6, 1).has_value());
  auto rows = store().cleans(20, 30);
  ASSERT_TRUE(rows.has_value());
  std::vector<std::string> rules;
  for (const CleanRow& row : *rows) rules.push_back(row.rules);
  EXPECT_EQ(rules, (std::vector<std::string>{"Build files", "Old logs", "Browser caches"}))
      << "equal times by descending id; both ends of the range included";
  EXPECT_EQ(rows->back(), (CleanRow{.id = 2,
                                    .time = 20,
                                    .rules = "Browser caches",
                                    .bytesDeleted = 9223372036854775807,
                                    .bytesTrashed = 7,
                                    .items = 2}));
}

void expectSameSeries(const ChartSeries& a, const ChartSeries& b) {
  ASSERT_EQ(a.runs.size(), b.runs.size());
  for (std::size_t r = 0; r < a.runs.size(); ++r) {
    ASSERT_EQ(a.runs[r].size(), b.runs[r].size());
    for (std::size_t p = 0; p < a.runs[r].size(); ++p) {
      EXPECT_EQ(a.runs[r][p].time, b.runs[r][p].time);
      EXPECT_NEAR(a.runs[r][p].value, b.runs[r][p].value,
                  1e-9 * (1 + std::fabs(a.runs[r][p].value)));
      EXPECT_EQ(a.runs[r][p].low, b.runs[r][p].low);
      EXPECT_EQ(a.runs[r][p].high, b.runs[r][p].high);
      EXPECT_EQ(a.runs[r][p].worst, b.runs[r][p].worst);
    }
  }
  EXPECT_EQ(a.low, b.low);
  EXPECT_EQ(a.high, b.high);
}

// Eight days of minutes and a day of samples ending at `end` (not on a bucket), with minutes that
// cover nothing, metrics unmeasured now and then, and a hole in the samples.
RollupOutput varyingRecord(double end) {
  RollupOutput output;
  for (double minute = end - 8 * 86400; minute <= end; minute += 60) {
    const auto i = static_cast<long long>(minute / 60);
    MinuteRow row = minuteAt(minute);
    row.covered = i % 7 == 0 ? 0 : static_cast<double>(10 + i % 50);
    row.stats[HistoryMetric::cpuBusy] = Stat{.average = static_cast<double>(i % 13) / 13,
                                             .low = static_cast<double>(i % 5) / 13,
                                             .high = static_cast<double>(i % 17) / 13};
    if (i % 3 == 0) row.stats.erase(HistoryMetric::thermal);
    row.worst[Resource::cpu] = static_cast<Health>(i % 3);
    output.minutes.push_back(row);
  }
  for (double time = end - 86400; time <= end; time += 5) {
    const auto i = static_cast<long long>(time / 5);
    SampleRow sample = sampleAt(time);
    sample.values[HistoryMetric::cpuBusy] = static_cast<double>(i % 11) / 11;
    sample.values[HistoryMetric::memoryUsed] = 4e9 + static_cast<double>(i % 97) * 1e7;
    if (i % 4 == 0) sample.values.erase(HistoryMetric::thermal);
    sample.health[Resource::cpu] = static_cast<Health>(i % 3);
    sample.health[Resource::memory] = static_cast<Health>((i / 7) % 3);
    if (i % 1000 < 40) continue;
    output.samples.push_back(sample);
  }
  return output;
}

TEST_F(HistoryStoreTest, ChartPointsGiveTheSameSeriesAsEveryPoint) {
  const double end = 1'717'416'000 + 600;
  write(varyingRecord(end));
  for (HistoryRange range : allHistoryRanges) {
    SCOPED_TRACE(rawValue(range));
    const auto all = chartSeries(store().points(range, end).value(), range, end);
    const auto folded = store().chartPoints(range, end).value();
    if (usesMinutes(range)) {
      EXPECT_LE(folded.size(), static_cast<std::size_t>(span(range) / bucket(range)) + 2);
    }
    const auto cheap = chartSeries(folded, range, end);
    for (HistoryMetric metric : allHistoryMetrics) {
      SCOPED_TRACE(rawValue(metric));
      expectSameSeries(cheap.at(metric), all.at(metric));
    }
  }
}

TEST_F(HistoryStoreTest, ChartPointsOfOneMetricReadOnlyItAndChartItAsEveryPointDoes) {
  const double end = 1'717'416'000 + 600;
  write(varyingRecord(end));
  for (HistoryRange range : allHistoryRanges) {
    const auto every = chartSeries(store().points(range, end).value(), range, end);
    for (HistoryMetric metric :
         {HistoryMetric::cpuBusy, HistoryMetric::thermal, HistoryMetric::memoryUsed}) {
      SCOPED_TRACE(std::string(rawValue(range)) + " " + std::string(rawValue(metric)));
      const auto read = store().chartPoints(range, end, std::span(&metric, 1)).value();
      for (const HistoryPoint& point : read) {
        for (const auto& [other, value] : point.values) EXPECT_EQ(other, metric);
        for (const auto& [resource, health] : point.worst) {
          EXPECT_EQ(resource, resourceOf(metric));
        }
      }
      const ChartSeries one = chartSeries(read, metric, range, end);
      EXPECT_FALSE(one.isEmpty());
      expectSameSeries(one, every.at(metric));
    }
  }
}

TEST_F(HistoryStoreTest, MarkingAlertsReadZeroesTheUnreadCount) {
  write(RollupOutput{.alerts = {{.time = 1}, {.time = 2}, {.time = 3, .read = true}}});
  EXPECT_EQ(store().unreadAlertCount(), 2);
  ASSERT_TRUE(store().markAllAlertsRead().has_value());
  EXPECT_EQ(store().unreadAlertCount(), 0);
  EXPECT_EQ(store().alerts(2)->size(), 2u) << "the limit holds";
}

TEST_F(HistoryStoreTest, PointsReadSamplesForShortRangesAndMinutesForLongOnes) {
  const double end = 1'717'416'000;
  write(RollupOutput{
      .samples = {sampleAt(end - 3601), sampleAt(end - 3600), sampleAt(end)},
      .minutes = {minuteAt(end - 604800 - 120), minuteAt(end - 604800 - 60), minuteAt(end - 60)}});
  auto hour = store().points(HistoryRange::hour, end).value();
  ASSERT_EQ(hour.size(), 2u);
  EXPECT_EQ(hour[0].time, end - 3605) << "a sample stands for the seconds before its time";
  EXPECT_EQ(hour[0].values.at(HistoryMetric::cpuBusy),
            (PointValue{.value = 0.25, .low = 0.25, .high = 0.25}));
  EXPECT_EQ(hour[0].worst.at(Resource::heat), Health::problem);
  EXPECT_EQ(store().points(HistoryRange::day, end)->size(), 3u);

  auto week = store().points(HistoryRange::week, end).value();
  ASSERT_EQ(week.size(), 2u) << "one minute before the start is read, not two";
  EXPECT_EQ(week[0].time, end - 604800 - 60);
  EXPECT_EQ(week[0].span, 60);
  EXPECT_EQ(week[0].values.at(HistoryMetric::memoryUsed),
            (PointValue{.value = 8e9, .low = 7e9, .high = 9e9}));
  EXPECT_EQ(store().points(HistoryRange::month, end)->size(), 3u);
}

TEST(CauseJSON, EncodesWithItsStoredKeysAndRejectsWhatItCannotRead) {
  EXPECT_EQ(encodeCauses({{.appID = "app:slack", .name = "Slack", .seconds = 12.5}}),
            R"([{"appID":"app:slack","name":"Slack","seconds":12.5}])");
  EXPECT_EQ(encodeCauses({{.appID = "a", .name = "bad \xff byte", .seconds = 1}}), "[]");
  EXPECT_EQ(decodeCauses(R"([{"seconds":3,"name":"N","appID":"x"}])"),
            (std::vector<Cause>{{.appID = "x", .name = "N", .seconds = 3}}));
  for (const char* bad : {"", "{}", "[1]", R"([{"appID":"x","name":"N"}])", "[{"}) {
    SCOPED_TRACE(bad);
    EXPECT_TRUE(decodeCauses(bad).empty());
  }
}

}  // namespace
}  // namespace pellwin
