// Repeating timers behind an interface, so the live model's scheduling runs on real time in
// the app and on a test's own clock in tests.
#pragma once

#include <functional>
#include <memory>

namespace pellwin {

// A running timer. Destroying it stops it: once the destructor returns, `fire` is not running
// and is never called again.
class RepeatingTimer {
 public:
  virtual ~RepeatingTimer() = default;
};

class Ticker {
 public:
  virtual ~Ticker() = default;
  // Calls `fire` after `delay` seconds, then every `period` seconds, on a thread of the
  // ticker's own, until the returned timer is destroyed.
  [[nodiscard]] virtual std::unique_ptr<RepeatingTimer> repeat(double delay, double period,
                                                               std::function<void()> fire) = 0;
};

}  // namespace pellwin
