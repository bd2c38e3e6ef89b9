#include "ui/disk_cleanup_screen.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QLayout>
#include <QTest>
#include <cmath>
#include <numbers>

#include "core/space/space_map_texts.h"
#include "testing/home_tree.h"
#include "ui/ui_text.h"

// Failures show the texts rather than their bytes.
static void PrintTo(const QString& text, std::ostream* out) { *out << text.toStdString(); }

namespace pellwin::ui {
namespace {

using namespace testing::home_tree;

// A JavaScript project with its packages, documents, a film, a cache and security keys.
SizeNode sampleHome() {
  using enum StorageCategory;
  SizeNode app = folder("code/app", 2'000'000,
                        {folder("code/app/node_modules", 30'000'000, {}, developer),
                         file("code/app/data.bin", 8'000'000, developer)},
                        developer);
  app.markers = std::vector<std::string>{"package.json"};
  return folder("", 1'000'000,
                {folder("code", 0, {std::move(app)}, developer),
                 folder("Documents", 10'000'000, {file("Documents/old.mov", 19'000'000, yourFiles)},
                        yourFiles),
                 file("film.mov", 20'000'000, yourFiles),
                 folder(".cache", 0, {folder(".cache/pip", 3'000'000, {}, appData)}, appData),
                 folder(".ssh", 1'000'000, {})});
}

SpaceMapModel::Services fakeServices() {
  return {
      .access = [] { return FullDiskAccess::State::unknown; },
      .loadCache =
          [] {
            return std::optional<CachedScan>(CachedScan{.tree = sampleHome(),
                                                        .scannedAt = 1000,
                                                        .root = home,
                                                        .access = FullDiskAccess::State::unknown});
          },
      .saveCache = [](const CachedScan&) {},
      .scan = [](const ScanRoot&, const ScanProgressHandler&, std::stop_token)
          -> std::expected<WalkResult, ScanError> { return WalkResult{.tree = sampleHome()}; },
      .remove =
          [](const std::vector<TrashItem>& items, CleanAction) {
            std::vector<TrashResult> results;
            for (const TrashItem& item : items)
              results.push_back(
                  {.path = item.path, .bytes = item.bytes, .outcome = TrashResult::Outcome::moved});
            return results;
          },
      .now = [] { return 5000.0; },
      .steadyNow = [] { return 0.0; },
  };
}

class DiskCleanupScreenTest : public ::testing::Test {
 protected:
  void SetUp() override {
    screen_.resize(860, 640);
    screen_.show();
    ASSERT_TRUE(settled());
  }

  bool settled() {
    return QTest::qWaitFor(
        [this] { return screen_.model().phase() == SpaceMapModel::Phase::ready; }, 5000);
  }

  QStringList column(QTreeWidget* list, int index) {
    QStringList out;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
      out << list->topLevelItem(row)->text(index);
    return out;
  }

  QStringList crumbs() {
    QStringList out;
    QLayout* row = screen_.breadcrumb()->layout();
    for (int i = 0; i < row->count(); ++i) {
      QWidget* crumb = row->itemAt(i)->widget();
      if (auto* button = qobject_cast<QPushButton*>(crumb)) out << button->text();
      if (auto* label = qobject_cast<QLabel*>(crumb);
          label && label->text() != QString::fromUtf8("›"))
        out << label->text() + " (here)";
    }
    return out;
  }

  // The middle of the arc of that name on the rings.
  QPoint arcPoint(const std::string& name) {
    SunburstView* rings = screen_.rings();
    const SunburstGeometry g = rings->geometryNow();
    for (const SunburstArc& arc : rings->arcs()) {
      if (arc.name != name) continue;
      const double radius = g.innerRadius(arc.ring) + g.ringWidth / 2;
      const double radians = (arc.startDegrees + arc.endDegrees) / 2 * std::numbers::pi / 180;
      return (g.centre + QPointF(radius * std::sin(radians), -radius * std::cos(radians)))
          .toPoint();
    }
    ADD_FAILURE() << "no arc named " << name;
    return {};
  }

  void clickArc(const std::string& name) {
    QTest::mouseClick(screen_.rings(), Qt::LeftButton, {}, arcPoint(name));
  }

  // A right-click there: whether the arc menu opened, and its one action.
  QAction* rightClick(QPoint at) {
    screen_.arcMenu()->hide();
    SunburstView* rings = screen_.rings();
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, rings->mapToGlobal(at));
    QApplication::sendEvent(rings, &event);
    if (!screen_.arcMenu()->isVisible()) return nullptr;
    EXPECT_EQ(screen_.arcMenu()->actions().size(), 1);
    return screen_.arcMenu()->actions().value(0);
  }

