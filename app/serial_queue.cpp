#include "app/serial_queue.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace pellwin {

SerialQueue::SerialQueue(std::string label, int niceness)
    : label_(std::move(label)), thread_([this, niceness] { run(niceness); }) {}

SerialQueue::~SerialQueue() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_one();
  thread_.join();
}

void SerialQueue::async(std::function<void()> work) {
  {
    std::lock_guard lock(mutex_);
    work_.push_back(std::move(work));
  }
  wake_.notify_one();
}

void SerialQueue::run(int niceness) {
  // pthread_setname_np(3) refuses names longer than 15 bytes; the tail keeps the part that
  // tells queues apart ("pellwin.history").
  const std::string name = label_.size() > 15 ? label_.substr(label_.size() - 15) : label_;
  pthread_setname_np(pthread_self(), name.c_str());
  // On Linux the nice value belongs to the thread (setpriority(2) with its thread id). A
  // failure leaves the thread at the app's priority, which is harmless.
  const id_t self = static_cast<id_t>(::gettid());
  (void)::setpriority(PRIO_PROCESS, self, ::getpriority(PRIO_PROCESS, self) + niceness);

  while (true) {
    std::function<void()> next;
    {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [this] { return stopping_ || !work_.empty(); });
      if (work_.empty()) return;  // stopping, and everything queued has run
      next = std::move(work_.front());
      work_.pop_front();
    }
    next();
  }
}

}  // namespace pellwin
