#include "app/steady_ticker.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>

namespace pellwin {
namespace {

using Clock = std::chrono::steady_clock;

Clock::duration seconds(double value) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(value));
}

class ThreadTimer final : public RepeatingTimer {
 public:
  ThreadTimer(double delay, double period, std::function<void()> fire)
      : thread_([this, delay, period, fire = std::move(fire)](std::stop_token stop) {
          run(stop, seconds(delay), seconds(period), fire);
        }) {}

  ~ThreadTimer() override {
    thread_.request_stop();
    thread_.join();
  }

 private:
  void run(std::stop_token stop, Clock::duration delay, Clock::duration period,
           const std::function<void()>& fire) {
    Clock::time_point next = Clock::now() + delay;
    std::unique_lock lock(mutex_);
    while (true) {
      // Nothing notifies `wake_`: it returns when `next` comes or a stop is requested.
      (void)wake_.wait_until(lock, stop, next, [] { return false; });
      if (stop.stop_requested()) return;
      lock.unlock();
      fire();
      lock.lock();
      next += period;
      // After a long `fire` (or a suspended machine) the missed ticks are dropped.
      const auto now = Clock::now();
      if (next <= now) next = now + period;
    }
  }

  std::mutex mutex_;
  std::condition_variable_any wake_;
  std::jthread thread_;  // last: starts once everything above exists
};

}  // namespace

std::unique_ptr<RepeatingTimer> SteadyTicker::repeat(double delay, double period,
                                                     std::function<void()> fire) {
  return std::make_unique<ThreadTimer>(delay, period, std::move(fire));
}

}  // namespace pellwin
