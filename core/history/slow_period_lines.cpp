#include "core/history/slow_period_lines.h"

#include <algorithm>

#include "core/base/format.h"
#include "core/history/alert_display.h"

namespace pellwin {

std::vector<SlowPeriodLine> slowPeriodLines(const std::vector<EpisodeRow>& episodes, double now,
                                            const Calendar& calendar) {
  std::vector<SlowPeriodLine> lines;
  lines.reserve(episodes.size());
  for (const EpisodeRow& episode : episodes) {
    const double length = std::max(0.0, episode.end.value_or(now) - episode.start);
    SlowPeriodLine line{
        .resource = episode.resource,
        .start = episode.start,
        .end = episode.end,
        .title = std::string(title(episode.resource)),
        .startText = AlertDisplay::dayLabel(episode.start, now, calendar) + " " +
                     AlertDisplay::timeLabel(episode.start, calendar),
        .lengthText = Format::elapsed(length) + (episode.end ? "" : " so far"),
        .peakText = episode.peakText,
    };
    if (episode.topApp) {
      line.blame = *episode.topApp + (episode.topValue ? " " + *episode.topValue : "");
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace pellwin
