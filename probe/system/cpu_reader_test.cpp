#include "probe/system/cpu_reader.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(ParseCPUTicks, AddsBusyColumnsWithoutCountingGuestsTwice) {
  // user nice system idle iowait irq softirq steal guest guest_nice
  const auto ticks = parseCPUTicks(
      "cpu  100 20 30 400 50 6 7 8 9 10\n"
      "cpu0 50 10 15 200 25 3 3 4 9 10\n"
      "cpu1 50 10 15 200 25 3 4 4 0 0\n"
      "intr 12345 0 0\nctxt 999\nbtime 1700000000\nprocesses 4242\n");
  ASSERT_TRUE(ticks.has_value());
  EXPECT_EQ(ticks->busy, 100u + 20 + 30 + 6 + 7 + 8);
  EXPECT_EQ(ticks->total, 171u + 400 + 50);
  EXPECT_EQ(ticks->processorCount, 2);
}

TEST(ParseCPUTicks, RejectsLinesItCannotTrust) {
  const struct {
    const char* why;
    const char* text;
  } cases[] = {
      {"empty", ""},
      {"no machine line", "cpu0 1 2 3 4\n"},
      {"no processor lines", "cpu  1 2 3 4\n"},
      {"too few columns", "cpu  1 2 3\ncpu0 1 2 3\n"},
      {"a malformed column", "cpu  1 2 x 4\ncpu0 1 2 3 4\n"},
      {"a sum past 64 bits", "cpu  18446744073709551615 1 0 0\ncpu0 1 2 3 4\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_FALSE(parseCPUTicks(c.text).has_value());
  }
  // Old kernels printed four columns only: the rest count as 0.
  const auto old = parseCPUTicks("cpu  1 2 3 4\ncpu0 1 2 3 4");
  ASSERT_TRUE(old.has_value());
  EXPECT_EQ(old->busy, 6u);
  EXPECT_EQ(old->total, 10u);
}

TEST(ParseBootTime, ReadsBtime) {
  EXPECT_EQ(parseBootTime("cpu  1 2 3 4\nbtime 1700000000\n"), 1700000000.0);
  EXPECT_FALSE(parseBootTime("cpu  1 2 3 4\n").has_value());
  EXPECT_FALSE(parseBootTime("btime -5\n").has_value());
}

}  // namespace
}  // namespace pellwin
