#include "core/history/slow_period_lines.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

constexpr double kNow = 1'717'425'120;  // Mon 3 June 2024, 14:32 UTC

TEST(SlowPeriodLines, WriteWhenHowLongHowBadAndWhoWasBehindIt) {
  const std::vector<EpisodeRow> episodes = {
      {.resource = Resource::cpu,
       .start = kNow - 600,
       .peak = 0.97,
       .peakText = "97%",
       .topApp = "python3.12"},
      {.resource = Resource::memory,
       .start = kNow - 3 * 86400,
       .end = kNow - 3 * 86400 + 3720,
       .peak = 3.8e7,
       .peakText = "38 MB/s",
       .topApp = "Google Chrome",
       .topValue = "10.6 GB"},
      {.resource = Resource::heat,
       .start = kNow - 86400,
       .end = kNow - 86400 + 90,
       .peakText = "Very hot"},
  };
  const auto lines = slowPeriodLines(episodes, kNow, Calendar());
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].startText, "Today 2:22 PM");
  EXPECT_EQ(lines[0].lengthText, "10 min so far");
  EXPECT_EQ(lines[0].blame, "python3.12");
  EXPECT_EQ(lines[1].title, "Memory");
  EXPECT_EQ(lines[1].startText, "Fri 31 May 2:32 PM");
  EXPECT_EQ(lines[1].lengthText, "1 h 2 min");
  EXPECT_EQ(lines[1].peakText, "38 MB/s");
  EXPECT_EQ(lines[1].blame, "Google Chrome 10.6 GB");
  EXPECT_EQ(lines[2].startText, "Yesterday 2:32 PM");
  EXPECT_EQ(lines[2].blame, std::nullopt);
}

}  // namespace
}  // namespace pellwin
