#include "core/monitor/battery_session.h"

#include <algorithm>

namespace pellwin {

void BatterySession::ingest(double at, const std::optional<BatteryReading>& battery,
                            const Snapshot* snapshot) {
  if (!battery) {
    *this = BatterySession{};
    return;
  }
  if (!since_ || battery->onBattery != onBattery_) {
    *this = BatterySession{};
    since_ = at;
    onBattery_ = battery->onBattery;
    return;  // the snapshot's interval began before the change
  }
  if (!snapshot) return;
  for (const AppUsage& app : snapshot->apps) {
    const double impact = app.energyImpact * snapshot->interval;
    if (!(impact > 0)) continue;
    Spent& spent = spent_[app.id];
    spent.name = app.name;
    spent.impactSeconds += impact;
    total_ += impact;
  }
  if (spent_.size() > 2 * maxApps) forgetSmallest();
}

void BatterySession::forgetSmallest() {
  std::vector<std::pair<double, std::string>> bySize;
  bySize.reserve(spent_.size());
  for (const auto& [id, spent] : spent_) bySize.emplace_back(spent.impactSeconds, id);
  std::ranges::sort(bySize, std::greater<>{});
  // The forgotten apps' energy stays in the total, so the others' shares do not grow.
  for (std::size_t i = maxApps; i < bySize.size(); ++i) spent_.erase(bySize[i].second);
}

std::vector<EnergyShare> BatterySession::shares(std::size_t limit) const {
  std::vector<EnergyShare> out;
  if (!(total_ > 0)) return out;
  out.reserve(spent_.size());
  for (const auto& [id, spent] : spent_) {
    out.push_back({.appID = id, .name = spent.name, .share = spent.impactSeconds / total_});
  }
  std::ranges::sort(out, [](const EnergyShare& a, const EnergyShare& b) {
    if (a.share != b.share) return a.share > b.share;
    return a.name < b.name;
  });
  if (out.size() > limit) out.resize(limit);
  return out;
}

}  // namespace pellwin
