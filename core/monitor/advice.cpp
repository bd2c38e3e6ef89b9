#include "core/monitor/advice.h"

#include "core/base/format.h"

namespace pellwin::Advice {
namespace {

bool isSystem(const AppUsage& app) { return app.category == AppCategory::system; }

bool isBrowserWithTabs(const AppUsage& app) {
  return app.category == AppCategory::browsers && app.processCount >= 2;
}

}  // namespace

std::string systemLine(const AppUsage& app) {
  if (app.explanation) return app.name + " is part of macOS. " + *app.explanation;
  return app.name + " is part of macOS and usually settles on its own.";
}

std::string quitLine(const AppUsage& app) {
  if (isSystem(app)) return systemLine(app);
  if (isBrowserWithTabs(app)) return "Close " + app.name + " tabs you don't need.";
  return "Quit " + app.name + " if it's not in use.";
}

std::string cpuLine(const AppUsage& app) {
  if (isSystem(app)) return systemLine(app);
  return "Quit " + app.name + " if it's not doing something you need.";
}

std::string appHelp(const AppUsage& app) {
  if (isSystem(app)) return app.name + " is part of macOS and usually settles on its own.";
  const std::string freed = " would free about " + Format::memory(app.footprintBytes) + ".";
  if (isBrowserWithTabs(app)) return "Close tabs you don't need. Quitting " + app.name + freed;
  return "Quitting " + app.name + freed;
}

}  // namespace pellwin::Advice
