// Per local calendar day and resource: seconds shown amber and red, and the apps that led the
// red time. Emits the day's rows whenever a minute closes and when the day changes. A value
// owned by the history side; not thread-safe.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/day_row.h"
#include "core/monitor/lead.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

class DayTally {
 public:
  static constexpr std::size_t causesPerRow = 5;

  // `seedDays` are stored rows of recent days: when the first snapshot falls on one of their
  // days, that day continues from them (a restart in the middle of a day).
  DayTally(Calendar calendar, const std::vector<DayRow>& seedDays);

  // Returns the finished day's rows when the snapshot begins another day, and the current
  // day's rows (before this snapshot is counted) when `minuteClosed`.
  [[nodiscard]] std::vector<DayRow> ingest(const Snapshot& snapshot,
                                           const std::map<Resource, Health>& displayed,
                                           const std::map<Resource, Lead>& leads,
                                           bool minuteClosed);
  // The current day's rows, one per resource; none before the first snapshot.
  [[nodiscard]] std::vector<DayRow> currentRows() const;

  [[nodiscard]] const Calendar& calendar() const { return calendar_; }

 private:
  struct Totals {
    double strain = 0;
    double problem = 0;
    std::map<std::string, Cause> causes;  // by app ID
  };
  void start(const std::string& day);

  Calendar calendar_;
  std::map<std::string, std::map<Resource, Totals>> seeds_;  // by day key
  std::optional<std::string> day_;
  std::map<Resource, Totals> totals_;
};

}  // namespace pellwin
