#include "app/models/notifier.h"

#include <algorithm>
#include <utility>

#include "core/base/printable_text.h"

namespace pellwin {
namespace {

std::string reason(const NotificationServerError& error) {
  switch (error.failure) {
    case NotificationFailure::noServer:
      return "no notification server is running";
    case NotificationFailure::noAnswer:
      return "the notification server didn't answer in time";
    case NotificationFailure::refused:
      if (error.detail.empty()) return "the notification server refused it";
      return "the notification server refused it: " + strippedText(error.detail);
  }
  return {};
}

NotificationResult deliver(NotificationServer& server, std::string_view title,
                           std::string_view body) {
  const auto capabilities = server.capabilities();
  if (!capabilities) return {.reason = reason(capabilities.error())};
  // Without "body-markup" a server shows the body as it is, and entities would show literally.
  const bool markup = std::ranges::find(*capabilities, "body-markup") != capabilities->end();
  const auto shown = server.notify(notificationRequest(title, body, markup));
  if (!shown) return {.reason = reason(shown.error())};
  return {.delivered = true};
}

}  // namespace

std::string escapedMarkup(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      default: escaped += c;
    }
  }
  return escaped;
}

NotificationRequest notificationRequest(std::string_view title, std::string_view body,
                                        bool bodyMarkup) {
  std::string safeBody = strippedText(body);
  return NotificationRequest{
      .appName = std::string(Notifier::appName),
      .summary = strippedText(title),
      .body = bodyMarkup ? escapedMarkup(safeBody) : std::move(safeBody),
      .desktopEntry = std::string(Notifier::desktopEntry),
  };
}

Notifier::Notifier(std::unique_ptr<NotificationServer> server, Post post)
    : server_(std::move(server)), post_(std::move(post)), queue_(queueLabel, 0) {}

void Notifier::post(std::string title, std::string body,
                    std::function<void(NotificationResult)> completion) {
  queue_.async([this, title = std::move(title), body = std::move(body),
                completion = std::move(completion)]() mutable {
    NotificationResult result = deliver(*server_, title, body);
    if (!completion) return;
    post_([completion = std::move(completion), result = std::move(result)] {
      completion(result);
    });
  });
}

void Notifier::authorization(std::function<void(NotificationAuthorization)> completion) {
  queue_.async([this, completion = std::move(completion)]() mutable {
    const auto capabilities = server_->capabilities();
    // A server that answers with an error is still there to show notifications.
    const bool answered =
        capabilities || capabilities.error().failure == NotificationFailure::refused;
    const auto status =
        answered ? NotificationAuthorization::authorized : NotificationAuthorization::notDetermined;
    post_([completion = std::move(completion), status] { completion(status); });
  });
}

}  // namespace pellwin
