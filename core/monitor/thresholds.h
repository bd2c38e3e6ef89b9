// The one table of numbers that decides when a resource is healthy, under strain or a
// problem. Every judgement uses `Thresholds::standard()`; tests may vary single fields.
#pragma once

#include <cstdint>

namespace pellwin {

struct Thresholds {
  double averageWindow = 60.0;            // seconds of readings averaged before judging
  double minimumCoverage = 30.0;          // measured seconds needed before an average counts
  double swapShareOfRAMForStrain = 0.25;  // swap in use, as a share of installed memory
  double swapActivityLookback = 300.0;    // seconds looked back for swap traffic
  double swapTrafficForProblem = 1e7;     // bytes per second swapped in plus out
  double cpuStrain = 0.7;                 // busy share of all cores
  double cpuProblem = 0.9;                // busy share of all cores
  double singleAppCores = 0.9;            // cores one app must use to count as runaway
  double singleAppShare = 0.9;            // share of snapshots it must do so in
  double singleAppDuration = 300.0;       // seconds looked back for one busy app
  double diskFreeStrainFraction = 0.15;   // free share of the start-up disk
  std::uint64_t diskFreeStrainBytes = 30'000'000'000;
  double diskFreeProblemFraction = 0.05;
  std::uint64_t diskFreeProblemBytes = 10'000'000'000;
  double diskActivityStrain = 1e8;  // bytes per second read plus written
  double longUptime = 1'209'600;    // seconds (14 days) before a restart is suggested

  [[nodiscard]] static constexpr Thresholds standard() { return Thresholds{}; }
  friend bool operator==(const Thresholds&, const Thresholds&) = default;
};

}  // namespace pellwin
