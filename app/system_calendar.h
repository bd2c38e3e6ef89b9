// The system time zone as a core Calendar: its UTC offsets and their changes over the 400 days
// before and after `now`. Reads the zone through localtime_r(3); safe on any thread once the
// zone has been loaded (the first call loads it).
#pragma once

#include "core/base/calendar.h"

namespace pellwin {

[[nodiscard]] Calendar systemCalendar(double now);

// Seconds since 1970 now, from the system clock.
[[nodiscard]] double systemNow();

}  // namespace pellwin
