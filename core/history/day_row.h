// The totals of one local calendar day for one resource: seconds amber and red, and the apps
// behind the red time.
#pragma once

#include <string>
#include <vector>

#include "core/base/calendar.h"
#include "core/monitor/resource.h"

namespace pellwin {

// Red seconds during which one app was the lead of a resource. Serialised with the keys
// "appID", "name" and "seconds".
struct Cause {
  std::string appID{};
  std::string name{};
  double seconds = 0;
  friend bool operator==(const Cause&, const Cause&) = default;
};

struct DayRow {
  std::string day{};  // the local date, "%04d-%02d-%02d"
  Resource resource = Resource::memory;
  double strainSeconds = 0;
  double problemSeconds = 0;
  std::vector<Cause> causes{};  // at most 5: most seconds first, then name, then app ID

  [[nodiscard]] static std::string key(double time, const Calendar& calendar) {
    return calendar.dayKey(time);
  }
  friend bool operator==(const DayRow&, const DayRow&) = default;
};

}  // namespace pellwin
