#include "core/clean/cleaner_running.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/clean/linux_cleaner_catalog.h"
#include "core/clean/macos_cleaner_catalog.h"

namespace pellwin {
namespace {

const std::vector<CleanGroup>& linuxGroups() {
  static const std::vector<CleanGroup> groups = LinuxCleanerCatalog::groups({.home = "/home/ann"});
  return groups;
}

const CleanGroup& group(const std::vector<CleanGroup>& groups, const std::string& id) {
  for (const CleanGroup& g : groups) {
    if (g.id == id) return g;
  }
  ADD_FAILURE() << "no group " << id;
  return groups.front();
}

const CleanSource& source(const std::vector<CleanGroup>& groups, const std::string& groupID,
                          const std::string& title) {
  for (const CleanSource& s : group(groups, groupID).sources) {
    if (s.title == title) return s;
  }
  ADD_FAILURE() << "no source " << title;
  return group(groups, groupID).sources.front();
}

TEST(CleanerRunning, XcodeOpenSkipsBothMacosXcodeGroupsAndNothingElse) {
  const auto& macos = MacosCleanerCatalog::groups();
  const RunningSet running{.bundleIDs = {"com.apple.dt.xcode"}, .names = {"xcode"}};
  for (const char* id : {"xcode-build", "device-support"}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(CleanerRunning::pause(std::nullopt, running, group(macos, id).sources.front()),
              "Xcode is open");
    EXPECT_EQ(CleanerRunning::pause("MyApp-abcdef", running, group(macos, id).sources.front()),
              "Xcode is open");
  }
  for (const CleanSource& s : group(macos, "developer-caches").sources) {
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
      {"names are matched whole, not as prefixes",
       {.names = {"gopls"}},
       "Go build cache",
       std::nullopt},
      {"a bundle identifier is not a tool name",
       {.bundleIDs = {"go"}},
       "Go build cache",
       std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(CleanerRunning::pause(std::nullopt, c.running,
                                    source(linuxGroups(), "developer-caches", c.title)),
              c.reason);
  }
}

TEST(CleanerRunning, ACacheChildIsOpenWhileItsAppOrAHelperOrAParentIdentityRuns) {
  const CleanSource& caches = group(linuxGroups(), "app-caches").sources.front();
  const struct {
    const char* why;
    RunningSet running;
    const char* child;
    std::optional<std::string> reason;
  } cases[] = {
      {"exactly that identity",
       {.bundleIDs = {"com.example.editor"}},
       "com.example.Editor",
       "com.example.Editor is open"},
      {"a helper: the name followed by a dot and more",
       {.bundleIDs = {"com.example.editor.helper"}},
       "com.example.Editor",
       "com.example.Editor is open"},
      {"an identity that is a leading part of the name",
       {.bundleIDs = {"com.example.editor"}},
       "com.example.editor.ShipIt",
       "com.example.editor.ShipIt is open"},
      {"the leading part is compared as text, so a longer word counts too (leaving a cache "
       "alone is the safe mistake)",
       {.bundleIDs = {"com.example.editor"}},
       "com.example.editorial",
       "com.example.editorial is open"},
      {"a name that is a leading part of a running identity",
       {.bundleIDs = {"google-chrome"}},
       "google",
       "google is open"},
      {"a process named like the folder", {.names = {"spotify"}}, "Spotify", "Spotify is open"},
      {"nothing related runs",
       {.bundleIDs = {"org.other.app"}, .names = {"bash"}},
       "com.example.Editor",
       std::nullopt},
      {"an empty identity never matches everything",
       {.bundleIDs = {""}},
       "fontconfig",
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
  const RunningSet all{.bundleIDs = {"com.jetbrains.intellij-idea", "cache"}, .names = {"bazel"}};
  EXPECT_EQ(CleanerRunning::pause("cache", all, source), "bazel is running");
  RunningSet noTool = all;
  noTool.names.clear();
  EXPECT_EQ(CleanerRunning::pause("cache", noTool, source), "IntelliJ-IDEA is open");
  const CleanSource dotless{.path = "x", .bundleIDs = {"code"}};
  EXPECT_EQ(CleanerRunning::pause(std::nullopt, {.bundleIDs = {"code"}}, dotless), "code is open");
}

// What the Linux catalog leaves alone while `processes` run, and why: a whole source by its
// path, a child of a per-child source by the source's path and the child's name. The cache
// folder holds the children below; the other per-child folders hold dated logs.
std::map<std::string, std::string> leftAloneOnLinux(const std::vector<ProcessSample>& processes) {
  const RunningSet running = RunningSet::from(processes);
  const std::vector<std::string> cacheChildren = {"mozilla",         "google-chrome", "chromium",
                                                  "vscode-cpptools", "tracker3",      "spotify",
                                                  "thumbnails",      "fontconfig"};
  const std::vector<std::string> logChildren = {"2025-01-01T10-00-00"};
  std::map<std::string, std::string> out;
  for (const CleanGroup& g : linuxGroups()) {
    for (const CleanSource& s : g.sources) {
      if (!s.eachChild) {
        if (auto reason = CleanerRunning::pause(std::nullopt, running, s)) out[s.path] = *reason;
        continue;
      }
      for (const std::string& child : g.id == "app-caches" ? cacheChildren : logChildren) {
        if (auto reason = CleanerRunning::pause(child, running, s)) {
          out[s.path + "/" + child] = *reason;
        }
      }
    }
  }
  return out;
}

ProcessSample program(std::string path, std::vector<std::string> arguments = {},
                      std::string appID = "") {
  ProcessSample sample{.name = path.substr(path.rfind('/') + 1),
                       .path = std::move(path),
                       .arguments = std::move(arguments)};
  if (!appID.empty()) sample.app = AppIdentity{.id = std::move(appID)};
  return sample;
}

TEST(CleanerRunning, TheLinuxCatalogLeavesAloneWhatEachRunningProgramUses) {
  using Skips = std::map<std::string, std::string>;
  const std::string idea = "idea is running";
  const std::string studio = "studio is running";
  const struct {
    const char* why;
    std::vector<ProcessSample> processes;
    Skips expected;
  } cases[] = {
      {"a shell, an editor and a terminal use none of it",
       {program("/usr/bin/bash", {"-bash"}), program("/usr/bin/vim", {"vim", "notes.txt"}),
        program("/usr/libexec/gnome-terminal-server", {}, "org.gnome.Terminal")},
       {}},
      {"IntelliJ IDEA on the JVM: every JetBrains-style IDE folder, its logs still offered",
       {program("/opt/idea/jbr/bin/java",
                {"/opt/idea/jbr/bin/java", "-Xmx2g", "-cp", "/opt/idea/lib/app.jar",
                 "com.intellij.idea.Main"},
                "jetbrains-idea")},
       {{".cache/JetBrains/*/caches", idea},
        {".cache/JetBrains/*/index", idea},
        {".cache/Google/AndroidStudio*/caches", idea},
        {".cache/Google/AndroidStudio*/index", idea}}},
      {"Android Studio's own launcher",
       {program("/opt/android-studio/bin/studio", {"/opt/android-studio/bin/studio"})},
       {{".cache/JetBrains/*/caches", studio},
        {".cache/JetBrains/*/index", studio},
        {".cache/Google/AndroidStudio*/caches", studio},
        {".cache/Google/AndroidStudio*/index", studio}}},
      {"Firefox owns the mozilla cache by another name",
       {program("/usr/lib/firefox/firefox", {"/usr/lib/firefox/firefox"}, "firefox")},
       {{".cache/mozilla", "firefox is open"}}},
      {"Chrome: its own cache by app id, and Chromium's, whose program is also called chrome",
       {program("/opt/google/chrome/chrome", {"/opt/google/chrome/chrome"}, "google-chrome")},
       {{".cache/google-chrome", "google-chrome is open"}, {".cache/chromium", "chrome is open"}}},
      {"pip run by Python",
       {program("/usr/bin/python3.12", {"python3", "/home/ann/.local/bin/pip", "install"})},
       {{".cache/pip", "pip is running"}}},
      {"npm retitles its process; its old logs are still offered",
       {program("/usr/bin/node", {"npm install"})},
       {{".npm/_cacache", "npm is running"}}},
      {"uv",
       {program("/home/ann/.local/bin/uv", {"uv", "sync"})},
       {{".cache/uv", "uv is running"}}},
      {"Homebrew's Ruby script: its cache, not its old logs",
       {program("/home/linuxbrew/.linuxbrew/Homebrew/Library/Homebrew/vendor/portable-ruby/"
                "current/bin/ruby",
                {"ruby", "-W1", "--disable=gems,rubyopt",
                 "/home/linuxbrew/.linuxbrew/Homebrew/Library/Homebrew/brew.rb", "upgrade"})},
       {{".cache/Homebrew", "brew is running"}}},
      {"Cargo",
       {program("/home/ann/.cargo/bin/cargo", {"cargo", "build"})},
       {{".cargo/registry/cache", "cargo is running"}}},
      {"Bazel's server names its workspace",
       {program("/usr/lib/jvm/java-21/bin/java", {"bazel(app)", "-XX:+UseParallelGC"})},
       {{".cache/bazel", "bazel is running"}}},
      {"a debugger: both places debug symbols are kept",
       {program("/usr/bin/gdb", {"gdb", "./app"})},
       {{".cache/debuginfod_client", "gdb is running"},
        {".debuginfod_client_cache", "gdb is running"}}},
      {"Visual Studio Code owns the C++ extension's cache",
       {program("/usr/share/code/code", {"/usr/share/code/code"}, "code")},
       {{".cache/vscode-cpptools", "code is open"}}},
      {"the file indexer owns its old cache folder",
       {program("/usr/libexec/localsearch-3", {"/usr/libexec/localsearch-3"})},
       {{".cache/tracker3", "localsearch-3 is open"}}},
      {"an app whose cache folder has its program's name",
       {program("/usr/share/spotify/spotify", {"spotify"}, "com.spotify.Client")},
       {{".cache/spotify", "spotify is open"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(leftAloneOnLinux(c.processes), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
