// A space-map scan running on its own thread at low priority, as a background task: it can be
// cancelled, and its result is collected once. The progress handler is called on the scan's
// thread; a screen that shows progress must hand it over to its own thread itself.
#pragma once

#include <expected>
#include <future>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

#include "probe/files/disk_scanner.h"

namespace pellwin {

class ScanTask {
 public:
  // Starts walking `root` at once. On Linux "utility priority" is a nice value of 10 and the
  // lowest best-effort disk priority, for the scan's thread only, so the walk yields to whatever
  // the user is doing.
  ScanTask(DiskScanner scanner, std::string root, std::optional<std::string> stripPrefix,
           ScanProgressHandler progress);
  // Rescans one folder of an earlier tree.
  ScanTask(DiskScanner scanner, const SizeNode& folder, std::optional<std::string> stripPrefix,
           ScanProgressHandler progress);

  ScanTask(const ScanTask&) = delete;
  ScanTask& operator=(const ScanTask&) = delete;
  // Cancels a scan still running and waits for its thread.
  ~ScanTask();

  // Asks the scan to stop; it does so before entering its next folder.
  void cancel() { stop_.request_stop(); }

  // Waits for the result; at most once.
  [[nodiscard]] std::expected<WalkResult, ScanError> result() { return result_.get(); }

 private:
  std::stop_source stop_;
  std::future<std::expected<WalkResult, ScanError>> result_;
  std::jthread thread_;
};

}  // namespace pellwin
