// The rows one snapshot (or a flush) produces for history, to be written in one transaction.
#pragma once

#include <vector>

#include "core/history/alert_row.h"
#include "core/history/day_row.h"
#include "core/history/episode_row.h"
#include "core/history/minute_row.h"
#include "core/history/sample_row.h"

namespace pellwin {

struct MinuteRollupOutput {
  std::vector<SampleRow> samples{};
  std::vector<MinuteRow> minutes{};
  std::vector<MinuteAppRow> apps{};
  friend bool operator==(const MinuteRollupOutput&, const MinuteRollupOutput&) = default;
};

struct RollupOutput {
  std::vector<SampleRow> samples{};
  std::vector<MinuteRow> minutes{};
  std::vector<MinuteAppRow> apps{};
  std::vector<EpisodeRow> episodes{};
  std::vector<AlertRow> alerts{};
  std::vector<AlertClear> clears{};
  std::vector<DayRow> days{};

  [[nodiscard]] bool isEmpty() const {
    return samples.empty() && minutes.empty() && apps.empty() && episodes.empty() &&
           alerts.empty() && clears.empty() && days.empty();
  }
  // Concatenates field by field.
  void append(RollupOutput other);
  void append(MinuteRollupOutput other);
  friend bool operator==(const RollupOutput&, const RollupOutput&) = default;
};

}  // namespace pellwin
