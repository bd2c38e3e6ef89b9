#include "ui/start_plan.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "ui/user_settings.h"

namespace pellwin::ui {
namespace {

TEST(StartPlan, TheTourOnlyOnTheFirstLaunchAndTheWindowOnlyWhenNeeded) {
  const struct {
    const char* why;
    bool firstLaunch, trayAvailable, capture;
    StartPlan expected;
  } cases[] = {
      {"first launch with a tray", true, true, false, {.openWindow = true, .showTour = true}},
      {"first launch without a tray", true, false, false, {.openWindow = true, .showTour = true}},
      {"later launch: the dot only", false, true, false, {}},
      {"later launch without a tray: the window", false, false, false, {.openWindow = true}},
      {"later launch for screenshots", false, true, true, {.openWindow = true}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(startPlan(c.firstLaunch, c.trayAvailable, c.capture), c.expected);
  }
}

TEST(UserSettings, KeptAcrossRestartsAndTheFirstLaunchIsRecordedOnce) {
  QTemporaryDir config;
  ASSERT_TRUE(config.isValid());
  const Environment environment{.home = "/nowhere", .xdgConfigHome = config.path().toStdString()};
  {
    const UserSettings first = UserSettings::forUser(environment);
    EXPECT_EQ(first.flag("notify.cpu"), std::nullopt) << "never written";
    EXPECT_TRUE(recordLaunch(first));
    first.setFlag("notify.cpu", false);
    first.setFlag("notify.heat", true);
    first.setText(UserSettings::monitorSortKey, "energy");
  }
  QFile file(config.path() + "/tovrin/tovrin.conf");
  ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "written to disk at once";
  EXPECT_TRUE(file.readAll().contains("notify.cpu=false"));
  // A later start opens the same file afresh.
  const UserSettings later = UserSettings::forUser(environment);
  EXPECT_EQ(later.file(), config.path() + "/tovrin/tovrin.conf");
  EXPECT_EQ(later.flag("notify.cpu"), false);
  EXPECT_EQ(later.flag("notify.heat"), true);
  EXPECT_EQ(later.text(UserSettings::monitorSortKey), "energy");
  EXPECT_EQ(later.text("monitor.never"), std::nullopt);
  EXPECT_FALSE(recordLaunch(later));
  EXPECT_FALSE(recordLaunch(later));
  EXPECT_EQ(later.flag(UserSettings::hasLaunchedKey), true);
}

}  // namespace
}  // namespace pellwin::ui
