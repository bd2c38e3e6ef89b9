// ProcessSignals through kill(2), with /proc telling an exited process from a running one.
// Stateless; safe from any thread.
#pragma once

#include <filesystem>

#include "app/models/process_signals.h"

namespace pellwin {

class KernelProcessSignals final : public ProcessSignals {
 public:
  explicit KernelProcessSignals(std::filesystem::path procRoot);

  [[nodiscard]] std::expected<void, SystemError> send(std::int32_t pid, int signal) override;
  [[nodiscard]] bool isRunning(std::int32_t pid) override;

 private:
  std::filesystem::path procRoot_;
};

}  // namespace pellwin
