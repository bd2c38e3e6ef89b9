#include "core/history/rollup_output.h"

#include <iterator>

namespace pellwin {

namespace {
template <class T>
void moveAppend(std::vector<T>& to, std::vector<T>& from) {
  to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}
}  // namespace

void RollupOutput::append(RollupOutput other) {
  moveAppend(samples, other.samples);
  moveAppend(minutes, other.minutes);
  moveAppend(apps, other.apps);
  moveAppend(episodes, other.episodes);
  moveAppend(alerts, other.alerts);
  moveAppend(clears, other.clears);
  moveAppend(days, other.days);
}

void RollupOutput::append(MinuteRollupOutput other) {
  moveAppend(samples, other.samples);
  moveAppend(minutes, other.minutes);
  moveAppend(apps, other.apps);
}

}  // namespace pellwin
