// The work of one process, counted once. The kernel adds a reaped child's CPU time and I/O to
// its parent's totals (kernel/exit.c, wait_task_zombie: cutime and cstime in stat, the io
// file's bytes), so a child seen while it lived would count twice, and one never seen would
// count only there. The ledger takes off what was counted already and keeps the rest.
// Plain value; the process reader keeps one per process, on its own thread.
#pragma once

#include <cstdint>

namespace pellwin {

struct Work {
  std::uint64_t cpuTicks = 0;  // USER_HZ ticks
  std::uint64_t readBytes = 0;
  std::uint64_t writeBytes = 0;
  std::uint64_t switches = 0;  // context switches; the kernel never hands these to a parent
  friend bool operator==(const Work&, const Work&) = default;
};

class WorkLedger {
 public:
  // The process's cumulative totals as the kernel gives them, its reaped children's included.
  void record(const Work& totals);
  // A child that went away: `counted` (its handedOn()) was counted already, and the kernel adds
  // it here again when this process reaps the child.
  void takeOff(const Work& counted);
  // A descendant's work from before its first reading, which gives it no rate of its own.
  void adopt(const Work& work);

  // The work counted for this process so far. Never goes back: a child taken off before the
  // kernel added it (read between its exit and its reaping) holds the figures until they
  // catch up.
  [[nodiscard]] const Work& reported() const { return reported_; }
  // What the parent takes off when it reaps this process: the totals of its last reading and
  // what its own vanished children had counted since. Switches are 0.
  [[nodiscard]] Work handedOn() const;

 private:
  void update();

  Work totals_{};
  Work takenOff_{};
  Work takenOffAtRecord_{};
  Work adopted_{};
  Work reported_{};
};

}  // namespace pellwin
