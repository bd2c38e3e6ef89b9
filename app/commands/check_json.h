// `tovrin --check --json`: the check's snapshot and each resource's health as one JSON object,
// for scripts. Numbers are raw (bytes, bytes per second, shares from 0 to 1, seconds); enum
// values are their stable raw forms with the label beside them. Texts that are not UTF-8 (a
// process's name) have their bad bytes replaced.
#pragma once

#include <map>
#include <string>

#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

// With no snapshot, {"error": "No snapshot: the second reading failed."}. Indented by two.
[[nodiscard]] std::string checkJSON(const Snapshot* snapshot,
                                    const std::map<Resource, Health>& health);

}  // namespace pellwin
