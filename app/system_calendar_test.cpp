#include "app/system_calendar.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace pellwin {
namespace {

// Sets TZ for one test and puts the old value back.
class ZoneScope {
 public:
  explicit ZoneScope(const char* zone) {
    if (const char* old = std::getenv("TZ")) old_ = old;
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~ZoneScope() {
    if (old_) {
      ::setenv("TZ", old_->c_str(), 1);
    } else {
      ::unsetenv("TZ");
    }
    ::tzset();
  }

 private:
  std::optional<std::string> old_;
};

std::string strftimeKey(std::time_t t) {
  std::tm local{};
  ::localtime_r(&t, &local);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", &local);
  return text;
}

TEST(SystemCalendar, AgreesWithTheSystemZoneAcrossItsChanges) {
  // Central European rules as a POSIX string, so no zone files are needed.
  ZoneScope zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const double now = 1'717'416'000;  // June 2024
  const Calendar calendar = systemCalendar(now);
  EXPECT_EQ(calendar.utcOffset(1711846799), 3600);
  EXPECT_EQ(calendar.utcOffset(1711846800), 7200);
  EXPECT_EQ(calendar.utcOffset(1729990799), 7200);
  EXPECT_EQ(calendar.utcOffset(1729990800), 3600);
  for (std::time_t t = static_cast<std::time_t>(now) - 300 * 86400;
       t < static_cast<std::time_t>(now) + 300 * 86400; t += 3571) {
    ASSERT_EQ(calendar.dayKey(static_cast<double>(t)), strftimeKey(t)) << t;
  }
}

}  // namespace
}  // namespace pellwin
