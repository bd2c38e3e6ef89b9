#include "core/history/cause_total.h"

#include <algorithm>
#include <map>
#include <set>

namespace pellwin {

std::vector<CauseTotal> causeTotals(const std::vector<DayRow>& rows,
                                    std::optional<Resource> resource) {
  struct Sum {
    CauseTotal total;
    std::string nameDay;  // the day `total.name` was taken from
    std::set<Resource> resources;
    std::set<std::string> days;
  };
  std::map<std::string, Sum> sums;
  for (const DayRow& row : rows) {
    if (resource && row.resource != *resource) continue;
    for (const Cause& cause : row.causes) {
      if (cause.seconds <= 0) continue;
      Sum& sum = sums[cause.appID];
      sum.total.appID = cause.appID;
      sum.total.seconds += cause.seconds;
      if (sum.nameDay.empty() || row.day >= sum.nameDay) {
        sum.total.name = cause.name;
        sum.nameDay = row.day;
      }
      sum.resources.insert(row.resource);
      sum.days.insert(row.day);
    }
  }
  std::vector<CauseTotal> totals;
  totals.reserve(sums.size());
  for (auto& [appID, sum] : sums) {
    sum.total.resources.assign(sum.resources.begin(), sum.resources.end());
    sum.total.days = static_cast<int>(sum.days.size());
    totals.push_back(std::move(sum.total));
  }
  std::sort(totals.begin(), totals.end(), [](const CauseTotal& a, const CauseTotal& b) {
    if (a.seconds != b.seconds) return a.seconds > b.seconds;
    if (a.name != b.name) return a.name < b.name;
    return a.appID < b.appID;
  });
  return totals;
}

}  // namespace pellwin
