// The monitor's app list: the apps of one snapshot under their category headings, each
// heading's apps ordered by the chosen measure, and the app the user picked, followed by its
// id from one snapshot to the next. A plain value owned by one screen; not thread-safe.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/monitor/app_usage.h"
#include "core/monitor/monitor_sort.h"

namespace pellwin {

class MonitorList {
 public:
  // Replaces the apps with a newer snapshot's. The selection stays on the same app id, and is
  // dropped when that app is no longer running.
  void show(const std::vector<AppUsage>& apps);

  // Orders every heading's apps by `sort`, at once and for later snapshots.
  void setSort(MonitorSort sort);
  [[nodiscard]] MonitorSort sort() const { return sort_; }

  // Picks the app with this id; none, or an id that is not listed, clears the selection.
  void select(const std::optional<std::string>& id);
  [[nodiscard]] const std::optional<std::string>& selectedID() const { return selectedID_; }
  // The picked app as of the last snapshot shown; null when nothing is picked.
  [[nodiscard]] const AppUsage* selected() const;

  // Headings in category order, only those with apps. Inside one, the largest measure first;
  // equal measures by name, then by id, so rows do not swap places between snapshots.
  [[nodiscard]] const std::vector<AppGroup>& groups() const { return groups_; }

 private:
  void order();

  MonitorSort sort_ = MonitorSort::memory;
  std::optional<std::string> selectedID_;
  std::vector<AppGroup> groups_;
};

}  // namespace pellwin
