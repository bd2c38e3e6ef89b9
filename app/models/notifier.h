// Posts the app's desktop notifications. A post never makes its caller wait: the server is
// asked on the notifier's own serial queue "com.pellwin.notifier", and the outcome comes back
// through the `post` function the owner hands in (which runs a closure on the owner's thread).
// Texts from other programs are made safe here: control characters stripped everywhere, and
// "&", "<", ">" escaped in the body when the server reads it as markup.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "app/models/notification_server.h"
#include "app/serial_queue.h"
#include "core/base/enum_text.h"

namespace pellwin {

// The outcome of one post.
struct NotificationResult {
  bool delivered = false;
  std::string reason{};  // why not, in words that follow "not delivered: "; empty when delivered
  friend bool operator==(const NotificationResult&, const NotificationResult&) = default;

  [[nodiscard]] std::string_view status() const {
    return delivered ? "delivered" : "not delivered";
  }
};

// Whether notifications can be shown, in the words of the launch check. This desktop asks no
// permission: a server that answers means notifications are authorized; with no server it is
// not determined.
enum class NotificationAuthorization { authorized, notDetermined };

[[nodiscard]] constexpr EnumTable<NotificationAuthorization::notDetermined> textTable(
    NotificationAuthorization) {
  using enum NotificationAuthorization;
  return {{{authorized, "authorized"}, {notDetermined, "notDetermined"}}};
}

// "&", "<" and ">" as markup entities.
[[nodiscard]] std::string escapedMarkup(std::string_view text);

// What the server receives for a title and body: both stripped of control characters; the
// body escaped when `bodyMarkup` (the server reads it as markup); the title never, as servers
// show it as plain text.
[[nodiscard]] NotificationRequest notificationRequest(std::string_view title,
                                                      std::string_view body, bool bodyMarkup);

class Notifier {
 public:
  static constexpr const char* queueLabel = "com.pellwin.notifier";
  static constexpr std::string_view appName = "Tovrin";
  static constexpr std::string_view desktopEntry = "com.pellwin.Pellwin";

  using Post = std::function<void(std::function<void()>)>;

  // `server` is used on the notifier's queue only.
  Notifier(std::unique_ptr<NotificationServer> server, Post post);
  // Finishes what was already posted (each post waits at most the server's time limit).
  ~Notifier() = default;
  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;

  // Shows `title` and `body` at once; `completion`, when given, gets the outcome on the owner's
  // thread. Any thread may call it.
  void post(std::string title, std::string body,
            std::function<void(NotificationResult)> completion = {});

  // Asks the server whether it is there; the answer arrives on the owner's thread.
  void authorization(std::function<void(NotificationAuthorization)> completion);

 private:
  std::unique_ptr<NotificationServer> server_;
  Post post_;
  SerialQueue queue_;  // last: destroyed first, so queued work still finds the server
};

}  // namespace pellwin
