// Runs on a private session bus of its own (see app/CMakeLists.txt): the only notification
// server is the fake each test starts.
#include "app/desktop/session_bus_notification_server.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "app/models/notifier.h"
#include "testing/owner_loop.h"

namespace pellwin {
namespace {

using std::chrono::steady_clock;

// What the fake server received in one Notify call.
struct Received {
  std::string app;
  std::uint32_t replaces = 0;
  std::string icon;
  std::string summary;
  std::string body;
  std::vector<std::string> actions;
  std::map<std::string, std::string> textHints;
  std::int32_t timeout = 0;
};

// org.freedesktop.Notifications on the session bus, serving on its own thread until destroyed.
// `silent`: takes the name and then never reads a message, like a server that hangs.
class FakeNotificationDaemon {
 public:
  struct Behaviour {
    std::vector<std::string> capabilities{"body", "body-markup", "actions"};
    const char* notifyError = nullptr;  // a D-Bus error name Notify answers with
    bool silent = false;
  };

  explicit FakeNotificationDaemon(Behaviour behaviour)
      : behaviour_(std::move(behaviour)), thread_([this] { serve(); }) {
    std::unique_lock lock(mutex_);
    started_.wait(lock, [this] { return ready_.has_value(); });
  }
  ~FakeNotificationDaemon() {
    stop_ = true;
    thread_.join();
  }
  FakeNotificationDaemon(const FakeNotificationDaemon&) = delete;
  FakeNotificationDaemon& operator=(const FakeNotificationDaemon&) = delete;

  [[nodiscard]] bool ready() const { return ready_.value_or(false); }
  [[nodiscard]] std::vector<Received> received() {
    std::lock_guard lock(mutex_);
    return received_;
  }

 private:
  static int getCapabilities(sd_bus_message* call, void* self, sd_bus_error*) {
    auto& daemon = *static_cast<FakeNotificationDaemon*>(self);
    sd_bus_message* reply = nullptr;
    int r = sd_bus_message_new_method_return(call, &reply);
    if (r < 0) return r;
    std::vector<char*> words;
    for (auto& word : daemon.behaviour_.capabilities) words.push_back(word.data());
    words.push_back(nullptr);
    r = sd_bus_message_append_strv(reply, words.data());
    if (r >= 0) r = sd_bus_send(nullptr, reply, nullptr);
    sd_bus_message_unref(reply);
    return r;
  }

  static int notify(sd_bus_message* call, void* self, sd_bus_error* error) {
    auto& daemon = *static_cast<FakeNotificationDaemon*>(self);
    if (daemon.behaviour_.notifyError) {
      return sd_bus_error_set(error, daemon.behaviour_.notifyError, "Too many notifications");
    }
    Received got;
    const char *app = nullptr, *icon = nullptr, *summary = nullptr, *body = nullptr;
    int r = sd_bus_message_read(call, "susss", &app, &got.replaces, &icon, &summary, &body);
    if (r < 0) return r;
    got.app = app, got.icon = icon, got.summary = summary, got.body = body;
    char** actions = nullptr;
    if ((r = sd_bus_message_read_strv(call, &actions)) < 0) return r;
    for (char** a = actions; a && *a; ++a) {
      got.actions.emplace_back(*a);
      std::free(*a);
    }
    std::free(actions);
    if ((r = readTextHints(call, got.textHints)) < 0) return r;
    if ((r = sd_bus_message_read(call, "i", &got.timeout)) < 0) return r;
    std::uint32_t id = 0;
    {
      std::lock_guard lock(daemon.mutex_);
      daemon.received_.push_back(std::move(got));
      id = static_cast<std::uint32_t>(daemon.received_.size());
    }
    return sd_bus_reply_method_return(call, "u", id);
  }

  // The hints whose values are strings; others are skipped.
  static int readTextHints(sd_bus_message* call, std::map<std::string, std::string>& hints) {
    int r = sd_bus_message_enter_container(call, 'a', "{sv}");
    if (r < 0) return r;
    while ((r = sd_bus_message_enter_container(call, 'e', "sv")) > 0) {
      const char* key = nullptr;
      if ((r = sd_bus_message_read(call, "s", &key)) < 0) return r;
      const char* type = nullptr;
      if ((r = sd_bus_message_peek_type(call, nullptr, &type)) < 0) return r;
      if (std::string_view(type) == "s") {
        const char* value = nullptr;
        if ((r = sd_bus_message_read(call, "v", "s", &value)) < 0) return r;
        hints[key] = value;
      } else if ((r = sd_bus_message_skip(call, "v")) < 0) {
        return r;
      }
      if ((r = sd_bus_message_exit_container(call)) < 0) return r;
    }
    if (r < 0) return r;
    return sd_bus_message_exit_container(call);
  }

  static constexpr sd_bus_vtable table[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("GetCapabilities", "", "as", getCapabilities, 0),
      SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, 0),
      SD_BUS_VTABLE_END,
  };

  void announce(bool ready) {
    std::lock_guard lock(mutex_);
    ready_ = ready;
    started_.notify_all();
  }

