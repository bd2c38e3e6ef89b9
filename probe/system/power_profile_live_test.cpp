#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "probe/system/power_profile.h"
#include "testing/scratch_folder.h"

extern char** environ;

namespace pellwin {
namespace {

// A private message bus in a scratch folder, ended with the test.
class PrivateBus {
 public:
  explicit PrivateBus(const std::filesystem::path& folder) : socket_(folder / "bus") {
    const std::string listen = "--address=unix:path=" + socket_.string();
    const char* argv[] = {"dbus-daemon", "--session",    "--nofork",
                          "--nopidfile", listen.c_str(), nullptr};
    if (::posix_spawnp(&pid_, "dbus-daemon", nullptr, nullptr, const_cast<char**>(argv), environ) !=
        0) {
      pid_ = -1;
      return;
    }
    for (int i = 0; i < 200 && !std::filesystem::exists(socket_); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  ~PrivateBus() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  [[nodiscard]] bool running() const { return pid_ > 0 && std::filesystem::exists(socket_); }
  [[nodiscard]] std::string address() const { return "unix:path=" + socket_.string(); }

 private:
  std::filesystem::path socket_;
  pid_t pid_ = -1;
};

int activeProfileProperty(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                          void* profile, sd_bus_error*) {
  return sd_bus_message_append(reply, "s", static_cast<const char*>(profile));
}

const sd_bus_vtable profileTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("ActiveProfile", "s", activeProfileProperty, 0, 0),
    SD_BUS_VTABLE_END,
};

// A stand-in for power-profiles-daemon under one of its two names, serving on its own thread.
class FakeDaemon {
 public:
  FakeDaemon(const std::string& address, const char* name, const char* path, const char* profile)
      : thread_([=, this] { serve(address, name, path, profile); }) {
    while (!ready_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ~FakeDaemon() {
    stop_ = true;
    thread_.join();
  }
  FakeDaemon(const FakeDaemon&) = delete;
  FakeDaemon& operator=(const FakeDaemon&) = delete;

 private:
  void serve(const std::string& address, const char* name, const char* path, const char* profile) {
    sd_bus* bus = nullptr;
    sd_bus_slot* slot = nullptr;
    const bool up = sd_bus_new(&bus) >= 0 && sd_bus_set_address(bus, address.c_str()) >= 0 &&
                    sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0 &&
                    sd_bus_add_object_vtable(bus, &slot, path, name, profileTable,
                                             const_cast<char*>(profile)) >= 0 &&
                    sd_bus_request_name(bus, name, 0) >= 0;
    ready_ = true;
    while (up && !stop_) {
      if (sd_bus_process(bus, nullptr) > 0) continue;
      sd_bus_wait(bus, 20'000);
    }
    sd_bus_slot_unref(slot);
    sd_bus_flush_close_unref(bus);
  }

  std::atomic<bool> ready_ = false;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

TEST(PowerProfile, AsksTheDaemonUnderEitherName) {
  testing::ScratchFolder folder;
  PrivateBus bus(folder.path());
  if (!bus.running()) GTEST_SKIP() << "dbus-daemon is not installed";

  EXPECT_EQ(PowerProfile::activeProfile(bus.address()), std::nullopt);  // no daemon on the bus
  {
    FakeDaemon daemon(bus.address(), "org.freedesktop.UPower.PowerProfiles",
                      "/org/freedesktop/UPower/PowerProfiles", "power-saver");
    EXPECT_EQ(PowerProfile::activeProfile(bus.address()), "power-saver");
  }
  {
    FakeDaemon legacy(bus.address(), "net.hadess.PowerProfiles", "/net/hadess/PowerProfiles",
                      "balanced");
    EXPECT_EQ(PowerProfile::activeProfile(bus.address()), "balanced");
  }
  EXPECT_EQ(PowerProfile::activeProfile("unix:path=" + (folder / "nothing").string()),
            std::nullopt);
}

}  // namespace
}  // namespace pellwin
