#include "ui/quick_clean_screen.h"

#include <gtest/gtest.h>

#include <QTest>

#include "ui/ui_text.h"

// Failures show the texts rather than their bytes.
static void PrintTo(const QString& text, std::ostream* out) { *out << text.toStdString(); }

namespace pellwin::ui {
namespace {

CleanGroupPlan group(const std::string& title, CleanAction action, std::vector<CleanItem> items,
                     std::vector<CleanSkip> skipped = {}) {
  return {.group = {.id = title, .title = title, .action = action},
          .items = std::move(items),
          .skipped = std::move(skipped)};
}

// Five groups with items, so one waits behind "Show all", and one left alone entirely.
CleanPlan samplePlan() {
  using enum CleanAction;
  return {.groups = {
              group("Developer caches", delete_,
                    {{"/h/.npm/_cacache", "npm cache", 300'000'000},
                     {"/h/.cache/pip", "pip cache", 100'000'000}},
                    {{"yarn cache", "yarn is running"}}),
              group("App caches", delete_, {{"/h/.cache/thumbnails", "thumbnails", 50'000'000}}),
              group("Old logs", trash, {{"/h/.local/state/x.log", "x.log", 20'000'000}}),
              group("Browser caches", delete_, {{"/h/.cache/web", "web", 10'000'000}}),
              group("Downloads installers", trash, {{"/h/Downloads/a.deb", "a.deb", 5'000'000}}),
              group("Editor caches", delete_, {}, {{"Code cache", "Code is open"}}),
          }};
}

struct Logged {
  std::uint64_t deleted = 0, trashed = 0;
  int items = 0;
};

class QuickCleanScreenTest : public ::testing::Test {
 protected:
  CleanerModel::Services services() {
    return {.scan = [this] { return plan_; },
            .remove =
                [](const CleanBatch& batch) {
                  std::vector<TrashResult> results;
                  for (const CleanItem& item : batch.items) {
                    results.push_back({.path = item.path,
                                       .bytes = item.bytes,
                                       .outcome = batch.action == CleanAction::trash
                                                      ? TrashResult::Outcome::moved
                                                      : TrashResult::Outcome::deleted});
                  }
                  return results;
                },
            .logClean =
                [this](std::string_view, std::uint64_t deleted, std::uint64_t trashed, int items) {
                  logged_.push_back({deleted, trashed, items});
                }};
  }

  bool reached(QuickCleanScreen& screen, CleanerModel::Phase phase) {
    return QTest::qWaitFor([&] { return screen.model().phase() == phase; }, 5000);
  }

  QStringList topTitles(QuickCleanScreen& screen) {
    QStringList out;
    for (int row = 0; row < screen.groups()->topLevelItemCount(); ++row)
      out << screen.groups()->topLevelItem(row)->text(0);
    return out;
  }

