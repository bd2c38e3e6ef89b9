// The process entry: gathers the environment, moves the data folder, then runs one mode.
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/entry.h"

namespace {

std::string homeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
  if (const passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_dir != nullptr) {
    return entry->pw_dir;
  }
  return "/";
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv, argv + argc);
  pellwin::Environment environment{.home = homeFolder()};
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr) environment.xdgDataHome = xdg;
  if (const char* xdg = std::getenv("XDG_CACHE_HOME"); xdg != nullptr)
    environment.xdgCacheHome = xdg;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg != nullptr)
    environment.xdgConfigHome = xdg;
  if (const char* xdg = std::getenv("XDG_STATE_HOME"); xdg != nullptr)
    environment.xdgStateHome = xdg;
  if (const char* dirs = std::getenv("XDG_DATA_DIRS"); dirs != nullptr)
    environment.xdgDataDirs = dirs;
  if (const char* path = std::getenv("PATH"); path != nullptr) environment.searchPath = path;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* locale = std::getenv(name);
    if (locale != nullptr && locale[0] != '\0') {
      environment.messagesLocale = locale;
      break;
    }
  }

  environment.errIsTerminal = ::isatty(STDERR_FILENO) == 1;

  pellwin::migrateDataFolder(environment, std::cerr);
  const pellwin::Command command = pellwin::parseCommandLine(arguments);
  const int status = pellwin::runCommand(command, environment, std::cout, std::cerr);
  std::cout.flush();
  return status;
}
