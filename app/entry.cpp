#include "app/entry.h"

#include <chrono>
#include <ostream>
#include <thread>

#include "app/commands/check_command.h"
#include "app/commands/report_command.h"
#include "app/commands/seed_history.h"
#include "app/commands/storage_check_command.h"
#include "app/models/history_recorder.h"
#include "app/system_calendar.h"
#include "app/system_roots.h"
#include "core/base/data_folder.h"
#include "probe/files/app_data_folder.h"

namespace pellwin {

void migrateDataFolder(const Environment& environment, std::ostream& err) {
  auto moved = AppDataFolder::migrate(applicationSupport(environment));
  if (!moved) {
    err << "Couldn't move the data folder to its new name: "
        << sentence(moved.error(), ErrorWording::reasonAndPath) << "\n";
  }
}

std::string defaultHistoryFile(const Environment& environment) {
  return HistoryRecorder::storeURL(std::nullopt, DataFolder::path(applicationSupport(environment)))
      .string();
}

std::string historyFile(const Command& command, const Environment& environment) {
  return HistoryRecorder::storeURL(command.historyDatabase,
                                   DataFolder::path(applicationSupport(environment)))
      .string();
}

namespace {
int notBuiltYet(std::ostream& err, std::string_view what) {
  err << what << " isn't built yet in this version of Tovrin.\n";
  return 1;
}

int check(const Command& command, const Environment& environment, std::ostream& out) {
  SystemReader reader(systemReaderRoots(environment));
  const auto read = [&] { return reader.read(); };
  const auto sleep = [](double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
  };
  if (command.json) {
    CheckCommand::runJSON(read, sleep, out);
  } else {
    CheckCommand::run(read, sleep, out);
  }
  return 0;
}

int report(const Command& command, const Environment& environment, std::ostream& out,
           std::ostream& err) {
  const double now = systemNow();
  return ReportCommand::run(historyFile(command, environment), now, systemCalendar(now),
                            command.json, out, err);
}

int seedHistory(const Command& command, const Environment& environment, std::ostream& out,
                std::ostream& err) {
  // The real file is the default one: "--history-db" never makes another file real.
  const double now = systemNow();
  return SeedHistory::run(command.path, defaultHistoryFile(environment), now, systemCalendar(now),
                          out, err);
}
}  // namespace

int runCommand(const Command& command, const Environment& environment, std::ostream& out,
               std::ostream& err) {
  switch (command.kind) {
    case CommandKind::check: return check(command, environment, out);
    case CommandKind::checkStorage:
      return runStorageCheck(command.arguments, environment, out, err,
                             historyFile(command, environment));
    case CommandKind::seedHistory: return seedHistory(command, environment, out, err);
    case CommandKind::seedHistoryNoPath: err << "--seed-history needs a path\n"; return 2;
    case CommandKind::report: return report(command, environment, out, err);
    case CommandKind::help: out << usageText(); return 0;
    case CommandKind::version: out << "tovrin " << PELLWIN_VERSION << "\n"; return 0;
    case CommandKind::windowed: return notBuiltYet(err, "The tray app");
    case CommandKind::badArguments: err << command.problem << "\n"; return 2;
  }
  return 1;
}

}  // namespace pellwin
