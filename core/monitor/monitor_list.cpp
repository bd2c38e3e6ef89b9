#include "core/monitor/monitor_list.h"

#include <algorithm>
#include <array>

#include "core/monitor/app_category.h"

namespace pellwin {

void MonitorList::show(const std::vector<AppUsage>& apps) {
  std::array<std::vector<AppUsage>, allAppCategories.size()> byCategory;
  for (const AppUsage& app : apps) {
    byCategory[static_cast<std::size_t>(rawValue(app.category))].push_back(app);
  }
  groups_.clear();
  for (AppCategory category : allAppCategories) {
    auto& members = byCategory[static_cast<std::size_t>(rawValue(category))];
    if (!members.empty()) groups_.push_back({.category = category, .apps = std::move(members)});
  }
  order();
  if (selectedID_ && selected() == nullptr) selectedID_.reset();
}

void MonitorList::setSort(MonitorSort sort) {
  sort_ = sort;
  order();
}

void MonitorList::select(const std::optional<std::string>& id) {
  selectedID_ = id;
  if (selectedID_ && selected() == nullptr) selectedID_.reset();
}

const AppUsage* MonitorList::selected() const {
  if (!selectedID_) return nullptr;
  for (const AppGroup& group : groups_) {
    for (const AppUsage& app : group.apps) {
      if (app.id == *selectedID_) return &app;
    }
  }
  return nullptr;
}

void MonitorList::order() {
  for (AppGroup& group : groups_) {
    std::ranges::sort(group.apps, [sort = sort_](const AppUsage& a, const AppUsage& b) {
      const double ma = measure(a, sort);
      const double mb = measure(b, sort);
      if (ma != mb) return ma > mb;
      if (a.name != b.name) return a.name < b.name;
      return a.id < b.id;
    });
  }
}

}  // namespace pellwin
