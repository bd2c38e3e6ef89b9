// Holds the health shown for each resource steady until a different raw level has lasted
// `hold` seconds, so the dot and the notifications do not flicker. A rise and a fall wait
// alike. Owned by one thread; updated once per snapshot with the snapshot's time.
#pragma once

#include <map>
#include <optional>
#include <set>

#include "core/monitor/resource.h"

namespace pellwin {

class Stabilizer {
 public:
  // Updates further apart than this (sleep, a stall) start the timing afresh.
  static constexpr double maxGap = 30.0;

  explicit Stabilizer(double hold) : hold_(hold) {}

  // Takes this tick's raw health, the resources that could not be read and the time; returns
  // the health to show. Resources absent from `health` keep what they showed.
  [[nodiscard]] const std::map<Resource, Health>& update(const std::map<Resource, Health>& health,
                                                         const std::set<Resource>& unavailable,
                                                         double now);

  [[nodiscard]] double hold() const { return hold_; }
  [[nodiscard]] const std::map<Resource, Health>& displayed() const { return displayed_; }

 private:
  double hold_;
  std::map<Resource, Health> displayed_;
  std::map<Resource, double> differingSince_;  // when the raw level first differed
  std::optional<double> lastUpdate_;
};

}  // namespace pellwin
