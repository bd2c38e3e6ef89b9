// The desktop's notification server (org.freedesktop.Notifications) on the user's session bus,
// through sd-bus. Each call opens its own connection, so a bus or a server that restarted is
// found again, and gives up after `callTimeout`: a missing or stuck server costs a post at most
// that long per call. Not thread-safe; the Notifier calls it from its queue only.
#pragma once

#include <chrono>
#include <string>

#include "app/models/notification_server.h"

namespace pellwin {

class SessionBusNotificationServer final : public NotificationServer {
 public:
  static constexpr std::chrono::milliseconds defaultTimeout{1000};

  // `busAddress` empty: the session bus of $DBUS_SESSION_BUS_ADDRESS (or the user's bus).
  explicit SessionBusNotificationServer(std::string busAddress = {},
                                        std::chrono::milliseconds callTimeout = defaultTimeout);

  [[nodiscard]] std::expected<std::vector<std::string>, NotificationServerError> capabilities()
      override;
  [[nodiscard]] std::expected<std::uint32_t, NotificationServerError> notify(
      const NotificationRequest& request) override;

 private:
  std::string busAddress_;
  std::chrono::milliseconds callTimeout_;
};

}  // namespace pellwin
