// The owner's thread of a test: closures that a model or the recorder posts from their worker
// wait here until the test runs them. Test support only: production code never includes it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace pellwin::testing {

class OwnerLoop {
 public:
  // The `post` function to hand to the code under test.
  std::function<void(std::function<void()>)> poster() {
    return [this](std::function<void()> step) {
      std::lock_guard lock(mutex_);
      steps_.push_back(std::move(step));
      wake_.notify_all();
    };
  }

  // Runs posted closures, in order, until `done` holds; false after 20 s without a new one.
  bool runUntil(const std::function<bool()>& done) {
    while (!done()) {
      if (!runNext()) return false;
    }
    return true;
  }

  // Runs the next posted closure, waiting up to 20 s for one; false when none came.
  bool runNext() {
    std::unique_lock lock(mutex_);
    if (!wake_.wait_for(lock, std::chrono::seconds(20), [this] { return !steps_.empty(); })) {
      return false;
    }
    auto step = std::move(steps_.front());
    steps_.pop_front();
    lock.unlock();
    step();
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> steps_;
};

}  // namespace pellwin::testing
