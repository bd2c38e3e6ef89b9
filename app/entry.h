// Runs the mode the command line chose and returns the process exit status. Takes every
// outside fact (home folder, environment, output streams) as a value so tests drive it whole.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "app/command_line.h"
#include "app/environment.h"

namespace pellwin {

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
