#include "ui/history_screen.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QMouseEvent>

#include "ui/alerts_screen.h"
#include "ui/report_screen.h"
#include "ui/seeded_history_fixture.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

class HistoryScreenTest : public SeededHistoryTest {
 protected:
  HistoryModel::Setup setup(HistoryRecorder& recorder) {
    return {.recorder = recorder, .now = clock(), .calendar = calendar(), .coreCount = 8};
  }
  // Shows `screen` and waits for its first read.
  static void showLoaded(HistoryScreen& screen) {
    screen.resize(1000, 800);
    screen.show();
    ASSERT_TRUE(settle([&] { return screen.model().view() && !screen.model().loading(); }));
  }
  static void point(HistoryChart* chart, double time) {
    const QPointF at = chart->positionOf(time);
    QMouseEvent move(QEvent::MouseMove, at, chart->surface()->mapToGlobal(at), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(chart->surface(), &move);
  }
};

TEST_F(HistoryScreenTest, DrawsTheSeededDayWithTheGapAsABreakTheStripAndTheSlowPeriods) {
  HistoryRecorder recorder(recorderSetup(copy()));
  HistoryScreen screen(setup(recorder));
  EXPECT_FALSE(screen.model().view()) << "nothing is read before the screen is shown";
  showLoaded(screen);
  const HistoryView& view = *screen.model().view();
  EXPECT_EQ(view.range, HistoryRange::day);
  EXPECT_EQ(screen.chart()->lineCount(),
            static_cast<int>(view.series.at(HistoryMetric::memoryUsed).runs.size()));
  EXPECT_GE(screen.chart()->lineCount(), 2) << "the seeded gap breaks the line";
  EXPECT_FALSE(screen.chart()->showsEmpty());

  // The rightmost cell of the first row: today's memory.
  QString today;
  for (int x = screen.strip()->width() - 1; x > 0 && today.isEmpty(); --x) {
    today = screen.strip()->textAt(QPoint(x, 2));
  }
  EXPECT_TRUE(today.startsWith("Mon 3 Jun\nMemory: ")) << today.toStdString();

  ASSERT_FALSE(view.slowPeriods.empty());
  EXPECT_EQ(screen.slowPeriods()->topLevelItemCount(), static_cast<int>(view.slowPeriods.size()));
  const QTreeWidgetItem* newest = screen.slowPeriods()->topLevelItem(0);
  EXPECT_EQ(newest->text(0), qs(view.slowPeriods[0].title));
  EXPECT_TRUE(newest->text(1).startsWith("Today ")) << newest->text(1).toStdString();
  EXPECT_EQ(newest->text(3), qs(view.slowPeriods[0].peakText));

  screen.setRange(HistoryRange::hour);
  ASSERT_TRUE(settle([&] { return !screen.model().loading(); }));
  EXPECT_EQ(screen.model().view()->range, HistoryRange::hour);
  EXPECT_EQ(
      screen.chart()->lineCount(),
      static_cast<int>(screen.model().view()->series.at(HistoryMetric::memoryUsed).runs.size()));
}

TEST_F(HistoryScreenTest, PickingAMetricChartsItFromItsOwnRead) {
  HistoryRecorder recorder(recorderSetup(copy()));
  HistoryScreen screen(setup(recorder));
  showLoaded(screen);
  EXPECT_EQ(screen.model().view()->series.size(), 1u) << "only the metric shown is read";
  auto* metrics = screen.findChild<QComboBox*>();
  ASSERT_NE(metrics, nullptr);
  EXPECT_EQ(metrics->currentText(), metricTitle(HistoryMetric::memoryUsed));
  const int cpu = metrics->findData(static_cast<int>(HistoryMetric::cpuBusy));
  metrics->setCurrentIndex(cpu);
  emit metrics->activated(cpu);
  EXPECT_EQ(screen.shownMetric(), HistoryMetric::cpuBusy);
  ASSERT_TRUE(settle([&] { return !screen.model().loading(); }));
  const HistoryView& view = *screen.model().view();
  ASSERT_EQ(view.series.count(HistoryMetric::cpuBusy), 1u);
  EXPECT_EQ(screen.chart()->lineCount(),
            static_cast<int>(view.series.at(HistoryMetric::cpuBusy).runs.size()));
  EXPECT_EQ(screen.chart()->shown(), view.series.at(HistoryMetric::cpuBusy));
}

TEST_F(HistoryScreenTest, SaysSoWhenTheRangeHoldsNothing) {
  HistoryRecorder recorder(recorderSetup(local() / "new.sqlite"));
  HistoryScreen screen(setup(recorder));
  showLoaded(screen);
  EXPECT_TRUE(screen.chart()->showsEmpty());
  EXPECT_EQ(screen.chart()->lineCount(), 0);
  ASSERT_EQ(screen.slowPeriods()->topLevelItemCount(), 1);
  EXPECT_EQ(screen.slowPeriods()->topLevelItem(0)->text(0), HistoryScreen::noSlowPeriods);
}

TEST_F(HistoryScreenTest, PointingAtAMomentListsThatMinutesStoredRanking) {
  const auto path = copy();
  HistoryRecorder recorder(recorderSetup(path));
  HistoryScreen screen(setup(recorder));
  showLoaded(screen);
  EXPECT_EQ(screen.lookupHeading()->text(), HistoryScreen::lookupHint);

  const double target = now - 2 * 3600 - 17;  // two hours ago, mid-minute
  point(screen.chart(), target);
  ASSERT_TRUE(settle([&] { return screen.model().lookup().has_value(); }));
  const MinuteLookup& lookup = *screen.model().lookup();
  EXPECT_NEAR(lookup.minute, target, 6 * 60) << "a pixel of the day chart spans a few minutes";
  EXPECT_EQ(screen.lookupHeading()->text(), qs(lookup.heading));

  auto stored = store(path).topApps(lookup.minute);
  ASSERT_TRUE(stored.has_value());
  ASSERT_FALSE(stored->empty()) << "the seeded day ranks apps every minute";
  const QTreeWidget* list = screen.lookupList();
  int rankings = 0;
  for (AppRank rank : {AppRank::memory, AppRank::cpu, AppRank::disk}) {
    std::vector<const MinuteAppRow*> expected;
    for (const MinuteAppRow& row : *stored) {
      if (row.rank == rank) expected.push_back(&row);
    }
    if (expected.empty()) continue;
    std::ranges::sort(expected, {}, &MinuteAppRow::position);
    SCOPED_TRACE(std::string(rawValue(rank)));
    const QTreeWidgetItem* heading = list->topLevelItem(rankings++);
    ASSERT_NE(heading, nullptr);
    ASSERT_EQ(heading->childCount(), static_cast<int>(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(heading->child(static_cast<int>(i))->text(0), qs(expected[i]->name));
    }
  }
  EXPECT_EQ(list->topLevelItemCount(), rankings);

  point(screen.chart(), now - 3 * 86400);  // outside the range: nothing changes
  QTest::qWait(50);
  EXPECT_EQ(screen.model().lookup()->minute, lookup.minute);
}

TEST_F(HistoryScreenTest, ClearsOnlyAfterTheUserConfirms) {
  const auto path = copy();
  HistoryRecorder recorder(recorderSetup(path));
  bool answer = false;
  int asked = 0;
  HistoryScreen screen(setup(recorder), [&](QWidget*) {
    ++asked;
    return answer;
  });
  showLoaded(screen);
  ASSERT_FALSE(screen.model().view()->slowPeriods.empty());

  screen.clearButton()->click();
  EXPECT_EQ(asked, 1);
  EXPECT_FALSE(screen.model().confirmingClear());
  QTest::qWait(50);
  EXPECT_GT(*store(path).rowCount(HistoryTable::episodes), 0) << "cancelled";

  answer = true;
  screen.clearButton()->click();
  ASSERT_TRUE(settle([&] {
    return !screen.model().loading() && screen.model().view() &&
           screen.model().view()->slowPeriods.empty();
  }));
  EXPECT_EQ(*store(path).rowCount(HistoryTable::episodes), 0);
  ASSERT_EQ(screen.slowPeriods()->topLevelItemCount(), 1);
  EXPECT_EQ(screen.slowPeriods()->topLevelItem(0)->text(0), HistoryScreen::noSlowPeriods);
}

TEST_F(HistoryScreenTest, EveryScreenSaysHistoryIsUnavailableWithItsOwnExplanation) {
  const auto path = write("history.sqlite", "a note, not a database\n");
  HistoryRecorder recorder(recorderSetup(path));
  ASSERT_TRUE(settle([&] { return recorder.failure().has_value(); }));
  HistoryScreen history(setup(recorder));
  AlertsScreen alerts({.recorder = recorder, .now = clock(), .calendar = calendar()});
  ReportScreen report({.recorder = recorder, .now = clock(), .calendar = calendar()});
  // The words themselves are the models' (checked with them); each screen shows its own.
  const struct {
    const char* why;
    QWidget* screen;
    const UnavailableView* view;
    const std::optional<HistoryUnavailable>* words;
  } cases[] = {
      {"history", &history, &history.unavailable(), &history.model().unavailable()},
      {"alerts", &alerts, &alerts.unavailable(), &alerts.model().unavailable()},
      {"report", &report, &report.unavailable(), &report.model().unavailable()},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_FALSE(c.view->showsUnavailable()) << "nothing is said before the screen is seen";
    c.screen->show();
    ASSERT_TRUE(c.words->has_value());
    EXPECT_TRUE(c.view->showsUnavailable());
    EXPECT_EQ(c.view->title(), qs((*c.words)->title));
    EXPECT_EQ(c.view->explanation(), qs((*c.words)->explanation));
  }
}

}  // namespace
}  // namespace pellwin::ui
