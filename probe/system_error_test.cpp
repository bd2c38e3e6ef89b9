#include "probe/system_error.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

namespace pellwin {
namespace {

TEST(SystemError, ReadsErrnoOnceRightAfterTheFailedCall) {
  struct stat info {};
  ASSERT_NE(::lstat("/nonexistent/tovrin-missing", &info), 0);
  const SystemError error = SystemError::fromErrno("lstat", "/nonexistent/tovrin-missing");
  EXPECT_EQ(error, (SystemError{.operation = "lstat",
                                .path = "/nonexistent/tovrin-missing",
                                .code = ENOENT,
                                .target = {}}));
  EXPECT_TRUE(error.isGone());
  EXPECT_FALSE((SystemError{.operation = "open", .path = "/x", .code = EACCES}).isGone());
}

TEST(SystemError, SaysWhatUsersAlreadyReadInEachWording) {
  const SystemError denied{.operation = "write", .path = "/d/map.json.x1", .code = EACCES};
  const SystemError renamed{
      .operation = "rename", .path = "/a/Old", .code = EACCES, .target = "/a/New"};
  const SystemError replaced{.operation = "replace", .path = "/d/map.json", .code = EROFS};
  const SystemError crossDisk{.operation = "trash", .path = "/mnt/x", .code = EXDEV};
  const SystemError renameCrossDisk{
      .operation = "rename", .path = "/a", .code = EXDEV, .target = "/b"};
  const struct {
    const char* why;
    SystemError error;
    ErrorWording wording;
    const char* expected;
  } cases[] = {
      {"the reason alone", denied, ErrorWording::reason, "Permission denied"},
      {"the path in parentheses", denied, ErrorWording::reasonAndPath,
       "Permission denied (/d/map.json.x1)"},
      {"both paths of a rename", renamed, ErrorWording::reasonAndPath,
       "Permission denied (/a/Old to /a/New)"},
      {"the step as a gerund", denied, ErrorWording::reasonAndStep,
       "Permission denied (writing /d/map.json.x1)"},
      {"a verb without a final e", replaced, ErrorWording::reasonAndStep,
       "Read-only file system (replacing /d/map.json)"},
      {"the path after a colon", denied, ErrorWording::pathAfterReason,
       "Permission denied: /d/map.json.x1"},
      {"the product's own sentence for a trash on another disk", crossDisk, ErrorWording::reason,
       "It's on a disk whose Trash Tovrin can't use, so it was left in place"},
      {"the system's words for any other cross-disk rename", renameCrossDisk,
       ErrorWording::reasonAndPath, "Invalid cross-device link (/a to /b)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(sentence(c.error, c.wording), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
