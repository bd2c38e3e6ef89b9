#include "app/desktop/session_bus_notification_server.h"

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace pellwin {
namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* objectPath = "/org/freedesktop/Notifications";
constexpr const char* interface = "org.freedesktop.Notifications";

struct BusCloser {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusCloser>;

struct MessageUnref {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;

// sd_bus_error owns the texts it holds until freed.
struct BusError {
  sd_bus_error value = SD_BUS_ERROR_NULL;
  BusError() = default;
  ~BusError() { sd_bus_error_free(&value); }
  BusError(const BusError&) = delete;
  BusError& operator=(const BusError&) = delete;
};

NotificationServerError noBus(int result) {
  return {.failure = NotificationFailure::noServer,
          .detail = std::string("no session bus: ") + std::strerror(-result)};
}

std::expected<Bus, NotificationServerError> connect(const std::string& address,
                                                    std::chrono::milliseconds timeout) {
  sd_bus* bus = nullptr;
  int result = 0;
  if (address.empty()) {
    result = sd_bus_open_user(&bus);
    if (result < 0) return std::unexpected(noBus(result));
  } else {
    result = sd_bus_new(&bus);
    if (result < 0) return std::unexpected(noBus(result));
    Bus owned(bus);
    if ((result = sd_bus_set_address(bus, address.c_str())) < 0 ||
        (result = sd_bus_set_bus_client(bus, 1)) < 0 || (result = sd_bus_start(bus)) < 0) {
      return std::unexpected(noBus(result));
    }
    owned.release();
  }
  Bus owned(bus);
  // sd-bus waits 25 s by default; a notification server that hangs must not hold posts that long.
  sd_bus_set_method_call_timeout(
      bus, static_cast<std::uint64_t>(std::chrono::microseconds(timeout).count()));
  return owned;
}

// The bus says "no owner, none to start" for a name nobody holds; a call that runs out of time
// fails with ETIMEDOUT locally, or with NoReply when the bus itself gave up waiting.
NotificationServerError failure(int result, const sd_bus_error& error) {
  const std::string_view name = error.name ? error.name : "";
  std::string detail = error.message ? error.message : std::strerror(-result);
  if (name == SD_BUS_ERROR_SERVICE_UNKNOWN || name == SD_BUS_ERROR_NAME_HAS_NO_OWNER) {
    return {.failure = NotificationFailure::noServer, .detail = std::move(detail)};
  }
  if (result == -ETIMEDOUT || name == SD_BUS_ERROR_NO_REPLY || name == SD_BUS_ERROR_TIMEOUT) {
    return {.failure = NotificationFailure::noAnswer, .detail = std::move(detail)};
  }
  return {.failure = NotificationFailure::refused, .detail = std::move(detail)};
}

NotificationServerError malformedReply(int result) {
  return {.failure = NotificationFailure::refused,
          .detail = std::string("unexpected reply: ") + std::strerror(-result)};
}

}  // namespace

SessionBusNotificationServer::SessionBusNotificationServer(std::string busAddress,
                                                           std::chrono::milliseconds callTimeout)
    : busAddress_(std::move(busAddress)), callTimeout_(callTimeout) {}

std::expected<std::vector<std::string>, NotificationServerError>
SessionBusNotificationServer::capabilities() {
  auto bus = connect(busAddress_, callTimeout_);
  if (!bus) return std::unexpected(bus.error());
  BusError error;
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_call_method(bus->get(), service, objectPath, interface,
                                        "GetCapabilities", &error.value, &reply, "");
  if (result < 0) return std::unexpected(failure(result, error.value));
  const Message owned(reply);
  char** words = nullptr;
  if (const int read = sd_bus_message_read_strv(reply, &words); read < 0) {
    return std::unexpected(malformedReply(read));
  }
  std::vector<std::string> capabilities;
  for (char** word = words; word && *word; ++word) {
    capabilities.emplace_back(*word);
    std::free(*word);
  }
  std::free(words);
  return capabilities;
}

std::expected<std::uint32_t, NotificationServerError> SessionBusNotificationServer::notify(
    const NotificationRequest& request) {
  auto bus = connect(busAddress_, callTimeout_);
  if (!bus) return std::unexpected(bus.error());
  BusError error;
  sd_bus_message* reply = nullptr;
  // Notify(app_name, replaces_id, app_icon, summary, body, actions, hints, expire_timeout):
  // a new notification (id 0), no icon of its own, no actions, the server's own timeout (-1).
  const int result = sd_bus_call_method(
      bus->get(), service, objectPath, interface, "Notify", &error.value, &reply,
      "susssasa{sv}i", request.appName.c_str(), std::uint32_t{0}, "", request.summary.c_str(),
      request.body.c_str(), 0, 1, "desktop-entry", "s", request.desktopEntry.c_str(),
      std::int32_t{-1});
  if (result < 0) return std::unexpected(failure(result, error.value));
  const Message owned(reply);
  std::uint32_t id = 0;
  if (const int read = sd_bus_message_read(reply, "u", &id); read < 0) {
    return std::unexpected(malformedReply(read));
  }
  return id;
}

}  // namespace pellwin
