#include "core/history/alert_display.h"

#include <algorithm>
#include <regex>

namespace pellwin::AlertDisplay {

std::string dayLabel(double time, double now, const Calendar& calendar) {
  const std::string day = calendar.dayKey(time);
  if (day == calendar.dayKey(now)) return "Today";
  if (day == calendar.dayBeforeKey(now)) return "Yesterday";
  return dateLabel(calendar.local(time));
}

std::vector<Group> groups(const std::vector<AlertRow>& rows, double now, const Calendar& calendar) {
  std::vector<Group> result;
  for (const AlertRow& row : rows) {
    std::string label = dayLabel(row.time, now, calendar);
    if (result.empty() || result.back().label != label) {
      result.push_back(Group{.label = std::move(label), .rows = {}});
    }
    result.back().rows.push_back(row);
  }
  return result;
}

std::string timeLabel(double time, const Calendar& calendar) {
  return clockLabel(calendar.local(time));
}

double lasted(const AlertRow& row, double now) {
  return std::max(0.0, row.cleared.value_or(now) - row.started);
}

SplitCause splitCause(std::string_view text) {
  static const std::regex pattern(R"(^(.+) (\d+(?:\.\d+)?(?: ?(?:GB|MB|KB/s|MB/s|KB|%))?)$)");
  std::match_results<std::string_view::const_iterator> match;
  if (std::regex_match(text.begin(), text.end(), match, pattern)) {
    return SplitCause{.name = match[1].str(), .value = match[2].str()};
  }
  return SplitCause{.name = std::string(text), .value = std::nullopt};
}

}  // namespace pellwin::AlertDisplay
