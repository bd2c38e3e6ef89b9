#include "core/history/day_tally.h"

#include <algorithm>

namespace pellwin {

DayTally::DayTally(Calendar calendar, const std::vector<DayRow>& seedDays)
    : calendar_(std::move(calendar)) {
  for (const DayRow& row : seedDays) {
    Totals& totals = seeds_[row.day][row.resource];
    totals.strain = row.strainSeconds;
    totals.problem = row.problemSeconds;
    for (const Cause& cause : row.causes) totals.causes[cause.appID] = cause;
  }
}

void DayTally::start(const std::string& day) {
  day_ = day;
  const auto seeded = seeds_.find(day);
  totals_ = seeded == seeds_.end() ? std::map<Resource, Totals>{} : seeded->second;
  seeds_.clear();  // only the first day can continue stored totals
}

std::vector<DayRow> DayTally::ingest(const Snapshot& snapshot,
                                     const std::map<Resource, Health>& displayed,
                                     const std::map<Resource, Lead>& leads, bool minuteClosed) {
  std::vector<DayRow> rows;
  const std::string day = DayRow::key(snapshot.timestamp, calendar_);
  if (day_ != day) {
    if (day_) rows = currentRows();
    start(day);
  }
  if (minuteClosed) {
    std::vector<DayRow> current = currentRows();
    rows.insert(rows.end(), current.begin(), current.end());
  }

  const double seconds = std::max(0.0, snapshot.duration());
  for (Resource resource : allResources) {
    const auto shown = displayed.find(resource);
    if (shown == displayed.end()) continue;
    switch (shown->second) {
      case Health::ok: break;
      case Health::strain: totals_[resource].strain += seconds; break;
      case Health::problem: {
        Totals& totals = totals_[resource];
        totals.problem += seconds;
        if (const auto lead = leads.find(resource); lead != leads.end()) {
          Cause& cause = totals.causes[lead->second.appID];
          cause.appID = lead->second.appID;
          cause.name = lead->second.name;
          cause.seconds += seconds;
        }
        break;
      }
    }
  }
  return rows;
}

std::vector<DayRow> DayTally::currentRows() const {
  if (!day_) return {};
  std::vector<DayRow> rows;
  for (Resource resource : allResources) {
    DayRow row{.day = *day_, .resource = resource};
    if (const auto found = totals_.find(resource); found != totals_.end()) {
      row.strainSeconds = found->second.strain;
      row.problemSeconds = found->second.problem;
      for (const auto& [appID, cause] : found->second.causes) row.causes.push_back(cause);
    }
    std::stable_sort(row.causes.begin(), row.causes.end(), [](const Cause& a, const Cause& b) {
      if (a.seconds != b.seconds) return a.seconds > b.seconds;
      if (a.name != b.name) return a.name < b.name;
      return a.appID < b.appID;
    });
    if (row.causes.size() > causesPerRow) row.causes.resize(causesPerRow);
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace pellwin