  CleanPlan plan_ = samplePlan();
  std::vector<Logged> logged_;
};

TEST_F(QuickCleanScreenTest, ListsTheGroupsWithSizesTicksAndSkippedPlacesAndShowsAllOnAsk) {
  QuickCleanScreen screen(services());
  screen.resize(860, 640);
  screen.show();
  ASSERT_TRUE(reached(screen, CleanerModel::Phase::ready));
  EXPECT_EQ(screen.status()->text(), "6 items ticked, 485 MB");
  EXPECT_EQ(topTitles(screen),
            (QStringList{"Developer caches", "App caches", "Old logs", "Browser caches"}));
  ASSERT_TRUE(screen.showAllButton()->isVisible());
  QTreeWidgetItem* developer = screen.groups()->topLevelItem(0);
  EXPECT_EQ(developer->text(1), "400 MB");
  EXPECT_EQ(developer->text(2), "2 items, 1 skipped because it is in use");
  EXPECT_EQ(developer->checkState(0), Qt::Checked);
  ASSERT_EQ(developer->childCount(), 4);
  EXPECT_EQ(developer->child(0)->text(0), "Deleted for good. It rebuilds on its own.");
  EXPECT_EQ(developer->child(1)->text(0), "npm cache");
  EXPECT_EQ(developer->child(1)->text(1), "300 MB");
  EXPECT_EQ(developer->child(3)->text(0), "yarn cache");
  EXPECT_EQ(developer->child(3)->text(2), "Left alone because yarn is running");
  EXPECT_EQ(screen.groups()->topLevelItem(2)->child(0)->text(0),
            "Moved to the Trash, so you can get it back.");

  screen.showAllButton()->click();
  EXPECT_EQ(topTitles(screen).size(), 5) << "the group with nothing to clean stays out";
  EXPECT_FALSE(screen.showAllButton()->isVisible());

  developer = screen.groups()->topLevelItem(0);
  developer->child(1)->setCheckState(0, Qt::Unchecked);
  ASSERT_TRUE(QTest::qWaitFor([&] { return screen.model().totals().items == 5; }, 2000));
  developer = screen.groups()->topLevelItem(0);
  EXPECT_EQ(developer->checkState(0), Qt::PartiallyChecked);
  EXPECT_EQ(developer->text(1), "100 MB");
  EXPECT_EQ(screen.status()->text(), "5 items ticked, 185 MB");

  developer->setCheckState(0, Qt::Unchecked);
  ASSERT_TRUE(QTest::qWaitFor([&] { return screen.model().totals().items == 6; }, 2000))
      << "a group partly ticked is ticked whole";
}

TEST_F(QuickCleanScreenTest, ConfirmsThenRunsAndSummarises) {
  QuickCleanScreen screen(services());
  screen.show();
  ASSERT_TRUE(reached(screen, CleanerModel::Phase::ready));
  EXPECT_FALSE(screen.confirmationBox()->isVisible());
  screen.cleanButton()->click();
  ASSERT_TRUE(screen.confirmationBox()->isVisible());
  const std::vector<std::string> sentences = CleanerTexts::confirmation(screen.model().totals());
  ASSERT_EQ(sentences.size(), 2u);
  EXPECT_EQ(screen.confirmation()->text(), qs(sentences[0]) + "\n" + qs(sentences[1]));
  EXPECT_FALSE(screen.cleanButton()->isEnabled());
  EXPECT_EQ(screen.confirmButton()->text(), "Clean up");

  screen.cancelButton()->click();
  EXPECT_FALSE(screen.confirmationBox()->isVisible());
  EXPECT_TRUE(logged_.empty());

  screen.cleanButton()->click();
  screen.confirmButton()->click();
  ASSERT_TRUE(reached(screen, CleanerModel::Phase::done));
  EXPECT_TRUE(screen.summary()->isVisible());
  EXPECT_EQ(screen.summary()->text(),
            "Freed 460 MB\n25 MB is in the Trash; empty the Trash to free that space too.");
  // What went, item by item, beside each group's note of where; no ticks left to change.
  ASSERT_TRUE(screen.groups()->isVisible());
  EXPECT_EQ(topTitles(screen), (QStringList{"Developer caches", "App caches", "Old logs",
                                             "Browser caches", "Downloads installers"}));
  QTreeWidgetItem* developer = screen.groups()->topLevelItem(0);
  ASSERT_EQ(developer->childCount(), 3) << "the note and two items; the skipped one is not";
  EXPECT_EQ(developer->child(0)->text(0), "Deleted for good. It rebuilds on its own.");
  EXPECT_EQ(developer->child(1)->text(0), "npm cache");
  EXPECT_EQ(screen.groups()->topLevelItem(2)->child(0)->text(0),
            "Moved to the Trash, so you can get it back.");
  EXPECT_FALSE(developer->flags() & Qt::ItemIsUserCheckable);
  EXPECT_FALSE(developer->data(0, Qt::CheckStateRole).isValid()) << "no ticks left to change";
  ASSERT_EQ(logged_.size(), 1u);
  EXPECT_EQ(logged_[0].items, 6);
}

TEST_F(QuickCleanScreenTest, SaysWhenThereIsNothingToClean) {
  plan_ = CleanPlan{.groups = {group("Editor caches", CleanAction::delete_, {},
                                     {{"Code cache", "Code is open"}})}};
  QuickCleanScreen screen(services());
  screen.show();
  ASSERT_TRUE(reached(screen, CleanerModel::Phase::ready));
  EXPECT_TRUE(screen.emptyTitle()->isVisible());
  EXPECT_EQ(screen.emptyTitle()->text(), "Nothing to clean");
  EXPECT_TRUE(screen.emptyMessage()->isVisible());
  EXPECT_FALSE(screen.groups()->isVisible());
  EXPECT_FALSE(screen.cleanButton()->isEnabled());
}

}  // namespace
}  // namespace pellwin::ui
