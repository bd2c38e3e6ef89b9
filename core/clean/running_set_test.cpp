#include "core/clean/running_set.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace pellwin {
namespace {

ProcessSample process(std::string name, std::string path, std::vector<std::string> arguments) {
  return ProcessSample{.pid = 100,
                       .name = std::move(name),
                       .path = std::move(path),
                       .arguments = std::move(arguments)};
}

TEST(RunningSet, ToolsAreNamedTheWayUsersCallThemWhateverRunsThem) {
  const struct {
    const char* why;
    ProcessSample process;
    const char* expected;
  } cases[] = {
      {"npm retitles itself, so its whole title is one argument",
       process("node", "/usr/bin/node", {"npm run hold"}), "npm"},
      {"npm run through node by its script",
       process("node", "/usr/bin/node", {"node", "/usr/lib/node_modules/npm/bin/npm-cli.js", "ci"}),
       "npm"},
      {"npx by its script", process("node", "/usr/bin/node", {"node", "/x/npx-cli.js"}), "npx"},
      {"a pip script under a versioned python",
       process("python3.11", "/usr/bin/python3.11",
               {"/usr/bin/python3", "/usr/bin/pip3", "download"}),
       "pip3"},
      {"python -m pip after options with values",
       process("python3", "/usr/bin/python3.11",
               {"python3", "-u", "-W", "ignore", "-m", "pip", "install", "x"}),
       "pip"},
      {"python -mpip written as one argument",
       process("python3", "/usr/bin/python3", {"python3", "-mpip", "list"}), "pip"},
      {"Yarn 1 is a node script",
       process("node", "/usr/bin/node", {"node", "/usr/share/yarn/bin/yarn.js"}), "yarn"},
      {"Yarn 2+ runs a versioned release file",
       process("node", "/usr/bin/node", {"node", "/p/.yarn/releases/yarn-4.1.0.cjs", "install"}),
       "yarn"},
      {"Gradle's daemon is java with its main class",
       process("java", "/usr/lib/jvm/java-17/bin/java",
               {"java", "-Xmx512m", "-cp", "/g/lib/gradle-launcher-8.5.jar",
                "org.gradle.launcher.daemon.bootstrap.GradleDaemon", "8.5"}),
       "gradle"},
      {"Maven's launcher",
       process("java", "/usr/bin/java",
               {"/usr/bin/java", "-classpath", "/usr/share/maven/boot/x.jar",
                "-Dmaven.home=/usr/share/maven",
                "org.codehaus.plexus.classworlds.launcher.Launcher", "verify"}),
       "mvn"},
      {"a jar by its file name",
       process("java", "/usr/bin/java", {"java", "-jar", "/opt/sbt-launch.jar"}), "sbt-launch"},
      {"brew is a shell script",
       process("bash", "/usr/bin/bash",
               {"/bin/bash", "-p", "/home/linuxbrew/.linuxbrew/bin/brew", "up"}),
       "brew"},
      {"brew's Ruby half",
       process(
           "ruby", "/h/portable-ruby/3.3.0/bin/ruby",
           {"/h/bin/ruby", "-W1", "--disable=gems,rubyopt", "/h/Library/Homebrew/brew.rb", "up"}),
       "brew"},
      {"Bazel's server is named after its workspace",
       process("java", "/c/install/abc/embedded_tools/jdk/bin/java",
               {"bazel(myproject)", "-Xss20m"}),
       "bazel"},
      {"a process we may not read is known by its short name", process("firefox-esr", "", {}),
       "firefox-esr"},
      {"names are lower case", process("Discord", "/opt/discord/Discord", {}), "discord"},
      {"a login shell's leading dash", process("bash", "/usr/bin/bash", {"-bash"}), "bash"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const std::set<std::string> names = programNames(c.process);
    EXPECT_TRUE(names.contains(c.expected)) << ::testing::PrintToString(names);
  }
}

TEST(RunningSet, InlineCodeAndOptionValuesAreNotMistakenForPrograms) {
  const struct {
    const char* why;
    ProcessSample process;
    const char* absent;
  } cases[] = {
      {"python -c runs code, not the next word",
       process("python3", "/usr/bin/python3", {"python3", "-c", "import pip", "pip"}), "pip"},
      {"bash -c runs a command line", process("bash", "/bin/bash", {"bash", "-c", "pip install x"}),
       "pip install x"},
      {"node -r loads a module before the script",
       process("node", "/usr/bin/node", {"node", "-r", "/x/npm.js", "/srv/app.js"}), "npm"},
      {"java -cp takes the class path as its value",
       process("java", "/usr/bin/java", {"java", "-cp", "gradle", "Main"}), "gradle"},
      {"a program that is no interpreter keeps its arguments to itself",
       process("rsync", "/usr/bin/rsync", {"rsync", "/home/me/npm-cli.js", "/backup"}), "npm"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_FALSE(programNames(c.process).contains(c.absent))
        << ::testing::PrintToString(programNames(c.process));
  }
}

TEST(RunningSet, GathersEveryProcessAndItsAppButNoKernelThreads) {
  ProcessSample chrome = process("chrome", "/opt/google/chrome/chrome", {});
  chrome.app = AppIdentity{.id = "Google-Chrome", .name = "Google Chrome"};
  ProcessSample helper = process("chrome_crashpad", "/opt/google/chrome/chrome_crashpad", {});
  helper.app = AppIdentity{.id = ""};
  ProcessSample kworker = process("kworker/0:1", "", {});
  kworker.kernelThread = true;
  const RunningSet running = RunningSet::from({chrome, helper, kworker});
  EXPECT_EQ(running.bundleIDs, (std::set<std::string>{"google-chrome"}));
  EXPECT_EQ(running.names, (std::set<std::string>{"chrome", "chrome_crashpad"}));
}

}  // namespace
}  // namespace pellwin
