// Folds the processes of one snapshot into apps: all processes of one app (its helpers, an app
// bundle's nested helpers, or, on Linux, every process the desktop knows as that app) count as
// one entry. Scripts of interpreters and known parts of the system are shown on their own
// terms. Pure functions of their inputs.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/monitor/app_usage.h"
#include "core/monitor/process_usage.h"
#include "core/monitor/readings.h"

namespace pellwin::AppGrouper {

// The identifier of the app bundle at a path, if known. May be empty: then no identifier.
using BundleIdentifierLookup = std::function<std::optional<std::string>(std::string_view)>;

// The key processes are folded by:
// - "pid:N" for a process shown on its own (a framework Python; an interpreter's script);
// - "proc:NAME" for a known part of the system (NAME is the catalog's key, shared by a family
//   such as the kernel's workers) and for every other command-line program by process name;
// - "app:BUNDLE" for an app bundle's processes, "app:ID" for a desktop app's processes.
[[nodiscard]] std::string key(const ProcessSample& sample);

// The executable's last path component and the remaining arguments, blank-separated, with runs
// of white space collapsed; longer than 160 characters, it is cut to 159 and "…".
[[nodiscard]] std::string commandLine(const ProcessSample& sample);

// One entry per key, with counts, pids and sums of the folded processes, busiest first: by CPU,
// then by memory, equal ones keeping the order of their first process.
[[nodiscard]] std::vector<AppUsage> group(std::span<const ProcessUsage> usages,
                                          const BundleIdentifierLookup& bundleIdentifier = {});

}  // namespace pellwin::AppGrouper
