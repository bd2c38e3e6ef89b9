#include "core/history/cause_total.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(CauseTotals, SumEachAppOverDaysAndResourcesMostRedTimeFirst) {
  const std::vector<DayRow> rows = {
      {.day = "2024-06-04",
       .resource = Resource::memory,
       .causes = {{"app:chrome", "Chrome", 600}, {"app:slack", "Slack", 300}}},
      {.day = "2024-06-03",
       .resource = Resource::memory,
       .causes = {{"app:chrome", "Google Chrome (old)", 100}, {"app:b", "B", 300}}},
      {.day = "2024-06-04", .resource = Resource::heat, .causes = {{"app:chrome", "Chrome", 50}}},
      {.day = "2024-06-04", .resource = Resource::cpu, .causes = {{"app:a", "B", 300}}},
      {.day = "2024-06-05", .resource = Resource::cpu, .causes = {{"app:zero", "Zero", 0}}},
  };
  const auto all = causeTotals(rows);
  ASSERT_EQ(all.size(), 4u) << "a cause without seconds is left out";
  EXPECT_EQ(all[0], (CauseTotal{.appID = "app:chrome",
                                .name = "Chrome",
                                .seconds = 750,
                                .resources = {Resource::memory, Resource::heat},
                                .days = 2}))
      << "the name of the latest day wins, whatever the row order";
  EXPECT_EQ(all[1].appID, "app:a") << "equal seconds: by name, then by app ID";
  EXPECT_EQ(all[2].appID, "app:b");
  EXPECT_EQ(all[3].appID, "app:slack");

  const auto memory = causeTotals(rows, Resource::memory);
  ASSERT_EQ(memory.size(), 3u);
  EXPECT_EQ(memory[0].seconds, 700);
  EXPECT_EQ(memory[0].resources, std::vector<Resource>{Resource::memory});
  EXPECT_TRUE(causeTotals(rows, Resource::diskSpace).empty());
}

}  // namespace
}  // namespace pellwin
