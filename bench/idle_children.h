// About 500 idle processes kept alive for a benchmark, so readings see a desktop-sized process
// table. Started on first use and ended when the benchmark exits.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <deque>
#include <thread>

#include "probe/system/process_reader.h"

namespace pellwin::bench {

class IdleChildren {
 public:
  static constexpr int count = 500;

  IdleChildren() {
    for (int i = 0; i < count; ++i) start();
    // Past the age at which the reader still re-reads a young process's cgroup: what is
    // measured is the steady state.
    std::this_thread::sleep_for(std::chrono::duration<double>(ProcessReader::youngAge + 0.5));
  }
  ~IdleChildren() {
    while (!pids_.empty()) endOldest();
  }
  IdleChildren(const IdleChildren&) = delete;
  IdleChildren& operator=(const IdleChildren&) = delete;

  void start() {
    const pid_t pid = ::fork();
    if (pid == 0) {
      for (;;) ::pause();
    }
    if (pid > 0) pids_.push_back(pid);
  }
  void endOldest() {
    ::kill(pids_.front(), SIGKILL);
    ::waitpid(pids_.front(), nullptr, 0);
    pids_.pop_front();
  }

 private:
  std::deque<pid_t> pids_;
};

inline IdleChildren& idleChildren() {
  static IdleChildren alive;
  return alive;
}

}  // namespace pellwin::bench
