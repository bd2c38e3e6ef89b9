#include "ui/alerts_screen.h"

#include <gtest/gtest.h>

#include "ui/seeded_history_fixture.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

class AlertsScreenTest : public SeededHistoryTest {
 protected:
  AlertsModel::Setup setup(HistoryRecorder& recorder) {
    return {.recorder = recorder, .now = clock(), .calendar = calendar()};
  }
  static std::vector<std::int64_t> listedIDs(const AlertsScreen& screen) {
    std::vector<std::int64_t> ids;
    for (const AlertSection& section : *screen.model().sections()) {
      for (const AlertLine& line : section.lines) ids.push_back(line.id);
    }
    return ids;
  }
};

TEST_F(AlertsScreenTest, ListsTheAlertsUnderTheirDaysAndMarksThemReadOnceSeen) {
  const auto path = copy();
  HistoryRecorder recorder(recorderSetup(path));
  ASSERT_TRUE(settle([&] { return recorder.unreadAlerts() == 5; }));
  AlertsScreen screen(setup(recorder));
  screen.refresh();
  QTest::qWait(50);
  EXPECT_FALSE(screen.model().sections()) << "a hidden screen reads nothing";
  EXPECT_EQ(recorder.unreadAlerts(), 5);

  screen.resize(900, 600);
  screen.show();
  ASSERT_TRUE(settle([&] { return screen.model().sections().has_value(); }));
  EXPECT_EQ(recorder.unreadAlerts(), 0) << "seen, so read: the badge goes at once";
  const auto ids = listedIDs(screen);
  ASSERT_EQ(ids.size(), 5u);
  for (std::int64_t id : ids) {
    EXPECT_TRUE(screen.showsAsNew(id)) << "the rows that were new stand out for this visit";
  }

  const QTreeWidget* list = screen.list();
  const auto& sections = *screen.model().sections();
  ASSERT_EQ(list->topLevelItemCount(), static_cast<int>(sections.size()));
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const QTreeWidgetItem* heading = list->topLevelItem(static_cast<int>(i));
    SCOPED_TRACE(sections[i].label);
    EXPECT_EQ(heading->text(0), qs(sections[i].label));
    ASSERT_EQ(heading->childCount(), static_cast<int>(sections[i].lines.size()));
    const AlertLine& first = sections[i].lines[0];
    EXPECT_EQ(heading->child(0)->text(2), qs(first.message));
    EXPECT_TRUE(heading->child(0)->text(4).startsWith("Cleared after "))
        << heading->child(0)->text(4).toStdString();
    if (first.causeName) {
      EXPECT_TRUE(heading->child(0)->text(3).startsWith(qs(*first.causeName)));
    }
  }
  ASSERT_TRUE(settle([&] { return store(path).unreadAlertCount() == 0; })) << "read in the file";

  screen.hide();
  screen.show();
  for (std::int64_t id : ids) EXPECT_FALSE(screen.showsAsNew(id)) << "the next visit";
}

TEST_F(AlertsScreenTest, SaysSoWhenThereAreNoAlerts) {
  HistoryRecorder recorder(recorderSetup(local() / "new.sqlite"));
  AlertsScreen screen(setup(recorder));
  screen.show();
  ASSERT_TRUE(settle([&] { return screen.model().sections().has_value(); }));
  ASSERT_EQ(screen.list()->topLevelItemCount(), 1);
  EXPECT_EQ(screen.list()->topLevelItem(0)->text(0), AlertsScreen::empty);
}

}  // namespace
}  // namespace pellwin::ui
