// Turns the notifications that were sent into rows for the Alerts list, and reports when the
// red stretch behind a listed alert has ended so the list can show it cleared. A value owned by
// the history side; not thread-safe. Times are seconds since 1970.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "core/history/alert_row.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

class AlertLog {
 public:
  // More than this between two snapshots ends every red stretch.
  static constexpr double maxGap = 30.0;

  struct Output {
    std::vector<AlertRow> alerts{};
    std::vector<AlertClear> cleared{};
    friend bool operator==(const Output&, const Output&) = default;
  };

  // `alerted` are the notices sent for this snapshot (after the switched-off filter). A
  // resource is red while it is shown as a problem and measured; a listed alert is cleared
  // once, at the last red snapshot, when that ends or snapshots stop for more than 30 s.
  [[nodiscard]] Output ingest(const Snapshot& snapshot, const std::map<Resource, Health>& displayed,
                              const std::vector<AlertNotice>& alerted);
  // Clears every listed alert at the last time its resource was red.
  [[nodiscard]] std::vector<AlertClear> closeOpen();

 private:
  struct Red {
    double start = 0;
    double last = 0;
  };
  std::map<Resource, Red> red_;
  std::set<Resource> open_;  // resources with an alert not yet cleared
  std::optional<double> lastTimestamp_;
};

}  // namespace pellwin
