// Turns each new reading and the one before it into a Snapshot with rates. Owned by one reader
// loop and used from its thread only. Platform-free: the time is the readings' own.
#pragma once

#include <array>
#include <optional>

#include "core/monitor/app_grouper.h"
#include "core/monitor/readings.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

class SnapshotBuilder {
 public:
  // Readings further apart than this (the machine slept, the clock jumped) give no rates.
  static constexpr double maxInterval = 30.0;
  // The resources whose values are differences of counters, so a gap in either reading of
  // the pair makes them unavailable.
  static constexpr std::array<Resource, 3> counterResources = {Resource::memory, Resource::cpu,
                                                               Resource::diskActivity};

  explicit SnapshotBuilder(AppGrouper::BundleIdentifierLookup bundleIdentifier = {})
      : bundleIdentifier_(std::move(bundleIdentifier)) {}

  // The snapshot between the previous reading and this one; none for the first reading, and
  // none when this one is not later than the previous or more than `maxInterval` after it.
  // The reading becomes the previous one in every case.
  [[nodiscard]] std::optional<Snapshot> ingest(SystemSample sample);

  [[nodiscard]] const std::optional<SystemSample>& previous() const { return previous_; }

 private:
  std::optional<SystemSample> previous_;
  AppGrouper::BundleIdentifierLookup bundleIdentifier_;
};

}  // namespace pellwin
