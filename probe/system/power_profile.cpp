#include "probe/system/power_profile.h"

#include <systemd/sd-bus.h>

#include <cstdlib>
#include <memory>

namespace pellwin::PowerProfile {

namespace {

struct BusCloser {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusCloser>;

Bus connect(const std::string& address) {
  sd_bus* bus = nullptr;
  if (address.empty()) {
    if (sd_bus_open_system(&bus) < 0) return nullptr;
    return Bus(bus);
  }
  if (sd_bus_new(&bus) < 0) return nullptr;
  Bus owned(bus);
  if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
      sd_bus_start(bus) < 0) {
    return nullptr;
  }
  return owned;
}

struct Service {
  const char* name;
  const char* path;
};

// The current name (daemon 0.20 and later) first, then the one older daemons still use.
constexpr Service services[] = {
    {"org.freedesktop.UPower.PowerProfiles", "/org/freedesktop/UPower/PowerProfiles"},
    {"net.hadess.PowerProfiles", "/net/hadess/PowerProfiles"},
};

}  // namespace

std::optional<std::string> activeProfile(const std::string& busAddress) {
  const Bus bus = connect(busAddress);
  if (!bus) return std::nullopt;
  // sd-bus waits 25 s by default; the sampler must never hang on a stuck daemon.
  sd_bus_set_method_call_timeout(
      bus.get(), static_cast<std::uint64_t>(std::chrono::microseconds(timeout).count()));
  for (const auto& service : services) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    char* value = nullptr;
    const int result = sd_bus_get_property_string(bus.get(), service.name, service.path,
                                                  service.name, "ActiveProfile", &error, &value);
    sd_bus_error_free(&error);
    if (result >= 0 && value != nullptr) {
      std::string profile(value);
      std::free(value);
      return profile;
    }
  }
  return std::nullopt;
}

}  // namespace pellwin::PowerProfile
