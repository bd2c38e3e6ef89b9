// Judges the recent stretch of snapshots: a raw health per resource, and the verdict that says
// in plain words what is wrong, which apps are behind it and what to do. Pure: no state between
// calls, no clock; the newest snapshot of the window is "now".
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "core/monitor/app_usage.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"
#include "core/monitor/snapshot_window.h"
#include "core/monitor/thresholds.h"
#include "core/monitor/tip.h"
#include "core/monitor/verdict.h"

namespace pellwin {

struct Diagnoser {
  Thresholds thresholds = Thresholds::standard();

  // The raw health of every resource the newest snapshot measured; empty for an empty window.
  [[nodiscard]] std::map<Resource, Health> health(const SnapshotWindow& window) const;
  // The rule for one resource; `snapshot` is the window's newest.
  [[nodiscard]] Health health(Resource resource, const SnapshotWindow& window,
                              const Snapshot& snapshot) const;

  // The words for the health shown (a resource absent from `displayed` counts as healthy);
  // none for an empty window.
  [[nodiscard]] std::optional<Verdict> verdict(const SnapshotWindow& window,
                                               const std::map<Resource, Health>& displayed) const;

  // The time-weighted CPU busy share over the averaging window, to two decimals.
  [[nodiscard]] double busyAverage(const SnapshotWindow& window) const;
  // The one app that has kept about a full core busy for most of the last few minutes.
  [[nodiscard]] std::optional<AppUsage> cpuHog(const SnapshotWindow& window) const;
  // Whether any memory was swapped in or out lately.
  [[nodiscard]] bool swapMoved(const SnapshotWindow& window) const;
  [[nodiscard]] std::vector<Tip> tips(const SnapshotWindow& window) const;

 private:
  [[nodiscard]] Health memoryHealth(const SnapshotWindow& window, const Snapshot& now) const;
  [[nodiscard]] Health cpuHealth(const SnapshotWindow& window) const;
  [[nodiscard]] Health diskSpaceHealth(const Snapshot& now) const;
  [[nodiscard]] Health diskActivityHealth(const SnapshotWindow& window) const;

  [[nodiscard]] ResourceVerdict memoryVerdict(const Snapshot& now, Health h) const;
  [[nodiscard]] ResourceVerdict cpuVerdict(const SnapshotWindow& window, const Snapshot& now,
                                           Health h) const;
  [[nodiscard]] ResourceVerdict diskSpaceVerdict(const Snapshot& now, Health h) const;
  [[nodiscard]] ResourceVerdict diskActivityVerdict(const SnapshotWindow& window,
                                                    const Snapshot& now, Health h) const;
  [[nodiscard]] ResourceVerdict heatVerdict(const Snapshot& now, Health h) const;
};

}  // namespace pellwin
