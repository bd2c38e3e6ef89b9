#include "core/clean/cleaner_running.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "core/clean/cleaner_catalog.h"

namespace pellwin {
namespace {

const CleanGroup& group(const std::string& id) {
  for (const CleanGroup& g : CleanerCatalog::groups()) {
    if (g.id == id) return g;
  }
  ADD_FAILURE() << "no group " << id;
  return CleanerCatalog::groups().front();
}

const CleanSource& source(const std::string& groupID, const std::string& title) {
  for (const CleanSource& s : group(groupID).sources) {
    if (s.title == title) return s;
  }
  ADD_FAILURE() << "no source " << title;
  return group(groupID).sources.front();
}

TEST(CleanerRunning, XcodeOpenSkipsBothXcodeGroupsAndNothingElse) {
  const RunningSet running{.bundleIDs = {"com.apple.dt.xcode"}, .names = {"xcode"}};
  for (const char* id : {"xcode-build", "device-support"}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(CleanerRunning::pause(std::nullopt, running, group(id).sources.front()),
              "Xcode is open");
    EXPECT_EQ(CleanerRunning::pause("MyApp-abcdef", running, group(id).sources.front()),
              "Xcode is open");
  }
  for (const CleanSource& s : group("developer-caches").sources) {
    SCOPED_TRACE(s.path);
    EXPECT_EQ(CleanerRunning::pause(std::nullopt, running, s), std::nullopt);
  }
}

TEST(CleanerRunning, ARunningToolSkipsItsSourceWithTheToolAsWritten) {
  const struct {
    const char* why;
    RunningSet running;
    const char* title;
    std::optional<std::string> reason;
  } cases[] = {
      {"pip3 runs", {.names = {"pip3"}}, "pip cache", "pip3 is running"},
      {"the first listed tool wins", {.names = {"npx", "npm"}}, "npm cache", "npm is running"},
      {"npx alone", {.names = {"npx"}}, "npm cache", "npx is running"},
      {"another tool's source is unaffected", {.names = {"pip3"}}, "npm cache", std::nullopt},
      {"names are matched whole, not as prefixes", {.names = {"gopls"}}, "Go build cache",
       std::nullopt},
      {"a bundle identifier is not a tool name", {.bundleIDs = {"go"}}, "Go build cache",
       std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(CleanerRunning::pause(std::nullopt, c.running, source("developer-caches", c.title)),
              c.reason);
  }
}

TEST(CleanerRunning, ACacheChildIsOpenWhileItsAppOrAHelperOrAParentIdentityRuns) {
  const CleanSource& caches = group("app-caches").sources.front();
  const struct {
    const char* why;
    RunningSet running;
    const char* child;
    std::optional<std::string> reason;
  } cases[] = {
      {"exactly that identity", {.bundleIDs = {"com.example.editor"}}, "com.example.Editor",
       "com.example.Editor is open"},
      {"a helper: the name followed by a dot and more",
       {.bundleIDs = {"com.example.editor.helper"}}, "com.example.Editor",
       "com.example.Editor is open"},
      {"an identity that is a leading part of the name", {.bundleIDs = {"com.example.editor"}},
       "com.example.editor.ShipIt", "com.example.editor.ShipIt is open"},
      {"the leading part is compared as text, so a longer word counts too (leaving a cache "
       "alone is the safe mistake)",
       {.bundleIDs = {"com.example.editor"}}, "com.example.editorial",
       "com.example.editorial is open"},
      {"a name that is a leading part of a running identity", {.bundleIDs = {"google-chrome"}},
       "google", "google is open"},
      {"a process named like the folder", {.names = {"spotify"}}, "Spotify", "Spotify is open"},
      {"nothing related runs", {.bundleIDs = {"org.other.app"}, .names = {"bash"}},
       "com.example.Editor", std::nullopt},
      {"an empty identity never matches everything", {.bundleIDs = {""}}, "fontconfig",
       std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(CleanerRunning::pause(c.child, c.running, caches), c.reason);
  }
}

TEST(CleanerRunning, AliasesNameTheLinuxAppsThatOwnACacheFolder) {
  const CleanSource caches{
      .path = ".cache",
      .eachChild = true,
      .childAliases = {{.child = "mozilla", .names = {"firefox", "firefox-esr", "thunderbird"}}},
  };
  EXPECT_EQ(CleanerRunning::pause("mozilla", {.names = {"firefox-esr"}}, caches),
            "firefox-esr is open");
  EXPECT_EQ(CleanerRunning::pause("Mozilla", {.bundleIDs = {"thunderbird"}}, caches),
            "thunderbird is open");
  EXPECT_EQ(CleanerRunning::pause("mozilla", {.names = {"chromium"}}, caches), std::nullopt);
  EXPECT_EQ(CleanerRunning::pause("chromium", {.names = {"firefox"}}, caches), std::nullopt)
      << "an alias belongs to its own child only";
}

TEST(CleanerRunning, ToolsComeBeforeAppsAndAppsBeforeTheChildRule) {
  const CleanSource source{.path = "x",
                           .eachChild = true,
                           .tools = {"bazel"},
                           .bundleIDs = {"com.jetbrains.IntelliJ-IDEA"}};
  const RunningSet all{.bundleIDs = {"com.jetbrains.intellij-idea", "cache"},
                       .names = {"bazel"}};
  EXPECT_EQ(CleanerRunning::pause("cache", all, source), "bazel is running");
  RunningSet noTool = all;
  noTool.names.clear();
  EXPECT_EQ(CleanerRunning::pause("cache", noTool, source), "IntelliJ-IDEA is open");
  const CleanSource dotless{.path = "x", .bundleIDs = {"code"}};
  EXPECT_EQ(CleanerRunning::pause(std::nullopt, {.bundleIDs = {"code"}}, dotless), "code is open");
}

TEST(CleanerCatalog, HomebrewIsNeverAnAppCacheItem) {
  const CleanSource& caches = group("app-caches").sources.front();
  EXPECT_NE(std::find(caches.excludeChildren.begin(), caches.excludeChildren.end(), "homebrew"),
            caches.excludeChildren.end());
  EXPECT_EQ(source("developer-caches", "Homebrew cache").path, "Library/Caches/Homebrew");
}

}  // namespace
}  // namespace pellwin
