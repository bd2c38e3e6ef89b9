#include "app/launch_status.h"

#include <gtest/gtest.h>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

TEST(LaunchStatus, OneLinePerFactAndTheTestNotificationOnlyWhenAskedFor) {
  const struct {
    const char* why;
    LaunchStatus status;
    const char* expected;
  } cases[] = {
      {"a later launch with the dot only",
       {.loginItem = LoginItemStatus::notRegistered,
        .notifications = NotificationAuthorization::authorized},
       "login-item: notRegistered\nnotifications: authorized\nwindows-visible: none\n"},
      {"first launch with the tour, no server, test still on its way",
       {.loginItem = LoginItemStatus::enabled,
        .notifications = NotificationAuthorization::notDetermined,
        .visibleWindows = {"Tovrin", "Welcome to Tovrin"},
        .testNotificationRequested = true},
       "login-item: enabled\nnotifications: notDetermined\n"
       "windows-visible: Tovrin, Welcome to Tovrin\ntest-notification: pending\n"},
      {"delivered",
       {.loginItem = LoginItemStatus::enabled,
        .notifications = NotificationAuthorization::authorized,
        .testNotificationRequested = true,
        .testNotification = NotificationResult{.delivered = true}},
       "login-item: enabled\nnotifications: authorized\nwindows-visible: none\n"
       "test-notification: delivered\n"},
      {"not delivered, with the reason",
       {.loginItem = LoginItemStatus::enabled,
        .notifications = NotificationAuthorization::notDetermined,
        .testNotificationRequested = true,
        .testNotification = NotificationResult{.reason = "no notification server is running"}},
       "login-item: enabled\nnotifications: notDetermined\nwindows-visible: none\n"
       "test-notification: not delivered: no notification server is running\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(statusFileText(c.status), c.expected);
  }
}

TEST(LaunchStatus, WritingReplacesTheFileAndNamesAFolderThatIsMissing) {
  testing::ScratchFolder scratch;
  const auto file = scratch.write("status", "old text that is longer than the new\n");
  ASSERT_TRUE(writeStatusFile(file, "login-item: enabled\n").has_value());
  EXPECT_EQ(testing::fileBytes(file), "login-item: enabled\n");
  const auto failed = writeStatusFile(scratch / "missing/status", "x");
  ASSERT_FALSE(failed.has_value());
  EXPECT_EQ(failed.error().path, (scratch / "missing/status").string());
}

}  // namespace
}  // namespace pellwin
