// One slow period: a stretch during which one resource stayed red on screen for at least a
// minute. Written when it opens (no `end`) and again when it closes.
#pragma once

#include <optional>
#include <string>

#include "core/monitor/resource.h"

namespace pellwin {

struct EpisodeRow {
  Resource resource = Resource::memory;
  double start = 0;                       // time of the first red snapshot
  std::optional<double> end{};            // time of the last red snapshot; absent while open
  double peak = 0;                        // the worst reading, in the resource's own unit
  std::string peakText{};                 // `peak` written for people
  std::optional<std::string> topApp{};    // the app most to blame
  std::optional<std::string> topValue{};  // that app's figure at the worst moment
  friend bool operator==(const EpisodeRow&, const EpisodeRow&) = default;
};

}  // namespace pellwin