  DiskCleanupScreen screen_{home, RemovalGuards{}, fakeServices()};
};

TEST_F(DiskCleanupScreenTest, ShowsTheCachedMapWithItsBiggestItemsCategoriesAndProjects) {
  EXPECT_TRUE(spaceMapStatus(screen_.model(), 2000).startsWith("Scanned /home/ann at "));
  EXPECT_EQ(column(screen_.biggest(), 0), (QStringList{"film.mov", "old.mov", "data.bin"}));
  EXPECT_EQ(column(screen_.biggest(), 1), (QStringList{"20 MB", "19 MB", "8 MB"}));
  EXPECT_EQ(column(screen_.categories(), 0),
            (QStringList{"App data", "Developer", "Your files", "Other"}));
  EXPECT_EQ(column(screen_.categories(), 1), (QStringList{"3 MB", "40 MB", "49 MB", "2 MB"}));
  ASSERT_EQ(screen_.projects()->topLevelItemCount(), 1);
  QTreeWidgetItem* project = screen_.projects()->topLevelItem(0);
  EXPECT_EQ(project->text(0), QString::fromUtf8("app  ·  JavaScript project"));
  ASSERT_EQ(project->childCount(), 1);
  EXPECT_EQ(project->child(0)->text(0), "node_modules");
  EXPECT_EQ(project->child(0)->text(1), "30 MB");
  ASSERT_EQ(project->child(0)->childCount(), 1) << "the sentence saying how it comes back";
  EXPECT_FALSE(project->child(0)->child(0)->text(0).isEmpty());
  EXPECT_EQ(crumbs(), QStringList{"ann (here)"});
}

TEST_F(DiskCleanupScreenTest, AClickGoesIntoAFolderAndTheBreadcrumbOrTheCentreGoesBack) {
  clickArc("code");
  EXPECT_EQ(screen_.model().focus()->path, home + "/code");
  clickArc("app");
  EXPECT_EQ(screen_.model().focus()->path, home + "/code/app");
  EXPECT_EQ(crumbs(), (QStringList{"ann", "code", "app (here)"}));
  EXPECT_EQ(column(screen_.biggest(), 0), QStringList{"data.bin"}) << "under the focus only";
  EXPECT_EQ(screen_.picked()->text(), "app (40 MB)") << "the focus is what gets picked";

  screen_.breadcrumb()->findChildren<QPushButton*>()[1]->click();
  EXPECT_EQ(screen_.model().focus()->path, home + "/code");
  QTest::mouseClick(screen_.rings(), Qt::LeftButton, {},
                    screen_.rings()->geometryNow().centre.toPoint());
  EXPECT_EQ(screen_.model().focus()->path, home);
  EXPECT_EQ(crumbs(), QStringList{"ann (here)"});

  clickArc("film.mov");
  EXPECT_EQ(screen_.model().focus()->path, home) << "a file is picked, not gone into";
  EXPECT_EQ(screen_.picked()->text(), "film.mov (20 MB)");
  screen_.addPickedButton()->click();
  EXPECT_EQ(screen_.deleteList()->total()->text(), "1 item, 20 MB");
  EXPECT_FALSE(screen_.addPickedButton()->isEnabled()) << "already on the list";
}

TEST_F(DiskCleanupScreenTest, TheDeleteListShowsItsTotalRefusalsConfirmationAndResults) {
  DeleteListPanel* list = screen_.deleteList();
  EXPECT_EQ(list->total()->text(), "Nothing picked yet");
  EXPECT_FALSE(list->trashButton()->isEnabled());

  screen_.addProjectsButton()->click();
  screen_.model().addToDeleteList(home + "/.ssh");
  ASSERT_EQ(list->items()->count(), 1);
  EXPECT_EQ(list->items()->item(0)->text(), "node_modules   30 MB");
  EXPECT_EQ(list->total()->text(), "1 item, 30 MB");
  EXPECT_EQ(list->refusals()->text(), QString::fromUtf8("•  .ssh: It holds your security keys"));
  EXPECT_FALSE(list->confirmation()->isVisible());

  list->trashButton()->click();
  ASSERT_TRUE(list->confirmation()->isVisible());
  EXPECT_TRUE(
      list->confirmation()->text().startsWith(qs(SpaceMapTexts::trashConfirmation(1, 30'000'000))));
  EXPECT_EQ(list->confirmButton()->text(), "Move to Trash");
  EXPECT_FALSE(list->trashButton()->isEnabled()) << "one confirmation at a time";

  list->confirmButton()->click();
  ASSERT_TRUE(settled());
  EXPECT_FALSE(list->confirmation()->isVisible());
  EXPECT_EQ(list->results()->text(),
            QString::fromUtf8("•  ") +
                qs(SpaceMapTexts::result({.path = home + "/code/app/node_modules",
                                          .bytes = 30'000'000,
                                          .outcome = TrashResult::Outcome::moved})));
  EXPECT_EQ(list->total()->text(), "Nothing picked yet");
  EXPECT_EQ(column(screen_.projects(), 0), QStringList{DiskCleanupScreen::noProjects})
      << "the tree lost what went";
}

TEST_F(DiskCleanupScreenTest, ARightClickOnAnArcOffersToAddItsItemToTheDeleteList) {
  DeleteListPanel* list = screen_.deleteList();
  EXPECT_EQ(rightClick(screen_.rings()->geometryNow().centre.toPoint()), nullptr)
      << "no menu in the hole";

  QAction* add = rightClick(arcPoint("code"));
  ASSERT_NE(add, nullptr) << "a folder's arc has the menu";
  EXPECT_EQ(add->text(), "Add to delete list");
  EXPECT_TRUE(add->isEnabled());
  add->trigger();
  ASSERT_EQ(list->items()->count(), 1);
  EXPECT_TRUE(list->items()->item(0)->text().startsWith("code   "));
  EXPECT_EQ(screen_.model().focus()->path, home) << "the right-click did not go into the folder";

  add = rightClick(arcPoint("app"));
  ASSERT_NE(add, nullptr);
  EXPECT_FALSE(add->isEnabled()) << "inside a folder already in the list";

  add = rightClick(arcPoint(".ssh"));
  ASSERT_NE(add, nullptr);
  add->trigger();
  EXPECT_EQ(list->items()->count(), 1) << "refused";
  EXPECT_EQ(list->refusals()->text(), QString::fromUtf8("•  .ssh: It holds your security keys"));

  add = rightClick(arcPoint("film.mov"));
  ASSERT_NE(add, nullptr) << "a file's arc has it too";
  add->trigger();
  EXPECT_EQ(list->items()->count(), 2);
}

}  // namespace
}  // namespace pellwin::ui
