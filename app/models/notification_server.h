// The desktop's notification service, as much of it as the Notifier uses: what the server can
// show, and one notification posted at once. The real one talks to the session bus
// (app/desktop/); tests use a fake. Calls block for at most the implementation's time limit
// and are made from one thread at a time.
#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <vector>

#include "core/base/enum_text.h"

namespace pellwin {

enum class NotificationFailure {
  noServer,  // nothing on the bus shows notifications (or there is no bus)
  noAnswer,  // a server is there but did not answer in time
  refused,   // the server answered with an error
};

[[nodiscard]] constexpr EnumTable<NotificationFailure::refused> textTable(NotificationFailure) {
  using enum NotificationFailure;
  return {{{noServer, "noServer"}, {noAnswer, "noAnswer"}, {refused, "refused"}}};
}

struct NotificationServerError {
  NotificationFailure failure = NotificationFailure::noServer;
  std::string detail{};  // the bus's or the server's own words, for the reason; may be empty
  friend bool operator==(const NotificationServerError&, const NotificationServerError&) = default;
};

// One notification as the server receives it. Texts are final: stripped, and escaped when the
// body is markup.
struct NotificationRequest {
  std::string appName{};
  std::string summary{};
  std::string body{};
  std::string desktopEntry{};  // the app's desktop file id without ".desktop", sent as a hint
  friend bool operator==(const NotificationRequest&, const NotificationRequest&) = default;
};

class NotificationServer {
 public:
  virtual ~NotificationServer() = default;

  // The server's capability words ("body", "body-markup", "actions", ...).
  [[nodiscard]] virtual std::expected<std::vector<std::string>, NotificationServerError>
  capabilities() = 0;

  // Shows the notification now; the server's id for it.
  [[nodiscard]] virtual std::expected<std::uint32_t, NotificationServerError> notify(
      const NotificationRequest& request) = 0;
};

}  // namespace pellwin
