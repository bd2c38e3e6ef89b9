#include "core/history/day_strip.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(DayStrip, ShowsEveryDayOfTheSpanWithACellPerResource) {
  const std::vector<DayRow> rows = {
      {.day = "2024-02-27", .resource = Resource::cpu, .strainSeconds = 99, .problemSeconds = 99},
      {.day = "2024-02-28",
       .resource = Resource::memory,
       .strainSeconds = 3900,
       .problemSeconds = 720},
      {.day = "2024-02-28", .resource = Resource::cpu, .strainSeconds = 300},
      {.day = "2024-02-28", .resource = Resource::heat},
      {.day = "2024-03-01", .resource = Resource::diskSpace, .problemSeconds = 0.5},
  };
  const auto strip = dayStrip(rows, "2024-03-01", 3);
  ASSERT_EQ(strip.size(), 3u);
  EXPECT_EQ(strip[0].day, "2024-02-28");
  EXPECT_EQ(strip[0].label, "Wed 28 Feb");
  EXPECT_EQ(strip[1].day, "2024-02-29") << "the leap day is a day like any other";
  EXPECT_EQ(strip[2].label, "Fri 1 Mar");
  for (const StripDay& day : strip) ASSERT_EQ(day.cells.size(), allResources.size());

  const struct {
    const char* why;
    StripCell cell;
    Health level;
    bool recorded;
    const char* text;
  } cases[] = {
      {"red and amber", strip[0].cells[0], Health::problem, true,
       "Memory: 12 min red, 1 h 5 min amber"},
      {"amber only", strip[0].cells[1], Health::strain, true, "CPU: 5 min amber"},
      {"recorded, nothing wrong", strip[0].cells[4], Health::ok, true, "Heat: all clear"},
      {"no row", strip[1].cells[0], Health::ok, false, "Memory: not recorded"},
      {"half a second of red is not worth a colour", strip[2].cells[2], Health::ok, true,
       "Disk space: all clear"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.cell.level, c.level);
    EXPECT_EQ(c.cell.recorded, c.recorded);
    EXPECT_EQ(c.cell.text, c.text);
  }
  EXPECT_TRUE(dayStrip(rows, "yesterday", 3).empty());
}

}  // namespace
}  // namespace pellwin
