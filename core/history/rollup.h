// The one entry point the history side feeds with every snapshot: runs the minute rollup, the
// episode tracker, the alert log and the day tally together and hands back the rows to write
// in one batch. A value owned by the history side; not thread-safe.
#pragma once

#include <map>
#include <vector>

#include "core/base/calendar.h"
#include "core/history/alert_log.h"
#include "core/history/alert_row.h"
#include "core/history/day_row.h"
#include "core/history/day_tally.h"
#include "core/history/episode_tracker.h"
#include "core/history/minute_rollup.h"
#include "core/history/rollup_output.h"
#include "core/monitor/lead.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

class Rollup {
 public:
  // `seedDays`: the stored day rows of the recent days, so a restart continues today's totals.
  Rollup(Calendar calendar, const std::vector<DayRow>& seedDays)
      : days_(std::move(calendar), seedDays) {}

  // `displayed` is the health shown, `leads` the lead of each resource, `alerted` the
  // notifications sent for this snapshot.
  [[nodiscard]] RollupOutput ingest(const Snapshot& snapshot,
                                    const std::map<Resource, Health>& displayed,
                                    const std::map<Resource, Lead>& leads,
                                    const std::vector<AlertNotice>& alerted);
  // When recording stops: the pending sample and minute, closes of open slow periods and
  // alerts, and the current day's totals.
  [[nodiscard]] RollupOutput flush();

 private:
  MinuteRollup minutes_;
  EpisodeTracker tracker_;
  AlertLog log_;
  DayTally days_;
};

}  // namespace pellwin
