#include "ui/report_screen.h"

#include <gtest/gtest.h>

#include "ui/seeded_history_fixture.h"

namespace pellwin::ui {
namespace {

using ReportScreenTest = SeededHistoryTest;

TEST_F(ReportScreenTest, ShowsTheSeededWeekItsCausesTheComparisonAndTheWeeksCleanups) {
  const auto path = copy();
  ASSERT_TRUE(store(path).logClean(now - 3600, "Browser caches", 1'200'000'000, 0, 340));
  ASSERT_TRUE(store(path).logClean(now - 8 * 86400, "Old logs", 5, 0, 1));
  HistoryRecorder recorder(recorderSetup(path));
  ReportScreen screen({.recorder = recorder, .now = clock(), .calendar = calendar()});
  screen.resize(900, 700);
  screen.show();
  ASSERT_TRUE(settle([&] { return screen.model().report().has_value(); }));
  const QStringList texts = screen.texts();
  SCOPED_TRACE(texts.join('\n').toStdString());
  ASSERT_GE(texts.size(), 2);
  EXPECT_EQ(texts[0], "Tue 28 May – Mon 3 Jun");
  EXPECT_EQ(texts[1], "What slowed your Mac most");
  ASSERT_GE(screen.causes()->topLevelItemCount(), 1);
  EXPECT_EQ(screen.causes()->topLevelItem(0)->text(0), "Google Chrome");
  EXPECT_TRUE(screen.causes()->topLevelItem(0)->text(1).endsWith(" red"));
  EXPECT_TRUE(texts.contains("This week was slower than last week:"));
  EXPECT_EQ(screen.resources()->topLevelItemCount(), static_cast<int>(allResources.size()));
  EXPECT_EQ(screen.resources()->topLevelItem(0)->text(0), "Memory");
  EXPECT_TRUE(texts.contains("1 cleanup freed 1.2 GB"));
  ASSERT_EQ(screen.cleanups()->topLevelItemCount(), 1) << "last week's cleanup is left out";
  EXPECT_TRUE(screen.cleanups()->topLevelItem(0)->text(1).startsWith("Browser caches"));
}

}  // namespace
}  // namespace pellwin::ui
