// The ticker of the running app: each timer is a thread that sleeps on the steady clock, so a
// change of the wall clock neither skips nor bunches ticks. A tick that comes due while the
// previous `fire` still runs is skipped rather than queued.
#pragma once

#include "app/ticker.h"

namespace pellwin {

class SteadyTicker final : public Ticker {
 public:
  [[nodiscard]] std::unique_ptr<RepeatingTimer> repeat(double delay, double period,
                                                       std::function<void()> fire) override;
};

}  // namespace pellwin
