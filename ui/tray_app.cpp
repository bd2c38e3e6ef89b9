#include "ui/tray_app.h"

#include <unistd.h>

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <iostream>
#include <thread>

#include "app/desktop/kernel_process_signals.h"
#include "app/desktop/session_bus_notification_server.h"
#include "app/entry.h"
#include "app/models/quick_clean.h"
#include "app/models/space_map.h"
#include "app/removal_guards.h"
#include "app/system_calendar.h"
#include "app/system_roots.h"
#include "probe/system/system_reader.h"
#include "ui/disk_cleanup_screen.h"
#include "ui/first_run_tour.h"
#include "ui/launch_checks.h"
#include "ui/post_to.h"
#include "ui/quick_clean_screen.h"
#include "ui/settings_screen.h"
#include "ui/single_instance.h"
#include "ui/start_plan.h"
#include "ui/tray_dot.h"

namespace pellwin::ui {

TrayApp::TrayApp(const Command& command, const Environment& environment)
    : launch_(command.launch),
      settings_(UserSettings::forUser(environment)),
      loginItem_(LoginItem::entryPath(environment),
                 QCoreApplication::applicationFilePath().toStdString()),
      notifier_(std::make_unique<Notifier>(std::make_unique<SessionBusNotificationServer>(),
                                           postTo(this))),
      window_(std::make_unique<MainWindow>()) {
  history_ = std::make_unique<HistoryRecorder>(HistoryRecorderSetup{
      .url = historyFile(command, environment),
      .post = postTo(this),
      .now = systemNow,
      .calendar = systemCalendar,
  });
  auto reader = std::make_shared<SystemReader>(systemReaderRoots(environment));
  live_ = std::make_unique<LiveModel>(LiveModel::Services{
      .read = [reader] { return reader->read(); },
      .setting = [settings = settings_](std::string_view key) { return settings.flag(key); },
      .notify = [notifier = notifier_.get()](
                    std::string title,
                    std::string body) { notifier->post(std::move(title), std::move(body)); },
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
  keepMonitorSort();
  connect(panel_.get(), &Panel::openRequested, this, &TrayApp::openWindow);
  connect(panel_.get(), &Panel::quitRequested, this, &TrayApp::quit);
  connect(panel_.get(), &Panel::visibilityChanged, this, &TrayApp::reconcileVisibility);
  connect(window_.get(), &MainWindow::quitRequested, this, &TrayApp::quit);
  connect(window_.get(), &MainWindow::visibilityChanged, this, &TrayApp::reconcileVisibility);
  addHistoryScreens();
  window_->addScreen("Disk cleanup",
                     new DiskCleanupScreen(environment.home, removalGuards(environment),
                                           spaceMapServices(environment, nullptr)));
  window_->addScreen("Quick clean",
                     new QuickCleanScreen(quickCleanServices(environment, *history_, nullptr)));
  addSettingsScreen();
}

// The models stop (and drain their queues) before the widgets that observe them go; the live
// model posts notifications, so the notifier outlives it.
TrayApp::~TrayApp() {
  live_.reset();
  history_.reset();
  notifier_.reset();
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
  }
  const StartPlan plan = startPlan(recordLaunch(settings_), tray_ != nullptr, launch_.capture);
  if (plan.openWindow) openWindow();
  if (plan.showTour) showTour();
  if (launch_.statusPath) new LaunchChecks(launch_, loginItem_, *notifier_, this);
}

// The list opens ordered as the user last left it; a value from a later version is ignored.
void TrayApp::keepMonitorSort() {
  if (const auto kept = settings_.text(UserSettings::monitorSortKey)) {
    if (const auto sort = monitorSortFromRawValue(*kept)) monitor_->setSort(*sort);
  }
  connect(monitor_, &MonitorScreen::sortPicked, this, [settings = settings_](MonitorSort sort) {
    settings.setText(UserSettings::monitorSortKey, rawValue(sort));
  });
}

void TrayApp::addSettingsScreen() {
  window_->addScreen(
      "Settings", new SettingsScreen(
                      {.settings = settings_,
                       .loginItem = loginItem_,
                       .notify = [notifier = notifier_.get()](
                                     std::string title, std::string body,
                                     std::function<void(NotificationResult)> completion) {
                         notifier->post(std::move(title), std::move(body), std::move(completion));
                       }}));
}

void TrayApp::addHistoryScreens() {
  window_->addScreen("Report",
                     report_ = new ReportScreen(
                         {.recorder = *history_, .now = systemNow, .calendar = systemCalendar}));
  window_->addScreen("History",
                     historyScreen_ = new HistoryScreen({
                         .recorder = *history_,
                         .now = systemNow,
                         .calendar = systemCalendar,
                         .coreCount = static_cast<int>(std::thread::hardware_concurrency()),
                     }));
  window_->addScreen("Alerts",
                     alerts_ = new AlertsScreen(
                         {.recorder = *history_, .now = systemNow, .calendar = systemCalendar}));
  history_->onChange([this] { historyChanged(); });
  historyChanged();
}

// The screens read again only while shown; the badge follows the recorder's count at once.
void TrayApp::historyChanged() {
  report_->refresh();
  historyScreen_->refresh();
  alerts_->refresh();
  const std::int64_t unread = history_->unreadAlerts();
  window_->setBadge("Alerts", unread > 0 ? QString::number(unread) : QString());
}

void TrayApp::showTour() {
  auto* tour = new FirstRunTour(window_.get());
  tour->show();
  tour->raise();
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
  QApplication::setWindowIcon(QIcon::fromTheme("com.pellwin.Pellwin", dotIcon(Health::ok)));
  QApplication::setQuitOnLastWindowClosed(false);
  SingleInstance instance(SingleInstance::runtimeFolder());
  switch (instance.claim()) {
    case SingleInstance::Claim::first: break;
    case SingleInstance::Claim::toldRunning: return 0;
    case SingleInstance::Claim::noAnswer:
      std::cerr << "Tovrin is already running but didn't answer; try again in a moment.\n";
      return 1;
  }
  TrayApp app(command, environment);
  QObject::connect(&instance, &SingleInstance::openRequested, &app, &TrayApp::openWindow);
  app.start();
  return QApplication::exec();
}

}  // namespace pellwin::ui
