// What a process's cgroup says about the app it belongs to: the systemd unit names that
// desktop launchers, Flatpak, Snap and D-Bus give the processes they start. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

// The unified hierarchy's path ("0::" line), else the "name=systemd" line of a legacy or
// hybrid layout; empty when neither is there.
[[nodiscard]] std::string parseCgroupPath(std::string_view procCgroup);

// systemd's unit-name escaping: every "\xNN" becomes the byte NN.
[[nodiscard]] std::string unescapeUnitName(std::string_view name);

struct CgroupUnit {
  enum class Kind {
    none,      // no unit that names an app
    terminal,  // a terminal tab, a login session or systemd-run: a command-line program
    app,       // app-[<launcher>-]<id>-<random>.scope, app-<id>@<random>.service, ...
    flatpak,   // app-flatpak-<id>-<pid>.scope
    snap,      // snap.<snap>.<app>-<uuid>.scope, snap.<snap>.<app>.service
    dbus,      // a D-Bus activated service: the bus name is the desktop id
  } kind = Kind::none;
  // Desktop ids to try, best first, without ".desktop". For app units the launcher token is
  // uncertain (and Electron does not escape its dashes), so every split is offered.
  std::vector<std::string> ids{};
  friend bool operator==(const CgroupUnit&, const CgroupUnit&) = default;
};

// One path component, such as "app-gnome-org.gnome.Nautilus-4242.scope".
[[nodiscard]] CgroupUnit parseUnitName(std::string_view component);

// The first component, walking from the leaf towards the root, that is not of kind none.
[[nodiscard]] CgroupUnit innermostUnit(std::string_view cgroupPath);

}  // namespace pellwin
