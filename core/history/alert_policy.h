// Decides, snapshot by snapshot, which resources are due for a notification: red on screen for
// `redFor` seconds, once per red stretch, and at most once per `cooldown` for each resource.
// A value owned by the sampling side; not thread-safe. Times are seconds since 1970.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "core/monitor/resource.h"

namespace pellwin {

struct AlertPolicy {
  // A pause longer than this between calls (sleep, a stalled sampler) ends every red stretch.
  static constexpr double maxGap = 30.0;

  double redFor = 120.0;
  double cooldown = 3600.0;
  std::map<Resource, double> redSince{};
  std::set<Resource> notified{};          // notified during their current red stretch
  std::map<Resource, double> lastSent{};  // kept across red stretches
  std::optional<double> lastUpdate{};

  // The resources to notify now, in resource order. `displayed` is the health shown on
  // screen; an absent resource counts as not red.
  [[nodiscard]] std::vector<Resource> due(const std::map<Resource, Health>& displayed, double now);
};

}  // namespace pellwin
