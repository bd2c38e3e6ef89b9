#include "probe/files/scan_task.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace pellwin {
namespace {

// From linux/ioprio.h: the best-effort class, priority 7 (the lowest of 0 to 7).
constexpr int kIoprioWhoProcess = 1;
constexpr int kIoprioClassShift = 13;
constexpr int kIoprioClassBestEffort = 2;
constexpr int kLowestBestEffort = (kIoprioClassBestEffort << kIoprioClassShift) | 7;

// Both settings are per thread on Linux when given the thread's own id. Failing to lower a
// priority is harmless, so errors are ignored.
void lowerThisThreadsPriority() {
  const auto thread = static_cast<id_t>(::syscall(SYS_gettid));
  (void)::setpriority(PRIO_PROCESS, thread, 10);
  (void)::syscall(SYS_ioprio_set, kIoprioWhoProcess, thread, kLowestBestEffort);
}

template <typename Walk>
std::jthread start(std::promise<std::expected<WalkResult, ScanError>> promise, Walk walk) {
  return std::jthread([promise = std::move(promise), walk = std::move(walk)]() mutable {
    lowerThisThreadsPriority();
    promise.set_value(walk());
  });
}

}  // namespace

ScanTask::ScanTask(DiskScanner scanner, std::string root, std::optional<std::string> stripPrefix,
                   ScanProgressHandler progress) {
  std::promise<std::expected<WalkResult, ScanError>> promise;
  result_ = promise.get_future();
  thread_ = start(std::move(promise), [scanner = std::move(scanner), root = std::move(root),
                                       stripPrefix = std::move(stripPrefix),
                                       progress = std::move(progress), stop = stop_.get_token()] {
    return scanner.scan(root, stripPrefix, progress, stop);
  });
}

ScanTask::ScanTask(DiskScanner scanner, const SizeNode& folder,
                   std::optional<std::string> stripPrefix, ScanProgressHandler progress) {
  std::promise<std::expected<WalkResult, ScanError>> promise;
  result_ = promise.get_future();
  thread_ = start(std::move(promise), [scanner = std::move(scanner), path = folder.path,
                                       stripPrefix = std::move(stripPrefix),
                                       progress = std::move(progress), stop = stop_.get_token()] {
    // Only the folder's path is needed, not the subtree under it.
    return scanner.rescan(SizeNode{.path = path}, stripPrefix, progress, stop);
  });
}

ScanTask::~ScanTask() {
  stop_.request_stop();
  if (thread_.joinable()) thread_.join();
}

}  // namespace pellwin
