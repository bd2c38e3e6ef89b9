#include "core/history/alert_lines.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

constexpr double kNow = 1'717'425'120;  // Mon 3 June 2024, 14:32 UTC

TEST(AlertSections, GroupByDayAndSayWhetherEachStretchCleared) {
  const std::vector<AlertRow> rows = {
      {.id = 3,
       .time = kNow - 300,
       .started = kNow - 420,
       .resource = Resource::memory,
       .message = "Memory is full",
       .cause = "Google Chrome 10.6 GB"},
      {.id = 2,
       .time = kNow - 3600,
       .started = kNow - 3720,
       .resource = Resource::cpu,
       .message = "CPU is busy",
       .cause = "make",
       .cleared = kNow - 3000,
       .read = true},
      {.id = 1,
       .time = kNow - 86400,
       .started = kNow - 86520,
       .resource = Resource::heat,
       .message = "Hot",
       .cleared = kNow - 86530},
  };
  const auto sections = alertSections(rows, kNow, Calendar());
  ASSERT_EQ(sections.size(), 2u);
  EXPECT_EQ(sections[0].label, "Today");
  ASSERT_EQ(sections[0].lines.size(), 2u);
  const AlertLine& open = sections[0].lines[0];
  EXPECT_EQ(open.title, "Memory");
  EXPECT_EQ(open.timeText, "2:27 PM");
  EXPECT_EQ(open.causeName, "Google Chrome");
  EXPECT_EQ(open.causeValue, "10.6 GB");
  EXPECT_FALSE(open.cleared);
  EXPECT_EQ(open.statusText, "Red for 7 min so far");
  EXPECT_TRUE(open.unread);
  const AlertLine& cleared = sections[0].lines[1];
  EXPECT_EQ(cleared.statusText, "Cleared after 12 min");
  EXPECT_EQ(cleared.causeName, "make");
  EXPECT_EQ(cleared.causeValue, std::nullopt);
  EXPECT_FALSE(cleared.unread);
  EXPECT_EQ(sections[1].label, "Yesterday");
  EXPECT_EQ(sections[1].lines[0].statusText, "Cleared after 0 s") << "never below zero";
  EXPECT_EQ(sections[1].lines[0].causeName, std::nullopt);
}

}  // namespace
}  // namespace pellwin
