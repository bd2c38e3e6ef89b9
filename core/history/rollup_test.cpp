#include "core/history/rollup.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(Rollup, FeedsEveryPartAndFlushesWhatTheyHold) {
  Rollup rollup(Calendar(), {});
  const std::map<Resource, Health> red = {{Resource::memory, Health::problem}};
  const std::map<Resource, Lead> leads = {
      {Resource::memory, {.appID = "app:chrome", .name = "Google Chrome", .value = "10.6 GB"}}};
  const AlertNotice notice{
      .resource = Resource::memory, .message = "m", .cause = "Google Chrome 10.6 GB"};
  RollupOutput all;
  const double start = 1'717'416'000;
  for (double t = start; t <= start + 130; t += 5) {
    Snapshot s;
    s.timestamp = t;
    s.interval = 5;
    s.memory.swapInBytesPerSecond = 2e7;
    s.apps = {
        AppUsage{.id = "app:chrome", .name = "Google Chrome", .footprintBytes = 10'600'000'000}};
    all.append(rollup.ingest(s, red, leads,
                             t == start + 120 ? std::vector{notice} : std::vector<AlertNotice>{}));
  }
  EXPECT_EQ(all.samples.size(), 27u);
  EXPECT_EQ(all.minutes.size(), 2u);
  EXPECT_EQ(all.apps.size(), 2u) << "memory rankings of two closed minutes";
  ASSERT_EQ(all.episodes.size(), 1u);
  EXPECT_EQ(all.episodes[0].topApp, "Google Chrome");
  ASSERT_EQ(all.alerts.size(), 1u);
  EXPECT_EQ(all.alerts[0].started, start - 5);
  EXPECT_EQ(all.days.size(), 10u) << "refreshed once per closed minute";

  const RollupOutput rest = rollup.flush();
  EXPECT_EQ(rest.minutes.size(), 1u);
  ASSERT_EQ(rest.episodes.size(), 1u);
  EXPECT_EQ(rest.episodes[0].end, std::optional<double>(start + 130));
  EXPECT_EQ(rest.clears,
            (std::vector<AlertClear>{{.resource = Resource::memory, .at = start + 130}}));
  ASSERT_EQ(rest.days.size(), 5u);
  EXPECT_EQ(rest.days[0].problemSeconds, 135);
  EXPECT_FALSE(rest.isEmpty());
  EXPECT_TRUE(RollupOutput{}.isEmpty());
}

}  // namespace
}  // namespace pellwin
