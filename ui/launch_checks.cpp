#include "ui/launch_checks.h"

#include <QApplication>
#include <QMainWindow>
#include <QPointer>
#include <QWidget>
#include <algorithm>
#include <iostream>

namespace pellwin::ui {

LaunchChecks::LaunchChecks(const LaunchOptions& options, LoginItem loginItem, Notifier& notifier,
                           QObject* parent)
    : QObject(parent),
      statusPath_(options.statusPath.value_or("")),
      loginItem_(std::move(loginItem)),
      status_{.testNotificationRequested = options.testNotification} {
  const QPointer<LaunchChecks> self(this);
  notifier.authorization([self](NotificationAuthorization authorization) {
    if (self) self->status_.notifications = authorization;
  });
  if (options.testNotification) {
    notifier.post(testTitle, testBody, [self](NotificationResult result) {
      if (self) self->status_.testNotification = std::move(result);
    });
  }
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &LaunchChecks::write);
  timer_.start(static_cast<int>(LaunchStatus::delay * 1000));
}

void LaunchChecks::write() {
  status_.loginItem = loginItem_.status();
  status_.visibleWindows = visibleWindowTitles();
  if (auto done = writeStatusFile(statusPath_, statusFileText(status_)); !done) {
    std::cerr << "Couldn't write the status file: "
              << sentence(done.error(), ErrorWording::pathAfterReason) << "\n";
  }
  emit written();
}

std::vector<std::string> visibleWindowTitles() {
  std::vector<std::string> titles;
  std::vector<std::string> others;
  for (const QWidget* widget : QApplication::topLevelWidgets()) {
    // Menus and tooltips are top-level too, but have no title and are not windows to a user.
    if (!widget->isVisible() || widget->windowTitle().isEmpty()) continue;
    const bool main = qobject_cast<const QMainWindow*>(widget) != nullptr;
    (main ? titles : others).push_back(widget->windowTitle().toStdString());
  }
  std::sort(others.begin(), others.end());
  titles.insert(titles.end(), others.begin(), others.end());
  return titles;
}

}  // namespace pellwin::ui
