// The process entry: gathers the environment, moves the data folder, then runs one
// command-line mode, or the tray app when none was asked for.
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/entry.h"
#include "ui/malloc_arenas.h"
#include "ui/tray_app.h"

namespace {

bool hasDisplay() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && value[0] != '\0') return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  pellwin::ui::limitMallocArenas();
  const std::vector<std::string> arguments(argv, argv + argc);
  const pellwin::Environment environment = pellwin::environmentOfProcess();
  pellwin::migrateDataFolder(environment, std::cerr);
  const pellwin::Command command = pellwin::parseCommandLine(arguments);
  if (command.kind != pellwin::CommandKind::windowed) {
    const int status = pellwin::runCommand(command, environment, std::cout, std::cerr);
    std::cout.flush();
    return status;
  }
  if (!hasDisplay()) {
    std::cerr
        << "Tovrin needs a desktop session for its window; without one, try tovrin --check.\n";
    return 2;
  }
  return pellwin::ui::runTrayApp(argc, argv, command, environment);
}
