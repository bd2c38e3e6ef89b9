#include "app/launch_status.h"

#include <fstream>

namespace pellwin {
namespace {

std::string windowsText(const std::vector<std::string>& titles) {
  if (titles.empty()) return "none";
  std::string text;
  for (const auto& title : titles) {
    if (!text.empty()) text += ", ";
    text += title;
  }
  return text;
}

std::string outcomeText(const std::optional<NotificationResult>& result) {
  if (!result) return "pending";
  if (result->delivered) return std::string(result->status());
  return std::string(result->status()) + ": " + result->reason;
}

}  // namespace

std::string statusFileText(const LaunchStatus& status) {
  std::string text = "login-item: " + std::string(enumText(status.loginItem)) + "\n" +
                     "notifications: " + std::string(enumText(status.notifications)) + "\n" +
                     "windows-visible: " + windowsText(status.visibleWindows) + "\n";
  if (status.testNotificationRequested) {
    text += "test-notification: " + outcomeText(status.testNotification) + "\n";
  }
  return text;
}

std::expected<void, SystemError> writeStatusFile(const std::filesystem::path& path,
                                                 std::string_view text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return std::unexpected(SystemError::fromErrno("create", path.string()));
  file << text;
  file.close();
  if (!file) return std::unexpected(SystemError::fromErrno("write", path.string()));
  return {};
}

}  // namespace pellwin
