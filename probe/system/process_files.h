// Parsers of the per-process files in /proc/PID (proc(5)). Pure functions of the text; a field
// that is missing or malformed reads as 0, so a damaged file never stops a reading.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

// Linux's PF_KTHREAD in the stat flags: a kernel thread, which has no executable.
inline constexpr std::uint64_t kernelThreadFlag = 0x00200000;

// The fields of /proc/PID/stat the readers use. `comm` is a view into the parsed text.
struct ProcessStat {
  std::string_view comm{};
  char state = '?';
  std::int32_t parent = 0;
  std::int64_t terminal = 0;  // tty_nr: 0 without a controlling terminal
  std::uint64_t flags = 0;
  std::uint64_t minorFaults = 0;  // minflt
  std::uint64_t majorFaults = 0;  // majflt
  std::uint64_t userTicks = 0;    // utime
  std::uint64_t systemTicks = 0;  // stime
  // cutime + cstime: the CPU time of waited-for children, and of everything they waited for,
  // added by the kernel when each was reaped (kernel/exit.c, wait_task_zombie).
  std::uint64_t childUserTicks = 0;
  std::uint64_t childSystemTicks = 0;
  std::uint64_t threads = 0;      // num_threads
  std::uint64_t startTicks = 0;   // starttime: clock ticks after boot
};

// Absent when the text has no "(comm)" between its first "(" and last ")". The comm may itself
// hold spaces, parentheses and ") (", so the fields are counted from the last ")".
[[nodiscard]] std::optional<ProcessStat> parseProcessStat(std::string_view text);

// The fields of /proc/PID/status the readers use.
struct ProcessStatus {
  std::uint64_t rssAnonKB = 0;
  std::uint64_t vmSwapKB = 0;
  std::uint64_t threads = 0;
  std::uint64_t voluntarySwitches = 0;  // of the thread the file belongs to only
  std::uint64_t involuntarySwitches = 0;
  friend bool operator==(const ProcessStatus&, const ProcessStatus&) = default;
};

[[nodiscard]] ProcessStatus parseProcessStatus(std::string_view text);
// voluntary + nonvoluntary context switches of one task's status file.
[[nodiscard]] std::uint64_t parseContextSwitches(std::string_view text);

// read_bytes and write_bytes of /proc/PID/io: bytes really fetched from and sent to storage.
struct ProcessIO {
  std::uint64_t readBytes = 0;
  std::uint64_t writeBytes = 0;
  friend bool operator==(const ProcessIO&, const ProcessIO&) = default;
};

[[nodiscard]] ProcessIO parseProcessIO(std::string_view text);

// The first field of /proc/uptime ("350735.47 234388.90"), seconds since boot on the clock that
// stat's starttime counts, in ticks of `ticksPerSecond`. Absent when malformed.
[[nodiscard]] std::optional<std::uint64_t> parseUptimeTicks(std::string_view text,
                                                           std::uint64_t ticksPerSecond);

// The NUL-separated arguments of /proc/PID/cmdline. A program that rewrote its title into one
// space-separated string gives one argument; a zombie or kernel thread gives none.
[[nodiscard]] std::vector<std::string> parseCommandLine(std::string_view text);

}  // namespace pellwin
