#include "core/base/path_text.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(LastPathComponent, NamesWhatFollowsTheLastSlashWhateverTheSpelling) {
  const struct {
    const char* why;
    std::string_view path;
    std::string_view expected;
  } cases[] = {
      {"absolute", "/usr/bin/python3", "python3"},
      {"relative", "bin/pip3", "pip3"},
      {"bare name", "firefox", "firefox"},
      {"trailing slashes", "/home/me/.cache//", ".cache"},
      {"the root", "/", "/"},
      {"only slashes", "///", "/"},
      {"empty", "", ""},
      {"a name with spaces", "/opt/My App/run me", "run me"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(lastPathComponent(c.path), c.expected);
  }
}

TEST(JoinedPath, PutsExactlyOneSlashBetweenFolderAndName) {
  EXPECT_EQ(joinedPath("/home/me", "a b"), "/home/me/a b");
  EXPECT_EQ(joinedPath("/home/me/", "a"), "/home/me/a");
  EXPECT_EQ(joinedPath("/", "home"), "/home");
  EXPECT_EQ(joinedPath("", "home"), "/home");
}

}  // namespace
}  // namespace pellwin
