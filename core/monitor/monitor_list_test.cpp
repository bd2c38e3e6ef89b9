#include "core/monitor/monitor_list.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

AppUsage app(std::string id, std::string name, AppCategory category, std::uint64_t megabytes,
             double cores, double disk, double energy) {
  return AppUsage{.id = std::move(id),
                  .name = std::move(name),
                  .category = category,
                  .processCount = 1,
                  .footprintBytes = megabytes << 20,
                  .cpuCores = cores,
                  .diskBytesPerSecond = disk,
                  .energyImpact = energy};
}

std::vector<AppUsage> apps() {
  return {
      app("proc:gnome-shell", "gnome-shell", AppCategory::system, 400, 0.20, 0, 21),
      app("app:firefox", "Firefox", AppCategory::browsers, 3000, 0.50, 10e3, 55),
      app("pid:41", "python3.12 train.py", AppCategory::developer, 900, 1.00, 2e6, 100),
      app("app:code", "Code", AppCategory::developer, 1200, 0.10, 0, 12),
      app("proc:git", "git", AppCategory::developer, 30, 0.30, 5e6, 30),
      app("app:chromium", "Chromium", AppCategory::browsers, 3000, 0.05, 0, 6),
  };
}

std::vector<std::string> ids(const MonitorList& list) {
  std::vector<std::string> out;
  for (const AppGroup& group : list.groups()) {
    out.push_back(std::string(title(group.category)) + ":");
    for (const AppUsage& a : group.apps) out.push_back(a.id);
  }
  return out;
}

TEST(MonitorList, GroupsByCategoryAndOrdersEachGroupByTheSortLargestFirst) {
  const struct {
    const char* why;
    MonitorSort sort;
    std::vector<std::string> expected;
  } cases[] = {
      {"memory; equal footprints by name",
       MonitorSort::memory,
       {"Browsers:", "app:chromium", "app:firefox", "Developer tools:", "app:code", "pid:41",
        "proc:git", "System and macOS:", "proc:gnome-shell"}},
      {"cpu",
       MonitorSort::cpu,
       {"Browsers:", "app:firefox", "app:chromium", "Developer tools:", "pid:41", "proc:git",
        "app:code", "System and macOS:", "proc:gnome-shell"}},
      {"disk; no traffic by name",
       MonitorSort::disk,
       {"Browsers:", "app:firefox", "app:chromium", "Developer tools:", "proc:git", "pid:41",
        "app:code", "System and macOS:", "proc:gnome-shell"}},
      {"energy",
       MonitorSort::energy,
       {"Browsers:", "app:firefox", "app:chromium", "Developer tools:", "pid:41", "proc:git",
        "app:code", "System and macOS:", "proc:gnome-shell"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    MonitorList list;
    list.setSort(c.sort);
    list.show(apps());
    EXPECT_EQ(ids(list), c.expected);
    // Sorting a list already shown gives the same order as showing it sorted.
    MonitorList late;
    late.show(apps());
    late.setSort(c.sort);
    EXPECT_EQ(ids(late), c.expected);
  }
  MonitorList list;
  list.show(apps());
  EXPECT_EQ(list.groups()[1].processCount(), 3);
}

TEST(MonitorList, SelectionFollowsTheAppIdUntilTheAppEnds) {
  MonitorList list;
  list.show(apps());
  list.select("proc:git");
  ASSERT_NE(list.selected(), nullptr);
  EXPECT_EQ(list.selected()->name, "git");

  // The next snapshot: git now leads its group and uses more memory.
  std::vector<AppUsage> next = apps();
  next[4].footprintBytes = 5000ull << 20;
  std::swap(next[0], next[4]);
  list.show(next);
  ASSERT_NE(list.selected(), nullptr);
  EXPECT_EQ(list.selected()->footprintBytes, 5000ull << 20) << "the newer figures";
  EXPECT_EQ(list.groups()[1].apps.front().id, "proc:git");

  list.setSort(MonitorSort::energy);
  EXPECT_EQ(list.selectedID(), "proc:git");

  next.erase(next.begin());
  list.show(next);
  EXPECT_EQ(list.selectedID(), std::nullopt) << "git ended";
  EXPECT_EQ(list.selected(), nullptr);

  list.show(apps());
  EXPECT_EQ(list.selected(), nullptr) << "a program that starts again is not picked again";

  list.select("app:nothing-like-it");
  EXPECT_EQ(list.selectedID(), std::nullopt);
}

TEST(MonitorList, ShowsNoHeadingsWithoutApps) {
  MonitorList list;
  list.show(apps());
  list.show({});
  EXPECT_TRUE(list.groups().empty());
}

}  // namespace
}  // namespace pellwin
