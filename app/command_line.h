// Decides from the process argument list which mode runs. Pure: no mode is run here.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/enum_text.h"

namespace pellwin {

enum class CommandKind {
  check,              // "--check"
  checkStorage,       // "--check-storage" with the arguments after it
  seedHistory,        // "--seed-history PATH"
  seedHistoryNoPath,  // "--seed-history" as the last argument
  report,             // "--report": the weekly report from the history file
  help,               // "--help" or "-h"
  version,            // "--version"
  windowed,           // nothing matched: the tray app
  badArguments,       // an argument no mode takes, or a switch without its value
};

[[nodiscard]] constexpr EnumTable<CommandKind::badArguments> textTable(CommandKind) {
  return {{
      {CommandKind::check, "check"},
      {CommandKind::checkStorage, "checkStorage"},
      {CommandKind::seedHistory, "seedHistory"},
      {CommandKind::seedHistoryNoPath, "seedHistoryNoPath"},
      {CommandKind::report, "report"},
      {CommandKind::help, "help"},
      {CommandKind::version, "version"},
      {CommandKind::windowed, "windowed"},
      {CommandKind::badArguments, "badArguments"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(CommandKind kind) { return enumText(kind); }

// The tray app's launch checks, read only when no command-line mode was chosen.
struct LaunchOptions {
  std::optional<std::string> statusPath{};  // "--status PATH": write the status file there
  bool testNotification = false;            // "--test-notification", with --status only
  bool capture = false;                     // "--capture": skip the later-launch step
  friend bool operator==(const LaunchOptions&, const LaunchOptions&) = default;
};

struct Command {
  CommandKind kind = CommandKind::windowed;
  std::vector<std::string> arguments;            // for checkStorage: everything after the switch
  std::string path;                              // for seedHistory
  std::optional<std::string> historyDatabase{};  // "--history-db PATH", in any mode
  std::string problem{};                         // for badArguments: one line for the user
  bool json = false;                             // "--json", for check and report
  LaunchOptions launch{};                        // for windowed
  friend bool operator==(const Command&, const Command&) = default;
};

// `arguments` is the whole argument list, the program path in position 0 included. Tested in
// this order, the first match winning: "--check" exactly, "--check-storage", "--seed-history",
// "--report", "--help"/"-h", "--version"; for the switches that take arguments the first
// occurrence counts. "--history-db" followed by another argument sets `historyDatabase` whatever
// the mode. "--json" anywhere sets `json` for the check and the report. Every argument before
// "--check-storage" or "--seed-history" (whose arguments are their own) must be a known switch:
// anything else, or "--history-db" as the last argument, is `badArguments`.
// For the tray app, "--status" followed by another argument names the status file (as the last
// argument it is ignored); "--test-notification" counts only with a status file, and
// "--capture" anywhere.
[[nodiscard]] Command parseCommandLine(const std::vector<std::string>& arguments);

// The text `--help` prints.
[[nodiscard]] std::string usageText();

}  // namespace pellwin
