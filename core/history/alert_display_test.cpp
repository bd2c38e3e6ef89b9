#include "core/history/alert_display.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

constexpr double kMonday3June2024Noon = 1717416000;  // 12:00 UTC

AlertRow rowAt(double time, std::int64_t id) {
  return AlertRow{.id = id, .time = time, .started = time - 200, .message = "m"};
}

TEST(AlertDisplay, GroupsConsecutiveRowsByLocalDay) {
  const Calendar utc;
  const double now = kMonday3June2024Noon;
  const std::vector<AlertRow> rows = {rowAt(now - 60, 6),        rowAt(now - 11 * 3600, 5),
                                      rowAt(now - 13 * 3600, 4), rowAt(now - 36 * 3600, 3),
                                      rowAt(now - 37 * 3600, 2), rowAt(now - 8 * 86400, 1)};
  const auto groups = AlertDisplay::groups(rows, now, utc);
  ASSERT_EQ(groups.size(), 4u);
  EXPECT_EQ(groups[0].label, "Today");
  EXPECT_EQ(groups[0].rows, std::vector<AlertRow>({rows[0], rows[1]}));
  EXPECT_EQ(groups[1].label, "Yesterday");
  EXPECT_EQ(groups[1].rows, std::vector<AlertRow>({rows[2], rows[3]}));
  EXPECT_EQ(groups[2].label, "Sat 1 Jun");
  EXPECT_EQ(groups[2].rows, std::vector<AlertRow>({rows[4]}));
  EXPECT_EQ(groups[3].label, "Sun 26 May");

  // Two hours east of UTC, 23:00 UTC on Sunday is already Monday.
  const auto east = AlertDisplay::groups({rowAt(now - 13 * 3600, 1)}, now, Calendar::fixed(7200));
  ASSERT_EQ(east.size(), 1u);
  EXPECT_EQ(east[0].label, "Today");
}

TEST(AlertDisplay, TimeLabelUsesTwelveHourClockWithoutLeadingZero) {
  const struct {
    double time;
    int offset;
    const char* expected;
  } cases[] = {
      {1717372800, 0, "12:00 AM"},  // midnight
      {1717372800 + 300, 0, "12:05 AM"},
      {1717416000 - 60, 0, "11:59 AM"},
      {1717416000, 0, "12:00 PM"},  // noon
      {1717416000 + 9 * 3600 + 7 * 60, 0, "9:07 PM"},
      {1717416000, -4 * 3600, "8:00 AM"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(AlertDisplay::timeLabel(c.time, Calendar::fixed(c.offset)), c.expected);
  }
}

TEST(AlertDisplay, LastedRunsUntilClearedOrNowAndNeverNegative) {
  AlertRow row{.time = 1000, .started = 880};
  EXPECT_EQ(AlertDisplay::lasted(row, 1500), 620);
  row.cleared = 1100;
  EXPECT_EQ(AlertDisplay::lasted(row, 1500), 220);
  row.cleared = 800;
  EXPECT_EQ(AlertDisplay::lasted(row, 1500), 0);
}

TEST(AlertDisplay, SplitCauseTakesTheTrailingFigureApart) {
  const struct {
    const char* text;
    const char* name;
    std::optional<std::string> value;
  } cases[] = {
      {"Google Chrome 10.6 GB", "Google Chrome", "10.6 GB"},
      {"Slack 512 MB", "Slack", "512 MB"},
      {"python3.12 train.py 98%", "python3.12 train.py", "98%"},
      {"Backup 12 MB/s", "Backup", "12 MB/s"},
      {"App 7", "App", "7"},
      {"Google Chrome", "Google Chrome", std::nullopt},
      {"Chrome 10.6 TB", "Chrome 10.6 TB", std::nullopt},
      {"10 GB", "10 GB", std::nullopt},
      {"", "", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(AlertDisplay::splitCause(c.text),
              (AlertDisplay::SplitCause{.name = c.name, .value = c.value}));
  }
}

}  // namespace
}  // namespace pellwin
