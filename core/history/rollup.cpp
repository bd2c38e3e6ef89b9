#include "core/history/rollup.h"

namespace pellwin {

RollupOutput Rollup::ingest(const Snapshot& snapshot, const std::map<Resource, Health>& displayed,
                            const std::map<Resource, Lead>& leads,
                            const std::vector<AlertNotice>& alerted) {
  RollupOutput output;
  MinuteRollupOutput minutes = minutes_.ingest(snapshot, displayed);
  const bool minuteClosed = !minutes.minutes.empty();
  output.append(std::move(minutes));
  output.episodes = tracker_.ingest(snapshot, displayed, leads);
  AlertLog::Output alerts = log_.ingest(snapshot, displayed, alerted);
  output.alerts = std::move(alerts.alerts);
  output.clears = std::move(alerts.cleared);
  output.days = days_.ingest(snapshot, displayed, leads, minuteClosed);
  return output;
}

RollupOutput Rollup::flush() {
  RollupOutput output;
  output.append(minutes_.flush());
  output.episodes = tracker_.closeAll();
  output.clears = log_.closeOpen();
  output.days = days_.currentRows();
  return output;
}

}  // namespace pellwin
