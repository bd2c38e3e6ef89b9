#include "core/monitor/stabilizer.h"

namespace pellwin {

const std::map<Resource, Health>& Stabilizer::update(const std::map<Resource, Health>& health,
                                                     const std::set<Resource>& unavailable,
                                                     double now) {
  const bool gap = lastUpdate_ && now - *lastUpdate_ > maxGap;
  lastUpdate_ = now;
  if (gap) differingSince_.clear();

  for (const auto& [resource, raw] : health) {
    const auto shown = displayed_.find(resource);
    if (unavailable.contains(resource)) {
      // Something we could not measure is never shown as a problem.
      displayed_[resource] = Health::ok;
      differingSince_.erase(resource);
    } else if (gap || shown == displayed_.end()) {
      displayed_[resource] = raw;
      differingSince_.erase(resource);
    } else if (shown->second == raw) {
      differingSince_.erase(resource);
    } else {
      // A change to a third level keeps counting from the first difference.
      const double since = differingSince_.try_emplace(resource, now).first->second;
      if (now - since >= hold_) {
        shown->second = raw;
        differingSince_.erase(resource);
      }
    }
  }
  return displayed_;
}

}  // namespace pellwin
