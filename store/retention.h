// How long history keeps its rows, shared by the store and the recorder. Seconds.
#pragma once

namespace pellwin::Retention {

inline constexpr double sampleSeconds = 86400.0;  // raw samples: one day
inline constexpr int defaultDays = 30;            // minutes and their app rankings
inline constexpr double pruneEvery = 3600.0;      // pruning runs at most once an hour

struct Cutoffs {
  double samples = 0;  // samples older than this go
  double minutes = 0;  // minutes and rankings older than this go
};

[[nodiscard]] constexpr Cutoffs cutoffs(double now, int days) {
  return Cutoffs{.samples = now - sampleSeconds, .minutes = now - days * 86400.0};
}

}  // namespace pellwin::Retention
