// How the Alerts list groups and labels stored alert rows. Labels follow the en_US_POSIX
// patterns "EEE d MMM" (day groups) and "h:mm a" (times) in the calendar's time zone.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/alert_row.h"

namespace pellwin::AlertDisplay {

struct Group {
  std::string label{};  // "Today", "Yesterday" or a date such as "Mon 3 Jun"
  std::vector<AlertRow> rows{};
  friend bool operator==(const Group&, const Group&) = default;
};

// Rows keep their order (newest first, as stored); consecutive rows with the same day label
// form one group.
[[nodiscard]] std::vector<Group> groups(const std::vector<AlertRow>& rows, double now,
                                        const Calendar& calendar);

// "Today", "Yesterday" or "EEE d MMM": the day `time` falls on, seen from `now`.
[[nodiscard]] std::string dayLabel(double time, double now, const Calendar& calendar);

// "h:mm a", such as "9:05 AM".
[[nodiscard]] std::string timeLabel(double time, const Calendar& calendar);

// Seconds the red stretch lasted (until now while it lasts); never below 0.
[[nodiscard]] double lasted(const AlertRow& row, double now);

struct SplitCause {
  std::string name;
  std::optional<std::string> value;
  friend bool operator==(const SplitCause&, const SplitCause&) = default;
};

// "Google Chrome 10.6 GB" gives "Google Chrome" and "10.6 GB"; a text without a trailing
// figure is all name.
[[nodiscard]] SplitCause splitCause(std::string_view text);

}  // namespace pellwin::AlertDisplay
