#include "ui/tray_app.h"

#include <unistd.h>

#include <QApplication>
#include <QCursor>
#include <QMenu>

#include "app/desktop/kernel_process_signals.h"
#include "app/entry.h"
#include "app/system_calendar.h"
#include "app/system_roots.h"
#include "probe/system/system_reader.h"
#include "ui/post_to.h"
#include "ui/tray_dot.h"
#include "ui/user_settings.h"

namespace pellwin::ui {

TrayApp::TrayApp(const Command& command, const Environment& environment)
    : window_(std::make_unique<MainWindow>()) {
  history_ = std::make_unique<HistoryRecorder>(HistoryRecorderSetup{
      .url = historyFile(command, environment),
      .post = postTo(this),
      .now = systemNow,
      .calendar = systemCalendar,
  });
  auto reader = std::make_shared<SystemReader>(systemReaderRoots(environment));
  live_ = std::make_unique<LiveModel>(LiveModel::Services{
      .read = [reader] { return reader->read(); },
      .setting = [](std::string_view key) { return storedFlag(key); },
      .notify = [](std::string, std::string) {},
      .record =
          [this](Snapshot snapshot, std::map<Resource, Health> displayed,
                 std::map<Resource, Lead> leads, std::vector<AlertNotice> alerted) {
            history_->record(std::move(snapshot), std::move(displayed), std::move(leads),
                             std::move(alerted));
          },
      .post = postTo(this),
      .ticker = &ticker_,
  });
  live_->onChange([this] { liveChanged(); });
  const auto state = [this]() -> const LiveState& { return live_->state(); };
  quit_ =
      new QuitControl(std::make_shared<KernelProcessSignals>(systemReaderRoots(environment).proc),
                      getpid(), {}, this);
  panel_ = std::make_unique<Panel>(state, *quit_);
  window_->addScreen("Monitor", monitor_ = new MonitorScreen(state, *quit_));
  connect(panel_.get(), &Panel::openRequested, this, &TrayApp::openWindow);
  connect(panel_.get(), &Panel::quitRequested, this, &TrayApp::quit);
  connect(panel_.get(), &Panel::visibilityChanged, this, &TrayApp::reconcileVisibility);
  connect(window_.get(), &MainWindow::quitRequested, this, &TrayApp::quit);
  connect(window_.get(), &MainWindow::visibilityChanged, this, &TrayApp::reconcileVisibility);
}

// The models stop (and drain their queues) before the widgets that observe them go.
TrayApp::~TrayApp() {
  live_.reset();
  history_.reset();
}

void TrayApp::start() {
  if (QSystemTrayIcon::isSystemTrayAvailable()) {
    tray_ = new QSystemTrayIcon(dotIcon(shownDot_), this);
    tray_->setToolTip("Tovrin");
    auto* menu = new QMenu(window_.get());
    connect(menu->addAction("Open Tovrin"), &QAction::triggered, this, &TrayApp::openWindow);
    connect(menu->addAction("Quit Tovrin"), &QAction::triggered, this, &TrayApp::quit);
    tray_->setContextMenu(menu);
    connect(tray_, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason why) {
              if (why == QSystemTrayIcon::Trigger) panel_->popUpAt(QCursor::pos());
            });
    tray_->show();
  } else {
    openWindow();
  }
}

void TrayApp::openWindow() {
  window_->show();
  window_->raise();
  window_->activateWindow();
}

void TrayApp::quit() { QCoreApplication::quit(); }

void TrayApp::liveChanged() {
  const LiveState& state = live_->state();
  if (tray_) {
    if (state.worst() != shownDot_) {
      shownDot_ = state.worst();
      tray_->setIcon(dotIcon(shownDot_));
    }
    if (state.verdict) tray_->setToolTip(QString::fromStdString(state.verdict->shortStatus()));
  }
  panel_->refresh();
  monitor_->refresh();
}

void TrayApp::reconcileVisibility() {
  if (live_) live_->reconcileVisibility(window_->isVisible() || (panel_ && panel_->isVisible()));
}

int runTrayApp(int argc, char** argv, const Command& command, const Environment& environment) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("Tovrin");
  QApplication::setDesktopFileName("com.pellwin.Pellwin");
  QApplication::setQuitOnLastWindowClosed(false);
  TrayApp app(command, environment);
  app.start();
  return QApplication::exec();
}

}  // namespace pellwin::ui
