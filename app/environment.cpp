#include "app/environment.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "core/base/data_folder.h"

namespace pellwin {
namespace {

std::string homeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
  if (const passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_dir != nullptr) {
    return entry->pw_dir;
  }
  return "/";
}

std::optional<std::string> variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

}  // namespace

Environment environmentOfProcess() {
  Environment environment{.home = homeFolder()};
  environment.xdgDataHome = variable("XDG_DATA_HOME");
  environment.xdgCacheHome = variable("XDG_CACHE_HOME");
  environment.xdgConfigHome = variable("XDG_CONFIG_HOME");
  environment.xdgStateHome = variable("XDG_STATE_HOME");
  environment.xdgDataDirs = variable("XDG_DATA_DIRS");
  environment.searchPath = variable("PATH").value_or("");
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const std::string locale = variable(name).value_or("");
    if (!locale.empty()) {
      environment.messagesLocale = locale;
      break;
    }
  }
  environment.errIsTerminal = ::isatty(STDERR_FILENO) == 1;
  return environment;
}

std::string applicationSupport(const Environment& environment) {
  return DataFolder::applicationSupport(environment.home, environment.xdgDataHome);
}

std::string configHome(const Environment& environment) {
  const auto& variable = environment.xdgConfigHome;
  return variable && variable->starts_with('/') ? *variable : environment.home + "/.config";
}

}  // namespace pellwin
