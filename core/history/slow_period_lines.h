// The History screen's list of slow periods, as rows of text ready to show: which resource,
// when it began, how long it lasted, how bad it got and the app most to blame. Pure.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/episode_row.h"
#include "core/monitor/resource.h"

namespace pellwin {

// Said above the list.
inline constexpr std::string_view slowPeriodExplanation =
    "A slow period is when something stays red for at least a minute.";

struct SlowPeriodLine {
  Resource resource = Resource::memory;
  double start = 0;                    // seconds since 1970
  std::optional<double> end{};         // absent while it lasts
  std::string title{};                 // "Memory"
  std::string startText{};             // "Today 2:32 PM", "Yesterday 9:05 AM", "Mon 3 Jun 11:40 PM"
  std::string lengthText{};            // "12 min", or "12 min so far" while it lasts
  std::string peakText{};              // the worst reading, as stored: "38 MB/s", "97%"
  std::optional<std::string> blame{};  // "Google Chrome 10.6 GB", or just the name
  friend bool operator==(const SlowPeriodLine&, const SlowPeriodLine&) = default;
};

// One line per episode, in the order given (the store's newest first).
[[nodiscard]] std::vector<SlowPeriodLine> slowPeriodLines(const std::vector<EpisodeRow>& episodes,
                                                          double now, const Calendar& calendar);

}  // namespace pellwin
