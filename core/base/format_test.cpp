#include "core/base/format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <string>

namespace pellwin {
namespace {

TEST(Format, SizesSwitchUnitsAtTheirRoundingBoundaries) {
  const struct {
    const char* why;
    std::string actual;
    const char* expected;
  } cases[] = {
      {"memory: exactly one binary gigabyte", Format::memory(1073741824), "1.0 GB"},
      {"memory: a decimal gigabyte is below 1024 MB", Format::memory(1000000000), "954 MB"},
      {"memory: 1023.5 MB rounds up to 1024, so it is shown in GB", Format::memory(1073217536),
       "1.0 GB"},
      {"memory: 1023.4 MB stays in MB", Format::memory(1073112678), "1023 MB"},
      {"memory: zero", Format::memory(0), "0 MB"},
      {"count: three digits stay whole", Format::count(999), "999"},
      {"count: grouped by thousands", Format::count(121012), "121,012"},
      {"count: the largest", Format::count(18446744073709551615ULL), "18,446,744,073,709,551,615"},
      {"ram: 16 GiB", Format::ram(17179869184ULL), "16 GB"},
      {"disk: just under the MB to GB boundary", Format::disk(999499999), "999 MB"},
      {"disk: at the MB to GB boundary", Format::disk(999500000), "1.0 GB"},
      {"disk: just under 100 GB keeps a decimal", Format::disk(99949999999ULL), "99.9 GB"},
      {"disk: 99.95 GB rounds to whole gigabytes", Format::disk(99950000000ULL), "100 GB"},
      {"disk: terabyte in GB", Format::disk(2000000000000ULL), "2000 GB"},
      {"rate: below 1000 KB/s", Format::rate(999499), "999 KB/s"},
      {"rate: rounds to 1000 KB, so MB/s", Format::rate(999500), "1 MB/s"},
      {"rate: zero", Format::rate(0), "0 KB/s"},
      {"percent: whole", Format::percent(1.0), "100%"},
      {"percent: rounds", Format::percent(0.426), "43%"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.actual, c.expected);
  }
}

TEST(Format, DurationsAndElapsedTimesPickTheLargestWholeUnit) {
  const struct {
    const char* why;
    std::string actual;
    const char* expected;
  } cases[] = {
      {"duration: under a minute still says one", Format::duration(30), "1 min"},
      {"duration: zero", Format::duration(0), "1 min"},
      {"duration: minutes truncate", Format::duration(3599), "59 min"},
      {"duration: one hour singular", Format::duration(3600), "1 hour"},
      {"duration: hours plural", Format::duration(7200), "2 hours"},
      {"duration: one day singular", Format::duration(86400), "1 day"},
      {"duration: days truncate", Format::duration(86400 * 15 - 1), "14 days"},
      {"elapsed: negative counts as zero", Format::elapsed(-5), "0 s"},
      {"elapsed: 59.9 s truncates", Format::elapsed(59.9), "59 s"},
      {"elapsed: one minute", Format::elapsed(60), "1 min"},
      {"elapsed: last minute before an hour", Format::elapsed(3599), "59 min"},
      {"elapsed: whole hour has no minutes", Format::elapsed(3600), "1 h"},
      {"elapsed: hour and minute", Format::elapsed(3660), "1 h 1 min"},
      {"elapsed: past a day stays in hours", Format::elapsed(90000), "25 h"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.actual, c.expected);
  }
}

TEST(Format, DecimalPointIgnoresTheProcessLocale) {
  const char* previous = std::setlocale(LC_ALL, nullptr);
  const std::string saved = previous != nullptr ? previous : "C";
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
    GTEST_SKIP() << "de_DE.UTF-8 is not installed; ./tovrin-dev installs it";
  }
  const std::string memory = Format::memory(1610612736);
  const std::string disk = Format::disk(1500000000);
  std::setlocale(LC_ALL, saved.c_str());
  EXPECT_EQ(memory, "1.5 GB");
  EXPECT_EQ(disk, "1.5 GB");
}

}  // namespace
}  // namespace pellwin
