// Renders the panel and the main window's Monitor screen for the busy-afternoon scene, in a
// light and a dark palette, into <build>/screenshots, for people to look at. Checks only that
// each picture was written.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QPalette>

#include "testing/monitor_scene.h"
#include "ui/alerts_screen.h"
#include "ui/history_screen.h"
#include "ui/main_window.h"
#include "ui/monitor_screen.h"
#include "ui/panel.h"
#include "ui/report_screen.h"
#include "ui/screenshot_palettes.h"
#include "ui/seeded_history_fixture.h"

namespace pellwin::ui {
namespace {

class FakeSignals final : public ProcessSignals {
 public:
  std::expected<void, SystemError> send(std::int32_t, int) override { return {}; }
  bool isRunning(std::int32_t) override { return false; }
};

void render(const QString& theme, const QPalette& palette) {
  const QPalette saved = QApplication::palette();
  QApplication::setPalette(palette);
  const LiveState state = testing::sceneState();
  QuitControl quit(std::make_shared<FakeSignals>(), 1,
                   [](const QuitConfirmation&, QWidget*) { return false; });
  const QString folder = QString(PELLWIN_BINARY_DIR) + "/screenshots";
  QDir().mkpath(folder);

  Panel panel([&]() -> const LiveState& { return state; }, quit);
  panel.setUnreadAlerts(3);
  panel.popUpAt({900, 30});
  const QString panelFile = folder + "/panel-" + theme + ".png";
  EXPECT_TRUE(panel.grab().save(panelFile)) << panelFile.toStdString();

  MainWindow window;
  auto* monitor = new MonitorScreen([&]() -> const LiveState& { return state; }, quit);
  window.addScreen("Monitor", monitor);
  for (const char* later :
       {"Report", "History", "Alerts", "Disk cleanup", "Quick clean", "Settings"}) {
    window.addScreen(later, new QWidget);
  }
  window.show();
  monitor->select("pid:4120");
  // Wrapped lines settle the cards' heights over a few layout passes.
  for (int pass = 0; pass < 3; ++pass) QApplication::processEvents();
  const QString windowFile = folder + "/monitor-" + theme + ".png";
  EXPECT_TRUE(window.grab().save(windowFile)) << windowFile.toStdString();
  QApplication::setPalette(saved);
}

TEST(Screenshots, PanelAndMonitorInLightAndDarkThemes) {
  render("light", lightPalette());
  render("dark", darkPalette());
}

class HistoryScreenshots : public SeededHistoryTest {
 protected:
  void render(const QString& theme, const QPalette& palette) {
    const QPalette saved = QApplication::palette();
    QApplication::setPalette(palette);
    const auto path = local() / (theme.toStdString() + ".sqlite");
    std::filesystem::copy_file(seeded() / "seeded.sqlite", path);
    ASSERT_TRUE(store(path).logClean(now - 5400, "Browser caches", 1'200'000'000, 0, 340));
    HistoryRecorder recorder(recorderSetup(path));
    MainWindow window;
    window.addScreen("Monitor", new QWidget);
    auto* report = new ReportScreen({.recorder = recorder, .now = clock(), .calendar = calendar()});
    auto* history = new HistoryScreen(
        {.recorder = recorder, .now = clock(), .calendar = calendar(), .coreCount = 8});
    auto* alerts = new AlertsScreen({.recorder = recorder, .now = clock(), .calendar = calendar()});
    window.addScreen("Report", report);
    window.addScreen("History", history);
    window.addScreen("Alerts", alerts);
    for (const char* later : {"Disk cleanup", "Quick clean", "Settings"}) {
      window.addScreen(later, new QWidget);
    }
    recorder.onChange([&] {
      const std::int64_t unread = recorder.unreadAlerts();
      window.setBadge("Alerts", unread > 0 ? QString::number(unread) : QString());
    });
    ASSERT_TRUE(settle([&] { return recorder.unreadAlerts() > 0; }));
    window.show();
    const QString folder = QString(PELLWIN_BINARY_DIR) + "/screenshots";
    QDir().mkpath(folder);
    const auto save = [&](const char* name) {
      for (int pass = 0; pass < 3; ++pass) QApplication::processEvents();
      const QString file = folder + "/" + name + "-" + theme + ".png";
      EXPECT_TRUE(window.grab().save(file)) << file.toStdString();
    };

    window.showScreen("Report");
    ASSERT_TRUE(settle([&] { return report->model().report().has_value(); }));
    save("report");

    window.showScreen("History");
    ASSERT_TRUE(settle([&] { return history->model().view() && !history->model().loading(); }));
    // Point at the afternoon's worst stretch, as a user asking who was behind it would.
    HistoryChart* chart = history->chart();
    const QPointF at = chart->positionOf(now - 3 * 3600);
    QMouseEvent move(QEvent::MouseMove, at, chart->surface()->mapToGlobal(at), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(chart->surface(), &move);
    ASSERT_TRUE(settle([&] { return history->model().lookup().has_value(); }));
    save("history");

    window.showScreen("Alerts");
    ASSERT_TRUE(settle([&] { return alerts->model().sections().has_value(); }));
    save("alerts");
    QApplication::setPalette(saved);
  }
};

TEST_F(HistoryScreenshots, ReportHistoryAndAlertsInLightAndDarkThemes) {
  render("light", lightPalette());
  render("dark", darkPalette());
}

}  // namespace
}  // namespace pellwin::ui
