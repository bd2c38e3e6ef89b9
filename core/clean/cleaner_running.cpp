#include "core/clean/cleaner_running.h"

#include "core/base/ascii_case.h"

namespace pellwin::CleanerRunning {

namespace {

// "Xcode" for "com.apple.dt.Xcode"; the whole identifier when it has no dot-separated piece.
std::string lastPiece(std::string_view identifier) {
  const auto dot = identifier.rfind('.');
  if (dot == std::string_view::npos || dot + 1 == identifier.size()) return std::string(identifier);
  return std::string(identifier.substr(dot + 1));
}

// A cache folder named after an app is in use while that app runs, or one of its helpers whose
// identity continues the name, or an app whose identity is a leading part of the name.
bool childInUse(const std::string& child, const RunningSet& running) {
  for (const std::string& b : running.bundleIDs) {
    if (b.empty()) continue;  // an empty identity would be a prefix of every name
    if (b == child || (child + ".").starts_with(b) || (b + ".").starts_with(child)) return true;
  }
  return running.names.contains(child);
}

std::optional<std::string> aliasInUse(const std::string& child, const RunningSet& running,
                                      const CleanSource& source) {
  for (const ChildAlias& alias : source.childAliases) {
    if (asciiLower(alias.child) != child) continue;
    for (const std::string& name : alias.names) {
      const std::string key = asciiLower(name);
      if (running.names.contains(key) || running.bundleIDs.contains(key)) return name + " is open";
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> pause(std::optional<std::string_view> child, const RunningSet& running,
                                 const CleanSource& source) {
  for (const std::string& tool : source.tools) {
    if (running.names.contains(asciiLower(tool))) return tool + " is running";
  }
  for (const std::string& identifier : source.bundleIDs) {
    if (running.bundleIDs.contains(asciiLower(identifier)))
      return lastPiece(identifier) + " is open";
  }
  if (!child) return std::nullopt;
  const std::string name = asciiLower(*child);
  if (childInUse(name, running)) return std::string(*child) + " is open";
  return aliasInUse(name, running, source);
}

}  // namespace pellwin::CleanerRunning
