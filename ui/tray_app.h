// The running app: owns the models (live monitor, history) and the widgets that observe them
// (tray dot, main window), and wires each model's `post` to the Qt event loop. One per
// process, made by main() once the command line chose the tray app.
#pragma once

#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>
#include <memory>

#include "app/command_line.h"
#include "app/desktop/login_item.h"
#include "app/environment.h"
#include "app/models/history_recorder.h"
#include "app/models/live_model.h"
#include "app/models/notifier.h"
#include "app/steady_ticker.h"
#include "ui/alerts_screen.h"
#include "ui/history_screen.h"
#include "ui/main_window.h"
#include "ui/monitor_screen.h"
#include "ui/panel.h"
#include "ui/report_screen.h"
#include "ui/user_settings.h"

namespace pellwin::ui {

class TrayApp : public QObject {
  Q_OBJECT

 public:
  TrayApp(const Command& command, const Environment& environment);
  ~TrayApp() override;

  // Shows the dot when a tray host is there; opens the window (with the tour on the first
  // launch) as the start plan says: a desktop without a tray still gets the whole product.
  // Starts the launch checks when "--status" asked for them.
  void start();

  [[nodiscard]] LiveModel& live() { return *live_; }
  [[nodiscard]] HistoryRecorder& history() { return *history_; }
  [[nodiscard]] MainWindow& window() { return *window_; }
  [[nodiscard]] QSystemTrayIcon* tray() { return tray_; }
  [[nodiscard]] Notifier& notifier() { return *notifier_; }

  void openWindow();
  void quit();

 private:
  void liveChanged();
  void reconcileVisibility();
  void addSettingsScreen();
  void keepMonitorSort();
  void addHistoryScreens();
  void historyChanged();
  void showTour();

  LaunchOptions launch_;
  UserSettings settings_;
  LoginItem loginItem_;
  SteadyTicker ticker_;
  std::unique_ptr<Notifier> notifier_;
  std::unique_ptr<HistoryRecorder> history_;
  std::unique_ptr<LiveModel> live_;
  std::unique_ptr<MainWindow> window_;
  QPointer<QSystemTrayIcon> tray_;
  QuitControl* quit_;  // a child: outlives the panel and the screens, which use it
  std::unique_ptr<Panel> panel_;
  MonitorScreen* monitor_;  // owned by the window
  ReportScreen* report_;    // owned by the window
  HistoryScreen* historyScreen_;
  AlertsScreen* alerts_;
  Health shownDot_ = Health::ok;
};

// Runs the tray app until "Quit Tovrin"; returns the exit status.
[[nodiscard]] int runTrayApp(int argc, char** argv, const Command& command,
                             const Environment& environment);

}  // namespace pellwin::ui
