#include "app/steady_ticker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace pellwin {
namespace {

TEST(SteadyTicker, FiresRepeatedlyAndNeverAfterTheTimerIsGone) {
  SteadyTicker ticker;
  std::atomic<int> fired = 0;
  auto timer = ticker.repeat(0.0, 0.005, [&] { ++fired; });
  while (fired < 3) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  timer.reset();
  const int atStop = fired;
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(fired, atStop);

  // A timer stopped before its first tick never fires, however soon it is stopped.
  std::atomic<int> never = 0;
  ticker.repeat(3600, 1, [&] { ++never; }).reset();
  EXPECT_EQ(never, 0);
}

}  // namespace
}  // namespace pellwin
