// What runs now, as quick clean asks it: the names a user would call each program by, and the
// app identities of the running processes. Built from one process list; pure.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "core/monitor/readings.h"

namespace pellwin {

struct RunningSet {
  std::set<std::string> bundleIDs;  // app identities of running processes, lower case
  std::set<std::string> names;      // program names, lower case
  friend bool operator==(const RunningSet&, const RunningSet&) = default;

  // Every process's names (programNames) and app identity; kernel threads are left out.
  [[nodiscard]] static RunningSet from(const std::vector<ProcessSample>& processes);
};

// The names one process goes by, in lower case: its reported name, its executable's file name,
// the first word of its first argument (npm retitles itself "npm install"; Bazel's server is
// "bazel(workspace)"), and for interpreters the program they run: the script's name without
// its extension, "-cli" or version suffix ("npm-cli.js" gives npm, "yarn-4.1.0.cjs" yarn),
// Python's "-m" module, or Java's jar or main class (Gradle's and Maven's launchers are
// named gradle and mvn, the IntelliJ platform's idea).
[[nodiscard]] std::set<std::string> programNames(const ProcessSample& process);

}  // namespace pellwin
