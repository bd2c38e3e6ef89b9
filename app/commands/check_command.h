// `tovrin --check`: two readings two seconds apart, then the machine's state, its busiest apps
// and the health of each resource, printed to standard output. Writes nothing to disk.
#pragma once

#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/monitor/readings.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin::CheckCommand {

// Printed instead of the lines when the second reading gave no snapshot.
inline constexpr const char* noSnapshot = "No snapshot: the second reading failed.";

// At most this many app lines are printed.
inline constexpr std::size_t maxAppLines = 10;

// The lines printed for a snapshot and the health judged from it, without line ends. Names and
// command lines are made printable: other programs choose them freely.
[[nodiscard]] std::vector<std::string> lines(const Snapshot& snapshot,
                                             const std::map<Resource, Health>& health);

// What the check saw: the snapshot of two readings (absent when the second reading gave none)
// and each resource's health judged from it.
struct Result {
  std::optional<Snapshot> snapshot;
  std::map<Resource, Health> health;
};

// Takes a reading, waits two seconds with `sleep`, takes another, and judges their snapshot.
[[nodiscard]] Result take(const std::function<SystemSample()>& read,
                          const std::function<void(double seconds)>& sleep);

// Takes the check and prints its lines, or a sentence saying why there is no snapshot.
void run(const std::function<SystemSample()>& read,
         const std::function<void(double seconds)>& sleep, std::ostream& out);

// Takes the check and prints it as one JSON document (see check_json.h).
void runJSON(const std::function<SystemSample()>& read,
             const std::function<void(double seconds)>& sleep, std::ostream& out);

}  // namespace pellwin::CheckCommand
