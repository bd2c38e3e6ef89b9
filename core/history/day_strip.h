// The History screen's daily strip: one column per local day, oldest first, with one cell per
// resource coloured by the day's red and amber time. A screen draws the cells as they are and
// shows `text` when one is pointed at. Pure.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/history/day_row.h"
#include "core/monitor/resource.h"

namespace pellwin {

struct StripCell {
  Resource resource = Resource::memory;
  double strainSeconds = 0;
  double problemSeconds = 0;
  bool recorded = false;      // the day has a row for this resource
  Health level = Health::ok;  // problem with any red time, strain with any amber time
  std::string text{};         // "Memory: 12 min red, 1 h 5 min amber", or "Memory: not recorded"
  friend bool operator==(const StripCell&, const StripCell&) = default;
};

struct StripDay {
  std::string day{};               // "%04d-%02d-%02d"
  std::string label{};             // "Mon 3 Jun"
  std::vector<StripCell> cells{};  // one per resource, in resource order
  friend bool operator==(const StripDay&, const StripDay&) = default;
};

// The `days` local days ending with `lastDay`, whatever rows exist for them; rows of other days
// are ignored. Empty when `lastDay` is no date.
[[nodiscard]] std::vector<StripDay> dayStrip(const std::vector<DayRow>& rows,
                                             std::string_view lastDay, int days);

// "12 min red, 1 h 5 min amber", "1 h red", "5 min amber", or "all clear".
[[nodiscard]] std::string redAndAmberText(double problemSeconds, double strainSeconds);

// "Mon 3 Jun" for a day key; empty when it is no date.
[[nodiscard]] std::string dayKeyLabel(std::string_view day);

}  // namespace pellwin