  void serve() {
    sd_bus* bus = nullptr;
    sd_bus_slot* slot = nullptr;
    if (sd_bus_open_user(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, &slot, "/org/freedesktop/Notifications",
                                 "org.freedesktop.Notifications", table, this) < 0 ||
        sd_bus_request_name(bus, "org.freedesktop.Notifications", 0) < 0) {
      announce(false);
      sd_bus_slot_unref(slot);
      sd_bus_flush_close_unref(bus);
      return;
    }
    announce(true);
    while (!stop_) {
      if (behaviour_.silent) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        continue;
      }
      const int r = sd_bus_process(bus, nullptr);
      if (r < 0) break;
      if (r == 0) sd_bus_wait(bus, 20'000);
    }
    sd_bus_slot_unref(slot);
    sd_bus_flush_close_unref(bus);
  }

  Behaviour behaviour_;
  std::mutex mutex_;
  std::condition_variable started_;
  std::optional<bool> ready_;
  std::vector<Received> received_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;  // last: starts once everything above exists
};

struct BusRig {
  testing::OwnerLoop owner;
  Notifier notifier{std::make_unique<SessionBusNotificationServer>(), owner.poster()};

  NotificationResult post(std::string title, std::string body) {
    std::optional<NotificationResult> result;
    notifier.post(std::move(title), std::move(body),
                  [&](NotificationResult r) { result = std::move(r); });
    EXPECT_TRUE(owner.runUntil([&] { return result.has_value(); }));
    return result.value_or(NotificationResult{.reason = "no answer in the test"});
  }

  NotificationAuthorization authorization() {
    std::optional<NotificationAuthorization> status;
    notifier.authorization([&](NotificationAuthorization s) { status = s; });
    EXPECT_TRUE(owner.runUntil([&] { return status.has_value(); }));
    return status.value_or(NotificationAuthorization::notDetermined);
  }
};

TEST(SessionBusNotifications, AServerReceivesTovrinsNotificationWithItsDesktopEntry) {
  FakeNotificationDaemon daemon({});
  ASSERT_TRUE(daemon.ready());
  BusRig rig;
  EXPECT_EQ(rig.post("Memory is under strain & slow",
                     "Apps need more memory than is free. Web <Content>\x1b[2J is using 3 GB."),
            NotificationResult{.delivered = true});
  EXPECT_EQ(rig.authorization(), NotificationAuthorization::authorized);

  const auto received = daemon.received();
  ASSERT_EQ(received.size(), 1u);
  const Received& got = received[0];
  EXPECT_EQ(got.app, "Tovrin");
  EXPECT_EQ(got.replaces, 0u);
  EXPECT_EQ(got.icon, "");
  EXPECT_EQ(got.summary, "Memory is under strain & slow");
  EXPECT_EQ(got.body,
            "Apps need more memory than is free. Web &lt;Content&gt;[2J is using 3 GB.");
  EXPECT_TRUE(got.actions.empty());
  EXPECT_EQ(got.textHints, (std::map<std::string, std::string>{
                               {"desktop-entry", std::string(Notifier::desktopEntry)}}));
  EXPECT_EQ(got.timeout, -1);
}

TEST(SessionBusNotifications, APlainTextServerGetsTheBodyUnescaped) {
  FakeNotificationDaemon daemon({.capabilities = {"body"}});
  ASSERT_TRUE(daemon.ready());
  BusRig rig;
  EXPECT_TRUE(rig.post("CPU is overloaded", "a.out <x> & y is using 190%.").delivered);
  const auto received = daemon.received();
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(received[0].body, "a.out <x> & y is using 190%.");
}

TEST(SessionBusNotifications, NoServerOnTheBusIsNotDeliveredAndNotDetermined) {
  BusRig rig;
  EXPECT_EQ(rig.post("Title", "Body"),
            (NotificationResult{.reason = "no notification server is running"}));
  EXPECT_EQ(rig.authorization(), NotificationAuthorization::notDetermined);
}

TEST(SessionBusNotifications, NoBusAtAllIsNoServer) {
  SessionBusNotificationServer server("unix:path=/nonexistent/tovrin-test-bus");
  const auto capabilities = server.capabilities();
  ASSERT_FALSE(capabilities.has_value());
  EXPECT_EQ(capabilities.error().failure, NotificationFailure::noServer);
}

TEST(SessionBusNotifications, AServerThatRefusesIsNotDeliveredWithItsWords) {
  FakeNotificationDaemon daemon({.notifyError = "org.freedesktop.Notifications.Error.Quota"});
  ASSERT_TRUE(daemon.ready());
  BusRig rig;
  EXPECT_EQ(rig.post("Title", "Body"),
            (NotificationResult{.reason = "the notification server refused it: Too many "
                                          "notifications"}));
}

TEST(SessionBusNotifications, AServerThatHangsIsGivenUpOnWithinItsTimeLimit) {
  FakeNotificationDaemon daemon({.silent = true});
  ASSERT_TRUE(daemon.ready());
  BusRig rig;
  const auto start = steady_clock::now();
  EXPECT_EQ(rig.post("Title", "Body"),
            (NotificationResult{.reason = "the notification server didn't answer in time"}));
  // Tells the notifier's one-second limit from sd-bus's own 25 s default.
  EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
}  // namespace pellwin
