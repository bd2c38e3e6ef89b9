#include "core/monitor/snapshot_window.h"

#include <algorithm>

namespace pellwin {

void SnapshotWindow::append(Snapshot snapshot) {
  const double oldest = snapshot.timestamp - span_;
  snapshots_.push_back(std::move(snapshot));
  std::erase_if(snapshots_, [&](const Snapshot& s) { return s.timestamp < oldest; });
}

void SnapshotWindow::replaceLatest(Snapshot snapshot) {
  if (!snapshots_.empty()) snapshots_.back() = std::move(snapshot);
}

const Snapshot* SnapshotWindow::latest() const {
  return snapshots_.empty() ? nullptr : &snapshots_.back();
}

std::vector<const Snapshot*> SnapshotWindow::recent(double seconds,
                                                    const std::set<Resource>& excluding) const {
  std::vector<const Snapshot*> found;
  if (snapshots_.empty()) return found;
  const double after = snapshots_.back().timestamp - seconds;
  for (const Snapshot& snapshot : snapshots_) {
    if (!(snapshot.timestamp > after)) continue;
    const bool missing = std::ranges::any_of(
        excluding, [&](Resource r) { return snapshot.unavailable.contains(r); });
    if (!missing) found.push_back(&snapshot);
  }
  return found;
}

double SnapshotWindow::covered(double seconds, const std::set<Resource>& excluding) const {
  return coveredTime(recent(seconds, excluding));
}

double SnapshotWindow::coveredTime(const std::vector<const Snapshot*>& snapshots) {
  double total = 0;
  for (const Snapshot* snapshot : snapshots) total += snapshot->interval;
  return total;
}

}  // namespace pellwin
