// What "Most energy since" answers: when the machine last changed between mains and battery
// (or when the monitor started), and how the energy used since then divides between apps.
// Fed every reading; a machine without a battery keeps an empty session.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/monitor/readings.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

// One app's part of the energy used during the session.
struct EnergyShare {
  std::string appID{};
  std::string name{};
  double share = 0;  // of the session's energy, 0 to 1
  friend bool operator==(const EnergyShare&, const EnergyShare&) = default;
};

class BatterySession {
 public:
  // The session keeps at most this many apps: once more have been seen, the least costly are
  // forgotten, so a long session of short-lived programs stays small.
  static constexpr std::size_t maxApps = 200;

  // One reading's battery, taken at `at`, and the snapshot it made, if any, whose apps' energy
  // impact over its interval is added. A change of power source starts a new session then.
  void ingest(double at, const std::optional<BatteryReading>& battery, const Snapshot* snapshot);

  // Absent on a machine without a battery (or before the first reading).
  [[nodiscard]] const std::optional<double>& since() const { return since_; }
  [[nodiscard]] bool onBattery() const { return onBattery_; }
  [[nodiscard]] bool isEmpty() const { return !since_.has_value(); }
  // At most `limit` apps, the most energy first (equal ones by name). Shares are of all the
  // energy used in the session, forgotten apps' included; empty while none was used.
  [[nodiscard]] std::vector<EnergyShare> shares(std::size_t limit) const;

  friend bool operator==(const BatterySession&, const BatterySession&) = default;

 private:
  struct Spent {
    std::string name;
    double impactSeconds = 0;  // energy impact × seconds
    friend bool operator==(const Spent&, const Spent&) = default;
  };
  void forgetSmallest();

  std::optional<double> since_;
  bool onBattery_ = false;
  std::map<std::string, Spent> spent_;  // by app ID
  double total_ = 0;
};

}  // namespace pellwin
