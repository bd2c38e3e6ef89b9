// The status file of the tray app's launch check ("--status PATH"): one "key: value" line per
// fact, written once, five seconds after launch, so a script can tell how the app came up.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/desktop/login_item.h"
#include "app/models/notifier.h"
#include "probe/system_error.h"

namespace pellwin {

struct LaunchStatus {
  static constexpr double delay = 5.0;  // seconds after launch

  LoginItemStatus loginItem = LoginItemStatus::unknown;
  NotificationAuthorization notifications = NotificationAuthorization::notDetermined;
  std::vector<std::string> visibleWindows{};  // by title, in the order the app lists them
  // Only when the test notification was asked for; absent while its outcome is not known.
  bool testNotificationRequested = false;
  std::optional<NotificationResult> testNotification{};
  friend bool operator==(const LaunchStatus&, const LaunchStatus&) = default;
};

// "login-item: ", "notifications: ", "windows-visible: " (titles joined by ", ", or "none"),
// then, when requested, "test-notification: " with "delivered", "not delivered: " and the
// reason, or "pending"; each line ends with a newline.
[[nodiscard]] std::string statusFileText(const LaunchStatus& status);

// Writes `text` to `path`, replacing what was there.
[[nodiscard]] std::expected<void, SystemError> writeStatusFile(const std::filesystem::path& path,
                                                               std::string_view text);

}  // namespace pellwin
