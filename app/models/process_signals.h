// Signalling other processes, as much as quitting an app needs. The real one calls kill(2)
// (app/desktop/); tests use a fake that can refuse. Implementations may be called from several
// threads at once.
#pragma once

#include <cstdint>
#include <expected>

#include "probe/system_error.h"

namespace pellwin {

class ProcessSignals {
 public:
  virtual ~ProcessSignals() = default;

  // Sends `signal` to the process `pid` (never to a group: `pid` must be positive). A failure
  // carries errno: ESRCH when the process is gone, EPERM when it belongs to another user.
  [[nodiscard]] virtual std::expected<void, SystemError> send(std::int32_t pid, int signal) = 0;

  // Whether `pid` still runs. A process that has exited is not running even while its parent
  // has yet to collect its exit status.
  [[nodiscard]] virtual bool isRunning(std::int32_t pid) = 0;
};

}  // namespace pellwin
