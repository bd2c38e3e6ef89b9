#include "ui/panel.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <QTest>
#include <mutex>
#include <set>

#include "testing/monitor_scene.h"

namespace pellwin::ui {
namespace {

// Processes that end on the first signal they get.
class EndingSignals final : public ProcessSignals {
 public:
  std::expected<void, SystemError> send(std::int32_t pid, int signal) override {
    std::lock_guard lock(mutex_);
    sent_.insert({pid, signal});
    return {};
  }
  bool isRunning(std::int32_t pid) override {
    std::lock_guard lock(mutex_);
    return std::ranges::none_of(sent_, [pid](const auto& s) { return s.first == pid; });
  }
  std::set<std::pair<std::int32_t, int>> sent() {
    std::lock_guard lock(mutex_);
    return sent_;
  }

 private:
  std::mutex mutex_;
  std::set<std::pair<std::int32_t, int>> sent_;
};

struct PanelRig {
  LiveState state = testing::sceneState();
  std::shared_ptr<EndingSignals> kernel = std::make_shared<EndingSignals>();
  std::vector<QuitConfirmation> asked;
  bool answer = false;
  QuitControl quit{kernel, 5200, [this](const QuitConfirmation& c, QWidget*) {
                     asked.push_back(c);
                     return answer;
                   }};
  Panel panel{[this]() -> const LiveState& { return state; }, quit};

  PanelRig() { panel.popUpAt({400, 20}); }
};

TEST(Panel, SaysTheVerdictTheResourcesTheBusiestAppsAndTheAdvice) {
  PanelRig rig;
  EXPECT_EQ(rig.panel.texts(),
            (QStringList{
                "Memory is getting tight",
                "macOS is compressing memory to make room. Opening more apps will start the "
                "stutter.",
                "Memory: Memory tight",
                "CPU: CPU busy",
                "Disk space: Disk space low",
                "Disk activity: Healthy",
                "Heat: Healthy",
                "python3.12 train.py · 2.3 GB · 13%",
                "Firefox · 3.4 GB · 11%",
                "Visual Studio Code · 1.8 GB · 5%",
                "gnome-shell · 612 MB · 4%",
                "Slack · 940 MB · 2%",
                "•  Close Firefox tabs you don't need.",
                "•  Quit python3.12 train.py if it's not in use.",
                "•  Quit python3.12 train.py if it's not doing something you need.",
                "•  Empty the Trash and delete big files you don't need.",
            }));
  EXPECT_TRUE(rig.panel.windowFlags().testFlag(Qt::Popup)) << "Escape and a click outside close it";
}

TEST(Panel, FollowsTheStateWhileShownAndSaysSoBeforeTheFirstReading) {
  PanelRig rig;
  const int fullHeight = rig.panel.height();
  rig.state = LiveState{};
  rig.panel.refresh();
  EXPECT_EQ(rig.panel.texts(), QStringList{"Taking the first reading…"});
  EXPECT_LT(rig.panel.height(), fullHeight) << "no apps and no advice: the panel shrinks at once";

  rig.state = testing::sceneState();
  for (ResourceVerdict& resource : rig.state.verdict->resources) resource.advice.clear();
  rig.panel.refresh();
  EXPECT_EQ(rig.panel.texts().filter("•").size(), 0);
  EXPECT_LT(rig.panel.height(), fullHeight) << "without advice, at once";
  rig.state = testing::sceneState();
  rig.panel.refresh();
  EXPECT_EQ(rig.panel.height(), fullHeight);

  rig.state = testing::sceneState();
  rig.state.snapshot->apps.resize(2);
  rig.panel.refresh();
  EXPECT_EQ(rig.panel.texts().filter(" · ").size(), 2) << "rows for two apps only";

  rig.panel.hide();
  rig.state = LiveState{};
  rig.panel.refresh();
  EXPECT_EQ(rig.panel.texts().filter(" · ").size(), 2) << "a hidden panel reads nothing";
}

TEST(Panel, SaysHowManyAlertsAreUnreadAndOpensThem) {
  PanelRig rig;
  const int shortHeight = rig.panel.height();
  const struct {
    const char* why;
    std::int64_t count;
    QString shown;
  } cases[] = {
      {"three", 3, "3 new alerts"},
      {"one", 1, "1 new alert"},
      {"none hides the line", 0, ""},
      {"back again", 12, "12 new alerts"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    rig.panel.setUnreadAlerts(c.count);
    const QStringList texts = rig.panel.texts();
    EXPECT_EQ(rig.panel.alertsButton()->isVisible(), c.count > 0);
    if (c.count > 0) {
      EXPECT_EQ(texts.at(2), c.shown) << "under the headline and its reason";
      EXPECT_GT(rig.panel.height(), shortHeight) << "the panel grows to hold the line";
    } else {
      EXPECT_EQ(texts.filter("new alert").size(), 0);
      EXPECT_EQ(rig.panel.height(), shortHeight);
    }
  }
  int asked = 0;
  QObject::connect(&rig.panel, &Panel::alertsRequested, [&] { ++asked; });
  QTest::mouseClick(rig.panel.alertsButton(), Qt::LeftButton);
  EXPECT_EQ(asked, 1);
  EXPECT_FALSE(rig.panel.isVisible()) << "the panel steps aside for the window";

  rig.panel.setUnreadAlerts(2);
  rig.panel.popUpAt({400, 20});
  EXPECT_EQ(rig.panel.texts().at(2), "2 new alerts") << "a count set while hidden shows";
}

TEST(Panel, RefusesToQuitAPartOfTheSystemInItsOwnWords) {
  PanelRig rig;
  QTest::mouseClick(rig.panel.quitButton(3, false), Qt::LeftButton);  // gnome-shell
  EXPECT_TRUE(rig.asked.empty());
  EXPECT_TRUE(rig.kernel->sent().empty());
  EXPECT_TRUE(rig.panel.isVisible()) << "back after stepping aside";
  EXPECT_EQ(rig.panel.texts().at(2),
            "gnome-shell is part of macOS. Quitting it can log you out or it starts again "
            "straight away.");
}

TEST(Panel, AsksBeforeQuittingThenShowsTheAppBusyAndTheResult) {
  PanelRig rig;
  QTest::mouseClick(rig.panel.quitButton(1, true), Qt::LeftButton);  // Firefox
  ASSERT_EQ(rig.asked.size(), 1u);
  EXPECT_EQ(rig.asked[0], AppQuitter::confirmation(rig.state.snapshot->apps[1], true));
  EXPECT_TRUE(rig.kernel->sent().empty()) << "cancelled";

  rig.answer = true;
  QTest::mouseClick(rig.panel.quitButton(1, false), Qt::LeftButton);
  EXPECT_EQ(rig.asked.back().message, "Quit Firefox?");
  EXPECT_TRUE(rig.panel.texts().contains("Firefox · 3.4 GB · 11% · Quitting…"));
  EXPECT_TRUE(QTest::qWaitFor([&] { return rig.quit.result().has_value(); }, 10'000));
  EXPECT_EQ(rig.panel.texts().at(2), "Quit Firefox, freeing about 3.4 GB.");
  EXPECT_TRUE(rig.kernel->sent().contains({2200, SIGTERM}));

  rig.quit.dismissResult();
  EXPECT_EQ(rig.panel.texts().at(2), "Memory: Memory tight");
}

}  // namespace
}  // namespace pellwin::ui
