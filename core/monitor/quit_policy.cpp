#include "core/monitor/quit_policy.h"

#include <algorithm>

namespace pellwin::QuitPolicy {
namespace {

constexpr std::string_view kEssentials[] = {
    "Finder", "Dock",     "WindowServer", "loginwindow", "SystemUIServer",
    "ControlCenter", "kernel_task", "launchd", "Tovrin",
};

constexpr EssentialProcess kLinuxEssentials[] = {
    // Compositors and window managers.
    {"gnome-shell", "GNOME's compositor and shell: quitting it on Wayland ends the session."},
    {"mutter", "Draws every window; without it the desktop has no windows to show."},
    {"kwin_wayland", "KDE's compositor on Wayland: every app window goes with it."},
    {"kwin_x11", "KDE's window manager on X11: windows lose their frames until it restarts."},
    {"xfwm4", "Xfce's window manager: windows lose their frames until the session restarts it."},
    {"marco", "MATE's window manager: windows lose their frames until it restarts."},
    {"muffin", "Cinnamon's window manager: windows lose their frames until it restarts."},
    {"cinnamon", "Cinnamon's shell and window manager: the desktop restarts or the session ends."},
    {"budgie-wm", "Budgie's window manager: windows lose their frames until it restarts."},
    {"sway", "The compositor of a sway session: quitting it logs you out."},
    {"Hyprland", "The compositor of a Hyprland session: quitting it logs you out."},
    {"labwc", "The compositor of a labwc session: quitting it logs you out."},
    {"wayfire", "The compositor of a Wayfire session: quitting it logs you out."},
    {"weston", "The compositor of a Weston session: quitting it logs you out."},
    {"i3", "The window manager of an i3 session: quitting it logs you out."},
    {"openbox", "The window manager of an Openbox session: quitting it logs you out."},
    // Shells and panels.
    {"plasmashell", "KDE's desktop and panels: the session starts it again straight away."},
    {"xfce4-panel", "Xfce's panel: the session starts it again straight away."},
    {"mate-panel", "MATE's panel: the session starts it again straight away."},
    {"budgie-panel", "Budgie's panel: the session starts it again straight away."},
    {"lxqt-panel", "LXQt's panel: the session starts it again straight away."},
    // Display servers.
    {"Xorg", "The X display server: quitting it closes every window and logs you out."},
    {"X", "The X display server: quitting it closes every window and logs you out."},
    {"Xwayland", "Runs X11 apps on Wayland: every X11 window closes with it."},
    // Session managers.
    {"gnome-session-binary", "GNOME's session manager: quitting it logs you out."},
    {"gnome-session", "GNOME's session manager: quitting it logs you out."},
    {"ksmserver", "KDE's session manager: quitting it logs you out."},
    {"plasma_session", "Starts and watches KDE's session: quitting it logs you out."},
    {"startplasma-wayland", "Starts KDE's session on Wayland: quitting it logs you out."},
    {"startplasma-x11", "Starts KDE's session on X11: quitting it logs you out."},
    {"xfce4-session", "Xfce's session manager: quitting it logs you out."},
    {"mate-session", "MATE's session manager: quitting it logs you out."},
    {"cinnamon-session", "Cinnamon's session manager: quitting it logs you out."},
    {"lxqt-session", "LXQt's session manager: quitting it logs you out."},
    // Message buses.
    {"dbus-daemon", "The message bus every desktop app talks through: the session ends with it."},
    {"dbus-broker", "The message bus every desktop app talks through: the session ends with it."},
    {"dbus-broker-launch", "Starts the message bus: the session's bus ends with it."},
    // systemd.
    {"systemd", "Starts and watches every service, and your session's own: quitting it logs "
                "you out."},
    // Login managers.
    {"gdm", "GNOME's login screen and the parent of your session: quitting it logs you out."},
    {"gdm3", "GNOME's login screen and the parent of your session: quitting it logs you out."},
    {"gdm-session-worker", "Holds your login session open: quitting it logs you out."},
    {"sddm", "KDE's login screen and the parent of your session: quitting it logs you out."},
    {"sddm-helper", "Holds your login session open: quitting it logs you out."},
    {"lightdm", "The login screen and the parent of your session: quitting it logs you out."},
};

// The kernel keeps 15 bytes of a process name (TASK_COMM_LEN, less the final NUL).
constexpr std::size_t commLength = 15;

bool matches(std::string_view essential, std::string_view name) {
  if (essential == name) return true;
  return name.size() == commLength && essential.size() > commLength && essential.starts_with(name);
}

// On this system a known part of the desktop carries a display name ("GNOME desktop"); the
// process name it runs under is the one kept in its key.
std::optional<std::string_view> processName(const AppUsage& app) {
  constexpr std::string_view prefix = "proc:";
  if (!app.id.starts_with(prefix)) return std::nullopt;
  return std::string_view(app.id).substr(prefix.size());
}

}  // namespace

std::span<const std::string_view> essentials() { return kEssentials; }

std::span<const EssentialProcess> linuxEssentials() { return kLinuxEssentials; }

bool isEssential(std::string_view name) {
  return std::ranges::any_of(kEssentials, [&](std::string_view e) { return e == name; }) ||
         std::ranges::any_of(kLinuxEssentials,
                             [&](const EssentialProcess& e) { return matches(e.name, name); });
}

std::optional<std::string> refusal(const AppUsage& app, std::int32_t ownPID) {
  if (app.pids.empty()) {
    return "Tovrin can't tell which processes belong to " + app.name + ".";
  }
  if (std::ranges::find(app.pids, ownPID) != app.pids.end()) {
    return std::string("This is Tovrin. Use Quit Tovrin in the menu bar panel.");
  }
  const auto process = processName(app);
  if (app.category == AppCategory::system || isEssential(app.name) ||
      (app.detail && isEssential(*app.detail)) || (process && isEssential(*process))) {
    return app.name + " is part of macOS. Quitting it can log you out or it starts again "
                      "straight away.";
  }
  return std::nullopt;
}

}  // namespace pellwin::QuitPolicy
