// Runs the mode the command line chose and returns the process exit status. Takes every
// outside fact (home folder, environment, output streams) as a value so tests drive it whole.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "app/command_line.h"

namespace pellwin {

struct Environment {
  std::string home;                        // the user's home folder
  std::optional<std::string> xdgDataHome;  // $XDG_DATA_HOME, absent when unset
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

// The data folder's parent for this environment (the XDG data home).
[[nodiscard]] std::string applicationSupport(const Environment& environment);

// Moves the data folder to its current name; a failure is reported on `err` and start-up
// carries on.
void migrateDataFolder(const Environment& environment, std::ostream& err);

// The real history file: the data folder's "history.sqlite".
[[nodiscard]] std::string defaultHistoryFile(const Environment& environment);
// The history file this run uses: "--history-db PATH" when given, else the real one.
[[nodiscard]] std::string historyFile(const Command& command, const Environment& environment);

[[nodiscard]] int runCommand(const Command& command, const Environment& environment,
                             std::ostream& out, std::ostream& err);

}  // namespace pellwin
