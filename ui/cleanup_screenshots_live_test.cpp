// Renders the Disk cleanup and Quick clean screens, in the main window, over a scratch home
// scanned for real: caches, a JavaScript project with node_modules, a Rust project with its
// target folder, documents, and security keys the delete list refuses; quick clean finds the
// caches while a stand-in "yarn" runs. Pictures of the map with its delete list, the
// confirmation and the results, and of quick clean before and after its run, land in
// <build>/screenshots for people to look at. Checks only what the pictures depend on.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QTest>
#include <filesystem>

#include "app/models/quick_clean.h"
#include "app/models/space_map.h"
#include "app/removal_guards.h"
#include "app/system_calendar.h"
#include "testing/child_process.h"
#include "testing/trash_test_support.h"
#include "ui/disk_cleanup_screen.h"
#include "ui/main_window.h"
#include "ui/quick_clean_screen.h"
#include "ui/screenshot_palettes.h"

namespace pellwin::ui {
namespace {

void fill(const std::string& home, const std::string& relative, std::size_t bytes) {
  const std::filesystem::path file = std::filesystem::path(home) / relative;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << std::string(bytes, 'x');
}

void makeHome(const std::string& home) {
  fill(home, ".cache/pip/wheels/numpy.whl", 3'400'000);
  fill(home, ".npm/_cacache/content-v2/sha512/ab", 2'600'000);
  fill(home, ".cache/yarn/v6/react.tgz", 2'200'000);
  fill(home, ".cache/thumbnails/large/a.png", 1'800'000);
  fill(home, ".cache/fontconfig/cache-9", 1'200'000);
  fill(home, "code/web/package.json", 400);
  fill(home, "code/web/src/app.js", 90'000);
  fill(home, "code/web/node_modules/react/index.js", 6'500'000);
  fill(home, "code/web/node_modules/typescript/lib/tsc.js", 4'200'000);
  fill(home, "code/tool/Cargo.toml", 300);
  fill(home, "code/tool/src/main.rs", 40'000);
  fill(home, "code/tool/target/debug/tool", 9'000'000);
  fill(home, "Documents/report.pdf", 4'100'000);
  fill(home, "Documents/notes.txt", 30'000);
  fill(home, "Videos/trip.mkv", 14'000'000);
  fill(home, ".ssh/id_ed25519", 400);
  fill(home, ".ssh/keys-backup.tar", 1'300'000);
}

Environment environmentFor(const testing::ScratchHome& scratch) {
  return Environment{.home = scratch.home, .xdgDataHome = scratch.dataHome};
}

QString shotPath(const QString& name) {
  const QString folder = QString(PELLWIN_BINARY_DIR) + "/screenshots";
  QDir().mkpath(folder);
  return folder + "/" + name + ".png";
}

void settle() {
  for (int pass = 0; pass < 3; ++pass) QApplication::processEvents();
}

void save(MainWindow& window, const QString& name) {
  settle();
  EXPECT_TRUE(window.grab().save(shotPath(name))) << name.toStdString();
}

void addOthers(MainWindow& window, std::initializer_list<const char*> names) {
  for (const char* name : names) window.addScreen(name, new QWidget);
}

void renderDiskCleanup(const QString& theme, bool showRun) {
  testing::ScratchHome scratch;
  makeHome(scratch.home);
  const Environment environment = environmentFor(scratch);
  MainWindow window;
  addOthers(window, {"Monitor", "Report", "History", "Alerts"});
  auto* screen = new DiskCleanupScreen(environment.home, removalGuards(environment),
                                       spaceMapServices(environment, nullptr));
  window.addScreen("Disk cleanup", screen);
  addOthers(window, {"Quick clean", "Settings"});
  window.showScreen("Disk cleanup");
  window.show();
  SpaceMapModel& model = screen->model();
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.phase() == SpaceMapModel::Phase::ready; }, 20000));
  ASSERT_NE(model.tree(), nullptr);
  model.addRebuildPlanToDeleteList();
  EXPECT_TRUE(model.addToDeleteList(scratch.home + "/.ssh").has_value());
  EXPECT_EQ(model.deleteList().count(), 2u) << "node_modules and target";
  if (!showRun) {
    for (std::size_t i = 0; i < screen->rings()->arcs().size(); ++i)
      if (screen->rings()->arcs()[i].name == "code") screen->clickArc(static_cast<int>(i));
    EXPECT_EQ(model.focus()->name, "code");
  }
  save(window, "disk-cleanup-" + theme);
  if (!showRun) return;

  model.requestRemoval(CleanAction::trash);
  save(window, "disk-cleanup-confirm-" + theme);
  model.confirmRemoval();
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.phase() == SpaceMapModel::Phase::ready; }, 20000));
  EXPECT_FALSE(std::filesystem::exists(scratch.home + "/code/web/node_modules"));
  EXPECT_TRUE(std::filesystem::exists(scratch.trash() + "/files/node_modules"));
  save(window, "disk-cleanup-done-" + theme);
}

void renderQuickClean(const QString& theme, bool showRun) {
  testing::ScratchHome scratch;
  makeHome(scratch.home);
  const Environment environment = environmentFor(scratch);
  // A program named like a tool whose cache it keeps: its cache is left alone.
  const std::string yarn = scratch.scratch.path().string() + "/yarn";
  std::filesystem::create_symlink("/bin/sleep", yarn);
  const testing::ChildProcess running({yarn, "60"});
  ASSERT_GT(running.pid(), 0);

  MainWindow window;
  addOthers(window, {"Monitor", "Report", "History", "Alerts", "Disk cleanup"});
  auto* screen = new QuickCleanScreen(CleanerModel::Services{
      .scan =
          [environment] {
            const double now = systemNow();
            return plannedClean(environment, readRunningSet(environment, now), now);
          },
      .remove = [environment](const CleanBatch& batch) { return removeBatch(environment, batch); },
      .logClean = [](std::string_view, std::uint64_t, std::uint64_t, int) {},
  });
  window.addScreen("Quick clean", screen);
  addOthers(window, {"Settings"});
  window.showScreen("Quick clean");
  window.show();
  CleanerModel& model = screen->model();
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.phase() == CleanerModel::Phase::ready; }, 20000));
  EXPECT_GT(model.totals().items, 0);
  save(window, "quick-clean-" + theme);
  if (!showRun) return;

  model.requestClean();
  save(window, "quick-clean-confirm-" + theme);
  model.clean();
  ASSERT_TRUE(QTest::qWaitFor([&] { return model.phase() == CleanerModel::Phase::done; }, 20000));
  EXPECT_FALSE(std::filesystem::exists(scratch.home + "/.cache/pip"));
  EXPECT_TRUE(std::filesystem::exists(scratch.home + "/.cache/yarn/v6/react.tgz"))
      << "left alone while yarn runs";
  save(window, "quick-clean-done-" + theme);
}

TEST(CleanupScreenshots, DiskCleanupAndQuickCleanOnAScratchHome) {
  const QPalette saved = QApplication::palette();
  QApplication::setPalette(lightPalette());
  renderDiskCleanup("light", true);
  renderQuickClean("light", true);
  QApplication::setPalette(darkPalette());
  renderDiskCleanup("dark", false);
  renderQuickClean("dark", false);
  QApplication::setPalette(saved);
}

}  // namespace
}  // namespace pellwin::ui
