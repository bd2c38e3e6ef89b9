#include "ui/settings_screen.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "app/models/live_model.h"
#include "testing/scratch_folder.h"

namespace pellwin::ui {
namespace {

struct Posted {
  std::string title, body;
  std::function<void(NotificationResult)> completion;
};

class SettingsScreenTest : public ::testing::Test {
 protected:
  SettingsScreen::Services services(const std::filesystem::path& autostartEntry) {
    return {.settings = UserSettings(QString::fromStdString((config_ / "tovrin.conf").string())),
            .loginItem = LoginItem(autostartEntry, "/usr/bin/tovrin"),
            .notify = [this](std::string title, std::string body,
                             std::function<void(NotificationResult)> completion) {
              posted_.push_back({std::move(title), std::move(body), std::move(completion)});
            }};
  }
  SettingsScreen::Services services() { return services(config_ / "autostart/x.desktop"); }

  testing::ScratchFolder config_;
  std::vector<Posted> posted_;
};

TEST_F(SettingsScreenTest, NotificationSwitchesAreOnUntilSwitchedOffAndKeptAcrossRestarts) {
  {
    SettingsScreen screen(services());
    for (const Resource resource : allResources) {
      SCOPED_TRACE(std::string(rawValue(resource)));
      ASSERT_NE(screen.notifySwitch(resource), nullptr);
      EXPECT_TRUE(screen.notifySwitch(resource)->isChecked()) << "never written means on";
    }
    screen.notifySwitch(Resource::cpu)->click();
    screen.notifySwitch(Resource::heat)->click();
    screen.notifySwitch(Resource::heat)->click();
  }
  const UserSettings stored(QString::fromStdString((config_ / "tovrin.conf").string()));
  EXPECT_EQ(stored.flag(LiveModel::notifyKey(Resource::cpu)), false)
      << "the key the live model reads";
  EXPECT_EQ(stored.flag(LiveModel::notifyKey(Resource::heat)), true);
  EXPECT_EQ(stored.flag(LiveModel::notifyKey(Resource::memory)), std::nullopt);

  SettingsScreen restarted(services());
  EXPECT_FALSE(restarted.notifySwitch(Resource::cpu)->isChecked());
  EXPECT_TRUE(restarted.notifySwitch(Resource::heat)->isChecked());
  EXPECT_TRUE(restarted.notifySwitch(Resource::memory)->isChecked());
}

TEST_F(SettingsScreenTest, StartAtLoginWritesAndRemovesTheAutostartEntry) {
  SettingsScreen screen(services());
  const auto entry = config_ / "autostart/x.desktop";
  EXPECT_FALSE(screen.startAtLogin()->isChecked());
  screen.startAtLogin()->click();
  EXPECT_TRUE(screen.startAtLogin()->isChecked());
  EXPECT_TRUE(std::filesystem::exists(entry));
  EXPECT_TRUE(screen.loginProblem()->isHidden());

  SettingsScreen restarted(services());
  EXPECT_TRUE(restarted.startAtLogin()->isChecked()) << "read back from the autostart folder";
  restarted.startAtLogin()->click();
  EXPECT_FALSE(restarted.startAtLogin()->isChecked());
  EXPECT_FALSE(std::filesystem::exists(entry));
}

TEST_F(SettingsScreenTest, StartAtLoginThatCannotBeWrittenSaysWhyAndStaysOff) {
  // A file where the autostart folder should be: no permission games, so it fails as root too.
  config_.write("autostart", "not a folder");
  SettingsScreen screen(services(config_ / "autostart/x.desktop"));
  screen.startAtLogin()->click();
  EXPECT_FALSE(screen.startAtLogin()->isChecked());
  EXPECT_FALSE(screen.loginProblem()->isHidden());
  EXPECT_TRUE(screen.loginProblem()->text().contains("autostart"))
      << screen.loginProblem()->text().toStdString();
}

TEST_F(SettingsScreenTest, TheTestNotificationShowsItsOutcome) {
  SettingsScreen screen(services());
  const struct {
    const char* why;
    NotificationResult result;
    const char* shown;
  } cases[] = {
      {"delivered", {.delivered = true}, "Sent. It should be on your screen now."},
      {"no server",
       {.reason = "no notification server is running"},
       "Not delivered: no notification server is running."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    posted_.clear();
    screen.testButton()->click();
    ASSERT_EQ(posted_.size(), 1u);
    EXPECT_EQ(posted_[0].title, "Tovrin notifications work");
    EXPECT_FALSE(screen.testButton()->isEnabled()) << "one test at a time";
    posted_[0].completion(c.result);
    EXPECT_EQ(screen.testResult()->text().toStdString(), c.shown);
    EXPECT_TRUE(screen.testButton()->isEnabled());
  }
}

TEST_F(SettingsScreenTest, AnOutcomeAfterTheScreenWentIsDropped) {
  auto screen = std::make_unique<SettingsScreen>(services());
  screen->testButton()->click();
  ASSERT_EQ(posted_.size(), 1u);
  screen.reset();
  posted_[0].completion({.delivered = true});  // must not touch the deleted widgets
}

}  // namespace
}  // namespace pellwin::ui
