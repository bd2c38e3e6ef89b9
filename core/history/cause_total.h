// A cause summed over several days for display: how long an app was the lead of red resources
// over the days given. Pure.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/history/day_row.h"
#include "core/monitor/resource.h"

namespace pellwin {

struct CauseTotal {
  std::string appID{};
  std::string name{};                 // the name of its latest day
  double seconds = 0;                 // red seconds it led, summed
  std::vector<Resource> resources{};  // what it was blamed for, in resource order
  int days = 0;                       // days on which it led some red time
  friend bool operator==(const CauseTotal&, const CauseTotal&) = default;
};

// The causes of `rows` summed by app ID, only those of `resource` when one is given. Most
// seconds first, then by name, then by app ID. Rows may come in any order; a day's stored
// causes are its five biggest, so the sums are those of what each day kept.
[[nodiscard]] std::vector<CauseTotal> causeTotals(const std::vector<DayRow>& rows,
                                                  std::optional<Resource> resource = std::nullopt);

}  // namespace pellwin
