#include "core/history/alert_policy.h"

namespace pellwin {

std::vector<Resource> AlertPolicy::due(const std::map<Resource, Health>& displayed, double now) {
  if (lastUpdate && now - *lastUpdate > maxGap) {
    redSince.clear();
    notified.clear();
  }
  lastUpdate = now;

  std::vector<Resource> result;
  for (Resource resource : allResources) {
    const auto shown = displayed.find(resource);
    if (shown == displayed.end() || shown->second != Health::problem) {
      redSince.erase(resource);
      notified.erase(resource);
      continue;
    }
    const double since = redSince.try_emplace(resource, now).first->second;
    if (notified.contains(resource)) continue;
    if (now - since < redFor) continue;
    // Not marked notified while cooling down, so it fires as soon as the hour has passed.
    if (const auto sent = lastSent.find(resource);
        sent != lastSent.end() && now - sent->second < cooldown) {
      continue;
    }
    result.push_back(resource);
    lastSent[resource] = now;
    notified.insert(resource);
  }
  return result;
}

}  // namespace pellwin
