#include "core/monitor/macos_app_paths.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace pellwin {
namespace {

TEST(MacosAppPaths, TheOutermostBundleHoldsItsNestedHelpers) {
  const struct {
    const char* why;
    const char* path;
    std::optional<std::string_view> bundle;
  } cases[] = {
      {"an app's own executable", "/Applications/Mail.app/Contents/MacOS/Mail",
       "/Applications/Mail.app"},
      {"a helper app nested in an app",
       "/Applications/Slack.app/Contents/Frameworks/Slack Helper.app/Contents/MacOS/Slack Helper",
       "/Applications/Slack.app"},
      {"a path that ends at the bundle is not inside it", "/Applications/Mail.app", std::nullopt},
      {"a folder whose name only begins like a bundle", "/opt/x.application/bin/x", std::nullopt},
      {"a Linux program", "/usr/bin/firefox", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(MacosAppPaths::outermostBundlePath(c.path), c.bundle);
    EXPECT_EQ(MacosAppPaths::isInBundle(c.path), c.bundle.has_value());
  }
}

TEST(MacosAppPaths, ASigningCloneStandsForTheAppItsFirstArgumentNames) {
  const std::string clone = "/private/var/folders/x/code_sign_clone/abc/Editor";
  const std::string app = "/Applications/Editor.app/Contents/MacOS/Editor";
  const struct {
    const char* why;
    std::string path;
    std::vector<std::string> arguments;
    std::optional<std::string> target;
  } cases[] = {
      {"a clone started as its app", clone, {app, "--restore"}, app},
      {"a clone whose first argument is no app", clone, {"/usr/bin/editor"}, std::nullopt},
      {"a clone without arguments", clone, {}, std::nullopt},
      {"no clone: the first argument says nothing", "/usr/bin/editor", {app}, std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(MacosAppPaths::signingCloneTarget(c.path, c.arguments), c.target);
  }
}

}  // namespace
}  // namespace pellwin
