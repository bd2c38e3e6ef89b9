#include "core/history/alert_log.h"

namespace pellwin {

AlertLog::Output AlertLog::ingest(const Snapshot& snapshot,
                                  const std::map<Resource, Health>& displayed,
                                  const std::vector<AlertNotice>& alerted) {
  const double now = snapshot.timestamp;
  const double duration = snapshot.duration();
  Output output;
  if (lastTimestamp_ && now - *lastTimestamp_ > maxGap) output.cleared = closeOpen();
  lastTimestamp_ = now;

  for (Resource resource : allResources) {
    const auto shown = displayed.find(resource);
    if (shown != displayed.end() && shown->second == Health::problem &&
        !snapshot.isUnavailable(resource)) {
      auto [entry, isNew] = red_.try_emplace(resource, Red{.start = now - duration, .last = now});
      entry->second.last = now;
      continue;
    }
    const auto stretch = red_.find(resource);
    const std::optional<double> last =
        stretch == red_.end() ? std::nullopt : std::optional(stretch->second.last);
    if (stretch != red_.end()) red_.erase(stretch);
    // An alert sent while its resource was not red here (unmeasured at that moment) has no
    // stretch of its own; it ends where this snapshot's interval begins.
    if (open_.erase(resource) > 0) {
      output.cleared.push_back(
          AlertClear{.resource = resource, .at = last.value_or(now - duration)});
    }
  }

  for (const AlertNotice& notice : alerted) {
    open_.insert(notice.resource);
    const auto stretch = red_.find(notice.resource);
    output.alerts.push_back(
        AlertRow{.id = 0,
                 .time = now,
                 .started = stretch == red_.end() ? now - duration : stretch->second.start,
                 .resource = notice.resource,
                 .message = notice.message,
                 .cause = notice.cause,
                 .cleared = std::nullopt,
                 .read = false});
  }
  return output;
}

std::vector<AlertClear> AlertLog::closeOpen() {
  std::vector<AlertClear> cleared;
  for (Resource resource : allResources) {
    const auto stretch = red_.find(resource);
    if (open_.contains(resource) && stretch != red_.end()) {
      cleared.push_back(AlertClear{.resource = resource, .at = stretch->second.last});
    }
  }
  red_.clear();
  open_.clear();
  return cleared;
}

}  // namespace pellwin
