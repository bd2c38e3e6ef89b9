#include "app/entry.h"

#include <ostream>

#include "core/data_folder.h"
#include "probe/app_data_folder.h"

namespace pellwin {

std::string applicationSupport(const Environment& environment) {
  return DataFolder::applicationSupport(environment.home, environment.xdgDataHome);
}

void migrateDataFolder(const Environment& environment, std::ostream& err) {
  auto moved = AppDataFolder::migrate(applicationSupport(environment));
  if (!moved) err << "Couldn't move the data folder to its new name: " << moved.error() << "\n";
}

namespace {
int notBuiltYet(std::ostream& err, std::string_view what) {
  err << what << " isn't built yet in this version of Tovrin.\n";
  return 1;
}
}  // namespace

int runCommand(const Command& command, const Environment& /*environment*/, std::ostream& out,
               std::ostream& err) {
  switch (command.kind) {
    case CommandKind::check: return notBuiltYet(err, "The --check mode");
    case CommandKind::checkStorage: return notBuiltYet(err, "The --check-storage mode");
    case CommandKind::seedHistory: return notBuiltYet(err, "The --seed-history mode");
    case CommandKind::seedHistoryNoPath: err << "--seed-history needs a path\n"; return 2;
    case CommandKind::help: out << usageText(); return 0;
    case CommandKind::version: out << "tovrin " << PELLWIN_VERSION << "\n"; return 0;
    case CommandKind::windowed: return notBuiltYet(err, "The tray app");
  }
  return 1;
}

}  // namespace pellwin
