// The Alerts screen's list, ready to draw: the stored alerts grouped by day as AlertDisplay
// groups them, each row with its texts, the cause's figure apart from its name, whether its
// red stretch has cleared and whether it was seen. Pure; times are seconds since 1970.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/alert_row.h"

namespace pellwin {

struct AlertLine {
  std::int64_t id = 0;
  Resource resource = Resource::memory;
  std::string title{};                      // "Memory"
  std::string timeText{};                   // "9:05 AM"
  std::string message{};                    // what the notification said
  std::optional<std::string> causeName{};   // "Google Chrome"
  std::optional<std::string> causeValue{};  // "10.6 GB", shown apart from the name
  bool cleared = false;
  std::string statusText{};  // "Cleared after 12 min" or "Red for 12 min so far"
  bool unread = false;
  friend bool operator==(const AlertLine&, const AlertLine&) = default;
};

struct AlertSection {
  std::string label{};  // "Today", "Yesterday", "Mon 3 Jun"
  std::vector<AlertLine> lines{};
  friend bool operator==(const AlertSection&, const AlertSection&) = default;
};

// `rows` newest first, as the store returns them.
[[nodiscard]] std::vector<AlertSection> alertSections(const std::vector<AlertRow>& rows, double now,
                                                      const Calendar& calendar);

}  // namespace pellwin
