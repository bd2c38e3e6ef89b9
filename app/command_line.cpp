#include "app/command_line.h"

#include <algorithm>
#include <iterator>

#include "core/base/printable_text.h"

namespace pellwin {

namespace {

Command parseMode(const std::vector<std::string>& arguments) {
  auto find = [&](std::string_view flag) {
    return std::find(arguments.begin(), arguments.end(), flag);
  };
  const auto has = [&](std::string_view flag) { return find(flag) != arguments.end(); };

  if (has("--check")) return {.kind = CommandKind::check};
  if (auto it = find("--check-storage"); it != arguments.end()) {
    return {.kind = CommandKind::checkStorage, .arguments = {std::next(it), arguments.end()}};
  }
  if (auto it = find("--seed-history"); it != arguments.end()) {
    if (std::next(it) == arguments.end()) return {.kind = CommandKind::seedHistoryNoPath};
    return {.kind = CommandKind::seedHistory, .path = *std::next(it)};
  }
  if (has("--report")) return {.kind = CommandKind::report};
  if (has("--help") || has("-h")) return {.kind = CommandKind::help};
  if (has("--version")) return {.kind = CommandKind::version};
  return {.kind = CommandKind::windowed};
}

// The path after the first `flag`, when one follows it.
std::optional<std::string> valueAfter(const std::vector<std::string>& arguments,
                                      std::string_view flag) {
  const auto it = std::find(arguments.begin(), arguments.end(), flag);
  if (it == arguments.end() || std::next(it) == arguments.end()) return std::nullopt;
  return *std::next(it);
}

LaunchOptions parseLaunchOptions(const std::vector<std::string>& arguments) {
  const auto has = [&](std::string_view flag) {
    return std::find(arguments.begin(), arguments.end(), flag) != arguments.end();
  };
  LaunchOptions options{.statusPath = valueAfter(arguments, "--status"),
                        .capture = has("--capture")};
  // The outcome of a test notification is only ever reported in the status file.
  options.testNotification = options.statusPath.has_value() && has("--test-notification");
  return options;
}

// The first argument that no mode takes, as a sentence. Position 0 is the program itself.
std::optional<std::string> strayArgument(const std::vector<std::string>& arguments) {
  constexpr std::string_view switches[] = {
      "--check",  "--report", "--json", "--help", "-h", "--version", "--test-notification",
      "--capture"};
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--check-storage" || argument == "--seed-history") return std::nullopt;
    if (argument == "--history-db" || argument == "--status") {
      ++i;  // its value, checked elsewhere when missing
      continue;
    }
    if (std::find(std::begin(switches), std::end(switches), argument) != std::end(switches)) {
      continue;
    }
    if (argument.starts_with("-")) {
      return "tovrin doesn't know the option " + printableText(argument) + " (see tovrin --help)";
    }
    return "tovrin takes no argument \"" + printableText(argument) + "\" here (see tovrin --help)";
  }
  return std::nullopt;
}

}  // namespace

Command parseCommandLine(const std::vector<std::string>& arguments) {
  const auto it = std::find(arguments.begin(), arguments.end(), "--history-db");
  if (it != arguments.end() && std::next(it) == arguments.end()) {
    return {.kind = CommandKind::badArguments, .problem = "--history-db needs a path"};
  }
  if (auto stray = strayArgument(arguments)) {
    return {.kind = CommandKind::badArguments, .problem = std::move(*stray)};
  }
  Command command = parseMode(arguments);
  if (it != arguments.end()) command.historyDatabase = *std::next(it);
  if (command.kind == CommandKind::check || command.kind == CommandKind::report) {
    command.json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  }
  if (command.kind == CommandKind::windowed) command.launch = parseLaunchOptions(arguments);
  return command;
}

std::string usageText() {
  return "Usage: tovrin [MODE]\n"
         "Tells why the computer is slow right now and which app is behind it.\n"
         "\n"
         "With no mode, starts the tray app.\n"
         "  --check [--json]             read the machine twice, two seconds apart, and print\n"
         "                               its state, its busiest apps and each resource's health\n"
         "                               (as JSON with --json)\n"
         "  --check-storage [DIR] [...]  scan a folder and print its biggest items\n"
         "                               (see --check-storage --help)\n"
         "  --seed-history PATH          write a synthetic history into a scratch database\n"
         "  --report [--json]            print the weekly report from the history file\n"
         "                               (as JSON with --json)\n"
         "  --history-db PATH            use another history file\n"
         "  -h, --help                   print this help\n"
         "  --version                    print the version\n"
         "\n"
         "Launch checks of the tray app:\n"
         "  --status PATH                five seconds after start, write the login item,\n"
         "                               notification and visible-window state to PATH\n"
         "  --test-notification          with --status: post a test notification and write\n"
         "                               its outcome too\n"
         "  --capture                    keep the window open on every start (for screenshots)\n";
}

}  // namespace pellwin
