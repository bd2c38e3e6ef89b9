// The tray app's launch check ("--status PATH", with "--test-notification"): at launch it asks
// whether notifications can be shown and posts the test notification when asked; five seconds
// after launch it writes the status file once. UI thread only.
#pragma once

#include <QObject>
#include <QTimer>
#include <filesystem>
#include <functional>

#include "app/command_line.h"
#include "app/desktop/login_item.h"
#include "app/launch_status.h"
#include "app/models/notifier.h"

namespace pellwin::ui {

class LaunchChecks : public QObject {
  Q_OBJECT

 public:
  static constexpr const char* testTitle = "Tovrin notifications work";
  static constexpr const char* testBody = "This is the test from the launch check.";

  // `options.statusPath` must be set. `notifier` must outlive this object.
  LaunchChecks(const LaunchOptions& options, LoginItem loginItem, Notifier& notifier,
               QObject* parent = nullptr);

 signals:
  // The status file was written (or could not be: the reason went to standard error).
  void written();

 private:
  void write();

  std::filesystem::path statusPath_;
  LoginItem loginItem_;
  LaunchStatus status_;
  QTimer timer_;
};

// The titles of the app's visible windows, the main window first.
[[nodiscard]] std::vector<std::string> visibleWindowTitles();

}  // namespace pellwin::ui
