// A serial queue on its own thread: work runs one item at a time, in the order it was queued.
// `async` may be called from any thread. Destroying the queue runs what is already queued,
// then joins the thread.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace pellwin {

class SerialQueue {
 public:
  // `label` names the thread (the kernel keeps its last 15 bytes). `niceness` is added to the
  // thread's scheduling nice value: a queue of background work runs below the app's threads.
  SerialQueue(std::string label, int niceness);
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  void async(std::function<void()> work);
  [[nodiscard]] const std::string& label() const { return label_; }

 private:
  void run(int niceness);

  std::string label_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> work_;
  bool stopping_ = false;
  std::thread thread_;  // last: starts once everything above exists
};

}  // namespace pellwin
