// Which apps the user may quit from the list, and in which words the others are refused. The
// parts of the desktop that end the session (or start again at once) when quit are listed as
// data, each with the reason it is there. Pure; safe from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/monitor/app_usage.h"

namespace pellwin {

// A process that must never be quit from the list, and why.
struct EssentialProcess {
  std::string_view name{};  // the process name as the kernel or its executable gives it
  std::string_view why{};   // one sentence: what quitting it would do
};

namespace QuitPolicy {

// The other operating system's names, kept so that one list serves both.
[[nodiscard]] std::span<const std::string_view> essentials();

// What ends a Linux desktop session when quit, or restarts at once: the compositor or window
// manager, the shell or panel, the display server, the session manager, the message bus,
// systemd and the login manager.
[[nodiscard]] std::span<const EssentialProcess> linuxEssentials();

// Whether `name` is one of the essentials above. A name of exactly 15 characters also matches
// a longer essential that begins with it: the kernel cuts the names of processes whose
// executable may not be read (another user's) to 15 characters.
[[nodiscard]] bool isEssential(std::string_view name);

// Absent when the app may be quit; otherwise the sentence that says why not. Checked in order:
// no processes; the program itself (`ownPID` among its processes); a part of the system (its
// category, or its name, command line or process name among the essentials).
[[nodiscard]] std::optional<std::string> refusal(const AppUsage& app, std::int32_t ownPID);

}  // namespace QuitPolicy
}  // namespace pellwin
