// A notification that was sent, as the Alerts list keeps it, and the records that end its red
// stretch. Times are seconds since 1970.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/monitor/resource.h"

namespace pellwin {

// What one notification said. `cause` is an app name, a blank and its figure
// ("Google Chrome 10.6 GB") when an app is behind it.
struct AlertNotice {
  Resource resource = Resource::memory;
  std::string message{};
  std::optional<std::string> cause{};
  friend bool operator==(const AlertNotice&, const AlertNotice&) = default;
};

struct AlertRow {
  std::int64_t id = 0;  // the table's row id; 0 until stored
  double time = 0;      // when the notification was sent
  double started = 0;   // when the red stretch began
  Resource resource = Resource::memory;
  std::string message{};
  std::optional<std::string> cause{};
  std::optional<double> cleared{};  // when the red stretch ended; absent while it lasts
  bool read = false;
  friend bool operator==(const AlertRow&, const AlertRow&) = default;
};

// The red stretch of `resource` ended at `at`: every uncleared alert of it is cleared then.
struct AlertClear {
  Resource resource = Resource::memory;
  double at = 0;
  friend bool operator==(const AlertClear&, const AlertClear&) = default;
};

}  // namespace pellwin
