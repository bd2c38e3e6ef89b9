// Every outside fact a mode or model needs (home folder, XDG folders, the proc and sys roots,
// the search path and locale), gathered once by main() and passed as a value so tests set each.
#pragma once

#include <optional>
#include <string>

namespace pellwin {

struct Environment {
  std::string home;                          // the user's home folder
  std::optional<std::string> xdgDataHome;    // $XDG_DATA_HOME, absent when unset
  std::optional<std::string> xdgCacheHome;   // $XDG_CACHE_HOME, absent when unset
  std::optional<std::string> xdgConfigHome;  // $XDG_CONFIG_HOME, absent when unset
  std::optional<std::string> xdgStateHome;   // $XDG_STATE_HOME, absent when unset
  std::string procRoot = "/proc";
  std::string sysRoot = "/sys";
  std::optional<std::string> xdgDataDirs;  // $XDG_DATA_DIRS, absent when unset
  std::string searchPath;                  // $PATH
  std::string messagesLocale;              // $LC_ALL, else $LC_MESSAGES, else $LANG
  bool errIsTerminal = false;  // standard error is a terminal: progress may be shown there
};

// This process's environment: $HOME (else the password database's home folder), the XDG
// variables, $PATH, the messages locale, and whether standard error is a terminal.
[[nodiscard]] Environment environmentOfProcess();

// The data folder's parent for this environment (the XDG data home).
[[nodiscard]] std::string applicationSupport(const Environment& environment);

// The XDG config home: $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
[[nodiscard]] std::string configHome(const Environment& environment);

}  // namespace pellwin
