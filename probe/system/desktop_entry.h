// One freedesktop.org desktop entry (Desktop Entry Specification 1.5): the keys of its
// "[Desktop Entry]" group that tell which app a process belongs to. Pure parsing of text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

struct DesktopEntry {
  std::string id;    // desktop file id, "org.gnome.Nautilus.desktop", "kde4-dolphin.desktop"
  std::string path;  // the file
  std::string type;  // "Application", "Link", "Directory"
  std::string name;  // Name, in the best locale match
  std::vector<std::string> exec{};  // Exec split into arguments, field codes dropped
  std::string tryExec;
  std::string startupWMClass;
  std::vector<std::string> categories{};
  std::string flatpakId;  // X-Flatpak
  std::string snapName;   // X-SnapInstanceName
  bool noDisplay = false;
  bool hidden = false;
  friend bool operator==(const DesktopEntry&, const DesktopEntry&) = default;
};

// `locale` is a POSIX locale name such as "de_DE.UTF-8@euro", or empty. Name is matched as
// lang_COUNTRY@MODIFIER, lang_COUNTRY, lang@MODIFIER, lang, then the untranslated Name.
// Absent when the text has no "[Desktop Entry]" group.
[[nodiscard]] std::optional<DesktopEntry> parseDesktopEntry(std::string_view text,
                                                            std::string_view locale);

// The arguments of an Exec value: double quotes group, and inside them \" \` \$ \\ escape;
// the field codes %f %F %u %U %i %c %k and the deprecated ones are dropped; %% is "%".
[[nodiscard]] std::vector<std::string> splitExec(std::string_view exec);

// What an Exec line really starts: env, sh -c, gtk-launch, pkexec, nice and similar launchers
// are taken off. A Flatpak or Snap launch is recognised by its app id instead.
struct LaunchTarget {
  enum class Kind { program, flatpak, snap } kind = Kind::program;
  std::vector<std::string> arguments{};  // for a program: what runs, argument 0 first
  std::string sandboxId;                 // for flatpak: the app id; for snap: the snap name
  friend bool operator==(const LaunchTarget&, const LaunchTarget&) = default;
};
[[nodiscard]] LaunchTarget launchTarget(std::vector<std::string> exec);

// Interpreters, shells and launchers: names that say nothing about which app runs. A trailing
// version ("python3.11", "electron33") is ignored.
[[nodiscard]] bool isGenericProgramName(std::string_view name);

}  // namespace pellwin
