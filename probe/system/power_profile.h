// The power profile that power-profiles-daemon (or tuned-ppd, which speaks the same interface)
// has set: "power-saver", "balanced" or "performance", asked over D-Bus. A call waits at most
// `timeout` for the daemon. Stateless; safe from any thread.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace pellwin::PowerProfile {

inline constexpr std::chrono::milliseconds timeout{500};

// `busAddress` is a D-Bus address such as "unix:path=/run/dbus/system_bus_socket"; empty means
// the system bus. Absent when no bus or no daemon answers.
[[nodiscard]] std::optional<std::string> activeProfile(const std::string& busAddress);

}  // namespace pellwin::PowerProfile
