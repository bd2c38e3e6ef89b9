// The snapshots of the recent past, oldest first, and time-weighted questions about the last
// so many seconds. Owned by one thread. Pointers handed out stay valid until the next change.
#pragma once

#include <deque>
#include <set>
#include <vector>

#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

class SnapshotWindow {
 public:
  explicit SnapshotWindow(double span) : span_(span) {}

  // Adds `snapshot` last, then drops every snapshot older than its time less the span.
  void append(Snapshot snapshot);
  // Replaces the last snapshot (when one is corrected in place); nothing when empty.
  void replaceLatest(Snapshot snapshot);

  [[nodiscard]] const Snapshot* latest() const;
  // The snapshots later than the latest's time less `seconds` whose unavailable set has
  // nothing in common with `excluding`, in window order; empty for an empty window.
  [[nodiscard]] std::vector<const Snapshot*> recent(double seconds,
                                                    const std::set<Resource>& excluding = {}) const;
  // How much of the period was really measured: the sum of the intervals of `recent`.
  [[nodiscard]] double covered(double seconds, const std::set<Resource>& excluding = {}) const;
  // Σ value × interval ÷ Σ interval over `recent`; 0 when nothing was measured.
  template <class Value>
  [[nodiscard]] double average(double seconds, const std::set<Resource>& excluding,
                               Value value) const {
    return weightedAverage(recent(seconds, excluding), value);
  }

  // The time-weighted average of `value` over `snapshots`; 0 when their intervals sum to 0.
  template <class Value>
  [[nodiscard]] static double weightedAverage(const std::vector<const Snapshot*>& snapshots,
                                              Value value) {
    double weighted = 0;
    double total = 0;
    for (const Snapshot* snapshot : snapshots) {
      weighted += value(*snapshot) * snapshot->interval;
      total += snapshot->interval;
    }
    return total > 0 ? weighted / total : 0;
  }
  [[nodiscard]] static double coveredTime(const std::vector<const Snapshot*>& snapshots);

  [[nodiscard]] double span() const { return span_; }
  [[nodiscard]] const std::deque<Snapshot>& snapshots() const { return snapshots_; }

 private:
  double span_;
  std::deque<Snapshot> snapshots_;
};

}  // namespace pellwin
