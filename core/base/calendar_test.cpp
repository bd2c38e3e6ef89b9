#include "core/base/calendar.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

// Europe/Berlin in 2024: summer time from 31 March 01:00 UTC to 27 October 01:00 UTC.
Calendar berlin2024() {
  return Calendar({{.from = 1729990800, .seconds = 3600},
                   {.from = 0, .seconds = 3600},
                   {.from = 1711846800, .seconds = 7200}});
}

// America/New_York in 2024: summer time from 10 March 07:00 UTC to 3 November 06:00 UTC.
Calendar newYork2024() {
  return Calendar({{.from = 0, .seconds = -18000},
                   {.from = 1710054000, .seconds = -14400},
                   {.from = 1730613600, .seconds = -18000}});
}

TEST(Calendar, LocalTimeFollowsTheOffsetInForceAtEachMoment) {
  const struct {
    const char* why;
    Calendar calendar;
    double time;
    LocalTime expected;
  } cases[] = {
      {"UTC at the epoch", Calendar(), 0, {1970, 1, 1, 0, 0, 0, 4}},
      {"one second before the epoch", Calendar(), -1, {1969, 12, 31, 23, 59, 59, 3}},
      {"leap day", Calendar(), 951825600, {2000, 2, 29, 12, 0, 0, 2}},
      {"east of UTC crosses midnight first",
       Calendar::fixed(7200),
       1717367400,
       {2024, 6, 3, 0, 30, 0, 1}},
      {"fraction of a second is dropped, not rounded",
       Calendar(),
       1717367400.999,
       {2024, 6, 2, 22, 30, 0, 0}},
      {"last second of winter time", berlin2024(), 1711846799, {2024, 3, 31, 1, 59, 59, 0}},
      {"first second of summer time", berlin2024(), 1711846800, {2024, 3, 31, 3, 0, 0, 0}},
      {"02:30 in summer time, before the clocks go back",
       berlin2024(),
       1729990800 - 1800,
       {2024, 10, 27, 2, 30, 0, 0}},
      {"02:30 again after they went back",
       berlin2024(),
       1729990800 + 1800,
       {2024, 10, 27, 2, 30, 0, 0}},
      {"west of UTC: late evening is still the day before",
       newYork2024(),
       1717367400,
       {2024, 6, 2, 18, 30, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.calendar.local(c.time), c.expected);
  }
}

TEST(Calendar, DayKeysChangeAtLocalMidnightWhateverTheDayLength) {
  const Calendar berlin = berlin2024();
  // Local midnight of 31 March is 30 March 23:00 UTC; the day is 23 hours long.
  const double shortDayStart = 1711846800 - 2 * 3600;
  EXPECT_EQ(berlin.dayKey(shortDayStart - 1), "2024-03-30");
  EXPECT_EQ(berlin.dayKey(shortDayStart), "2024-03-31");
  EXPECT_EQ(berlin.dayKey(shortDayStart + 23 * 3600 - 1), "2024-03-31");
  EXPECT_EQ(berlin.dayKey(shortDayStart + 23 * 3600), "2024-04-01");
  // 27 October is 25 hours long: it starts at 26 October 22:00 UTC.
  const double longDayStart = 1729990800 - 3 * 3600;
  EXPECT_EQ(berlin.dayKey(longDayStart + 25 * 3600 - 1), "2024-10-27");
  EXPECT_EQ(berlin.dayKey(longDayStart + 25 * 3600), "2024-10-28");

  EXPECT_EQ(berlin.dayBeforeKey(shortDayStart + 12 * 3600), "2024-03-30");
  EXPECT_EQ(berlin.dayBeforeKey(longDayStart + 25 * 3600), "2024-10-27");
  EXPECT_EQ(Calendar().dayBeforeKey(1709251200), "2024-02-29");  // 1 March 2024, UTC
  EXPECT_EQ(Calendar().dayBeforeKey(1704067200), "2023-12-31");  // 1 January 2024, UTC
}

TEST(Calendar, StartOfDayIsTheFirstLocalMomentOfThatDate) {
  // 2018-11-04 in a zone whose clocks jump from 23:59:59 to 01:00 at local midnight, as São
  // Paulo's did: the day starts when the clocks jump.
  const double skipped = 1541289600 + 10800;  // 2018-11-04 00:00 at UTC-3
  const Calendar jumpsAtMidnight(
      {{.from = 0, .seconds = -10800}, {.from = skipped, .seconds = -7200}});
  const struct {
    const char* why;
    Calendar calendar;
    const char* key;
    std::optional<double> expected;
  } cases[] = {
      {"UTC", Calendar(), "2024-06-03", 1717372800},
      {"east of UTC starts the day before in UTC", Calendar::fixed(7200), "2024-06-03",
       1717372800 - 7200},
      {"Berlin's 23-hour day", berlin2024(), "2024-03-31", 1711846800 - 2 * 3600},
      {"the day after it, in summer time", berlin2024(), "2024-04-01", 1711846800 + 21 * 3600},
      {"Berlin's 25-hour day", berlin2024(), "2024-10-27", 1729990800 - 3 * 3600},
      {"the day after it, back in winter time", berlin2024(), "2024-10-28", 1730070000},
      {"New York on the day the clocks go back", newYork2024(), "2024-11-03", 1730606400},
      {"midnight skipped", jumpsAtMidnight, "2018-11-04", skipped},
      {"the day before the skip", jumpsAtMidnight, "2018-11-03", skipped - 86400},
      {"no such day", Calendar(), "2024-02-30", std::nullopt},
      {"no such month", Calendar(), "2024-13-01", std::nullopt},
      {"not a key", Calendar(), "2024-6-3", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const auto start = c.calendar.startOfDay(c.key);
    EXPECT_EQ(start, c.expected);
    if (start) {
      EXPECT_EQ(c.calendar.dayKey(*start), c.key);
      EXPECT_NE(c.calendar.dayKey(*start - 1), c.key);
    }
  }
}

TEST(Calendar, AddingDaysStepsWholeDatesAcrossMonthsYearsAndLeapDays) {
  const struct {
    const char* key;
    int days;
    std::optional<std::string> expected;
  } cases[] = {
      {"2024-02-28", 1, "2024-02-29"}, {"2024-03-01", -1, "2024-02-29"},
      {"2023-12-31", 1, "2024-01-01"}, {"2024-03-31", -7, "2024-03-24"},
      {"2024-06-03", 0, "2024-06-03"}, {"2023-02-29", 1, std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.key) + " " + std::to_string(c.days));
    EXPECT_EQ(addingDays(c.key, c.days), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
