// Renders the panel and the main window's Monitor screen for the busy-afternoon scene, in a
// light and a dark palette, into <build>/screenshots, for people to look at. Checks only that
// each picture was written.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QPalette>

#include "testing/monitor_scene.h"
#include "ui/main_window.h"
#include "ui/monitor_screen.h"
#include "ui/panel.h"

namespace pellwin::ui {
namespace {

class FakeSignals final : public ProcessSignals {
 public:
  std::expected<void, SystemError> send(std::int32_t, int) override { return {}; }
  bool isRunning(std::int32_t) override { return false; }
};

QPalette darkPalette() {
  QPalette p;
  const QColor window(0x2B, 0x2D, 0x31);
  const QColor base(0x1F, 0x21, 0x24);
  const QColor text(0xE8, 0xE8, 0xEA);
  p.setColor(QPalette::Window, window);
  p.setColor(QPalette::WindowText, text);
  p.setColor(QPalette::Base, base);
  p.setColor(QPalette::AlternateBase, window.lighter(115));
  p.setColor(QPalette::Text, text);
  p.setColor(QPalette::Button, window.lighter(120));
  p.setColor(QPalette::ButtonText, text);
  p.setColor(QPalette::Light, window.lighter(160));
  p.setColor(QPalette::Midlight, window.lighter(135));
  p.setColor(QPalette::Mid, window.lighter(150));
  p.setColor(QPalette::Dark, window.darker(150));
  p.setColor(QPalette::Shadow, Qt::black);
  p.setColor(QPalette::Highlight, QColor(0x35, 0x84, 0xE4));
  p.setColor(QPalette::HighlightedText, Qt::white);
  p.setColor(QPalette::PlaceholderText, QColor(0xA0, 0xA3, 0xA8));
  p.setColor(QPalette::ToolTipBase, base);
  p.setColor(QPalette::ToolTipText, text);
  return p;
}

QPalette lightPalette() {
  QPalette p = QApplication::style()->standardPalette();
  p.setColor(QPalette::PlaceholderText, QColor(0x6B, 0x6E, 0x73));
  return p;
}

void render(const QString& theme, const QPalette& palette) {
  const QPalette saved = QApplication::palette();
  QApplication::setPalette(palette);
  const LiveState state = testing::sceneState();
  QuitControl quit(std::make_shared<FakeSignals>(), 1,
                   [](const QuitConfirmation&, QWidget*) { return false; });
  const QString folder = QString(PELLWIN_BINARY_DIR) + "/screenshots";
  QDir().mkpath(folder);

  Panel panel([&]() -> const LiveState& { return state; }, quit);
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

}  // namespace
}  // namespace pellwin::ui
