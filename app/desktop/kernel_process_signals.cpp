#include "app/desktop/kernel_process_signals.h"

#include <signal.h>

#include <cerrno>
#include <string>

#include "probe/proc_file.h"
#include "probe/system/process_files.h"

namespace pellwin {

KernelProcessSignals::KernelProcessSignals(std::filesystem::path procRoot)
    : procRoot_(std::move(procRoot)) {}

std::expected<void, SystemError> KernelProcessSignals::send(std::int32_t pid, int signal) {
  // kill(2) reads 0 as "my process group" and -1 as "every process I may signal".
  if (pid <= 0) return std::unexpected(SystemError{.operation = "kill", .code = EINVAL});
  if (::kill(pid, signal) != 0) return std::unexpected(SystemError::fromErrno("kill", ""));
  return {};
}

bool KernelProcessSignals::isRunning(std::int32_t pid) {
  if (pid <= 0) return false;
  // Signal 0 checks existence only; EPERM means the process exists but is another user's.
  if (::kill(pid, 0) != 0 && errno == ESRCH) return false;
  // kill(2) still finds a zombie: it has exited, holds no memory, and waits only for its parent
  // to collect it, which for an orphan of a careless parent may be never.
  const auto text = readTextFile(procRoot_ / std::to_string(pid) / "stat");
  if (!text) return false;
  const auto stat = parseProcessStat(*text);
  return stat && stat->state != 'Z' && stat->state != 'X';
}

}  // namespace pellwin
