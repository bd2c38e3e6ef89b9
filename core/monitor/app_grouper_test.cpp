#include "core/monitor/app_grouper.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "core/monitor/process_catalog.h"

namespace pellwin {
namespace {

ProcessSample process(std::int32_t pid, std::string name, std::string path,
                      std::vector<std::string> arguments = {}) {
  return ProcessSample{.pid = pid,
                       .name = std::move(name),
                       .path = std::move(path),
                       .arguments = std::move(arguments)};
}

AppIdentity desktopApp(std::string id, std::string name, std::vector<std::string> categories) {
  return AppIdentity{.id = std::move(id),
                     .name = std::move(name),
                     .entryPath = "/usr/share/applications/x.desktop",
                     .categories = std::move(categories)};
}

// Groups samples as the snapshot builder would, each with the CPU given beside it.
struct Grouping {
  std::deque<ProcessSample> samples;  // stable addresses for the usages
  std::vector<ProcessUsage> usages;

  Grouping& add(ProcessSample sample, double cpuCores = 0) {
    samples.push_back(std::move(sample));
    usages.push_back({.sample = &samples.back(), .cpuCores = cpuCores});
    return *this;
  }
  std::vector<AppUsage> group(const AppGrouper::BundleIdentifierLookup& lookup = {}) const {
    return AppGrouper::group(usages, lookup);
  }
};

const AppUsage* find(const std::vector<AppUsage>& apps, std::string_view id) {
  for (const AppUsage& app : apps) {
    if (app.id == id) return &app;
  }
  return nullptr;
}

TEST(AppGrouper, FoldsEveryHelperOfABundleIncludingNestedHelperApps) {
  const std::string chrome = "/Applications/Google Chrome.app";
  Grouping g;
  g.add(process(10, "Google Chrome", chrome + "/Contents/MacOS/Google Chrome"), 0.5)
      .add(process(11, "Google Chrome Helper",
                   chrome + "/Contents/Frameworks/Helpers/Google Chrome Helper.app/Contents/"
                            "MacOS/Google Chrome Helper"),
           0.25)
      .add(process(12, "Google Chrome Helper (GPU)",
                   chrome + "/Contents/Frameworks/Helpers/Google Chrome Helper (GPU).app/"
                            "Contents/MacOS/Google Chrome Helper (GPU)"),
           0.25);
  g.samples[0].footprintBytes = 100;
  g.samples[1].footprintBytes = 20;
  g.samples[2].footprintBytes = 3;
  g.samples[0].parentPid = 1;
  g.samples[1].parentPid = 10;
  g.samples[2].parentPid = 10;

  const auto apps = g.group([](std::string_view path) -> std::optional<std::string> {
    if (path == "/Applications/Google Chrome.app") return "com.google.Chrome";
    return std::nullopt;
  });
  ASSERT_EQ(apps.size(), 1u);
  const AppUsage& app = apps[0];
  EXPECT_EQ(app.id, "app:/Applications/Google Chrome.app");
  EXPECT_EQ(app.name, "Google Chrome");
  EXPECT_EQ(app.category, AppCategory::browsers);
  EXPECT_EQ(app.bundlePath, chrome);
  EXPECT_EQ(app.bundleIdentifier, "com.google.Chrome");
  EXPECT_EQ(app.processCount, 3);
  EXPECT_EQ(app.pids, (std::vector<std::int32_t>{10, 11, 12}));
  EXPECT_EQ(app.parentPids, (std::vector<std::int32_t>{1, 10, 10}));
  EXPECT_EQ(app.footprintBytes, 123u);
  EXPECT_DOUBLE_EQ(app.cpuCores, 1.0);
  EXPECT_FALSE(app.detail.has_value());
}

TEST(AppGrouper, FoldsADesktopAppButShowsItsScriptsAndSystemPartsOnTheirOwn) {
  const AppIdentity code = desktopApp("code", "Visual Studio Code", {"TextEditor", "Development"});
  Grouping g;
  g.add(process(20, "code", "/usr/share/code/code"), 0.1)
      .add(process(21, "code", "/usr/share/code/code", {"/usr/share/code/code", "--type=gpu"}))
      .add(process(22, "node", "/usr/bin/node", {"node", "server.js"}), 0.3)
      .add(process(23, "python3.11", "/usr/bin/python3.11", {"python3", "lint.py"}));
  for (auto& sample : g.samples) sample.app = code;
  g.add(process(30, "gnome-shell", "/usr/bin/gnome-shell"));
  g.samples.back().app = desktopApp("org.gnome.Shell", "GNOME Shell", {"GNOME", "GTK", "Core"});

  const auto apps = g.group();
  ASSERT_EQ(apps.size(), 4u);
  const AppUsage* app = find(apps, "app:code");
  ASSERT_NE(app, nullptr);
  EXPECT_EQ(app->name, "Visual Studio Code");
  EXPECT_EQ(app->bundleIdentifier, "code");
  EXPECT_EQ(app->bundlePath, "/usr/share/applications/x.desktop");
  EXPECT_EQ(app->category, AppCategory::developer);
  EXPECT_EQ(app->processCount, 2);

  const AppUsage* node = find(apps, "pid:22");
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->detail, "node server.js");
  EXPECT_EQ(node->category, AppCategory::developer);
  ASSERT_NE(find(apps, "pid:23"), nullptr);
  EXPECT_EQ(find(apps, "pid:23")->detail, "python3.11 lint.py");

  const AppUsage* shell = find(apps, "proc:gnome-shell");
  ASSERT_NE(shell, nullptr);
  EXPECT_EQ(shell->name, "GNOME desktop");
  EXPECT_EQ(shell->category, AppCategory::system);
  EXPECT_TRUE(shell->explanation.has_value());
  EXPECT_FALSE(shell->bundleIdentifier.has_value());
}

TEST(AppGrouper, ScriptsShowOneByOneAndToolsFoldByName) {
  Grouping g;
  g.add(process(1, "python3.12", "/usr/bin/python3.12", {"python3", "train.py"}))
      .add(process(2, "python3.12", "/usr/bin/python3.12", {"python3", "serve.py"}))
      .add(process(3, "git", "/usr/bin/git", {"git", "fetch"}))
      .add(process(4, "git", "/usr/bin/git", {"git", "gc"}));
  g.samples[0].workingDirectory = "/home/ada/model";
  const auto apps = g.group();
  ASSERT_EQ(apps.size(), 3u);
  EXPECT_EQ(find(apps, "pid:1")->detail, "python3.12 train.py");
  EXPECT_EQ(find(apps, "pid:1")->workingDirectory, "/home/ada/model");
  EXPECT_EQ(find(apps, "pid:2")->detail, "python3.12 serve.py");
  const AppUsage* git = find(apps, "proc:git");
  ASSERT_NE(git, nullptr);
  EXPECT_EQ(git->processCount, 2);
  EXPECT_EQ(git->name, "git");
  EXPECT_FALSE(git->detail.has_value());
  EXPECT_EQ(git->category, AppCategory::other);
}

TEST(AppGrouper, KeysFollowTheRulesInOrder) {
  const struct {
    const char* why;
    ProcessSample sample;
    const char* key;
  } cases[] = {
      {"framework Python inside an app bundle is on its own",
       process(5, "Python",
               "/Applications/Tool.app/Contents/Frameworks/Python.framework/Versions/3.11/bin/"
               "python3.11"),
       "pid:5"},
      {"the Python.app stub is not a framework Python",
       process(6, "Python",
               "/Library/Frameworks/Python.framework/Versions/3.11/Resources/Python.app/"
               "Contents/MacOS/Python"),
       "app:/Library/Frameworks/Python.framework/Versions/3.11/Resources/Python.app"},
      {"a known macOS part inside a bundle under /System",
       process(7, "photolibraryd",
               "/System/Library/CoreServices/Photos Agent.app/Contents/MacOS/photolibraryd"),
       "proc:photolibraryd"},
      {"a bundle that merely sits under /System is still an app",
       process(8, "Safari", "/System/Applications/Safari.app/Contents/MacOS/Safari"),
       "app:/System/Applications/Safari.app"},
      {"an interpreter without a bundle", process(9, "node", "/usr/bin/node"), "pid:9"},
      {"python3.x counts as an interpreter", process(10, "python3.13", "/usr/bin/python3.13"),
       "pid:10"},
      {"a command-line tool", process(11, "cc1plus", "/usr/lib/gcc/x86_64-linux-gnu/12/cc1plus"),
       "proc:cc1plus"},
      {"another user's daemon whose name the kernel cut to 15 characters",
       process(12, "systemd-journal", "", {"/usr/lib/systemd/systemd-journald"}),
       "proc:systemd-journald"},
      {"a user's own build of a catalogued name is just a tool",
       process(13, "pipewire", "/home/ada/src/pipewire/build/pipewire"), "proc:pipewire"},
      {"the same name from the distribution is the system part",
       process(14, "gsd-media-keys", "/usr/libexec/gsd-media-keys"), "proc:gsd"},
      {"/usr/local is the user's, not the system's",
       process(15, "gsd-power", "/usr/local/libexec/gsd-power"), "proc:gsd-power"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(AppGrouper::key(c.sample), c.key);
  }
}

TEST(AppGrouper, KernelThreadsFoldIntoTheirFamiliesAndTheRestIntoTheKernel) {
  Grouping g;
  const char* threads[] = {"kworker/u16:2+flush-259:0",
                           "kworker/3:1H-kblockd",
                           "kswapd0",
                           "rcu_preempt",
                           "migration/0",
                           "jbd2/nvme0n1p2-8",
                           "kcompactd0",
                           "khugepaged",
                           "ksoftirqd/0",
                           "irq/9-acpi"};
  std::int32_t pid = 100;
  for (const char* name : threads) {
    g.add(process(pid++, name, ""));
    g.samples.back().kernelThread = true;
  }
  // Not a kernel thread: a program that happens to be called like one stays itself.
  g.add(process(200, "kworker/evil", "/home/ada/kworker/evil"));

  const auto apps = g.group();
  std::map<std::string, std::pair<std::string, int>> byKey;
  for (const AppUsage& app : apps) byKey[app.id] = {app.name, app.processCount};
  const std::map<std::string, std::pair<std::string, int>> expected = {
      {"proc:kworker", {"Kernel workers", 2}},
      {"proc:kswapd", {"Memory reclaimer", 1}},
      {"proc:kthreadd", {"Linux kernel", 2}},
      {"proc:jbd2", {"File system", 1}},
      {"proc:kworker/evil", {"kworker/evil", 1}},
      // Families that show the same name are one entry.
      {"proc:kcompactd", {"Memory defragmenter", 2}},
      {"proc:ksoftirqd", {"Interrupt handling", 2}},
  };
  EXPECT_EQ(byKey, expected);
  for (const AppUsage& app : apps) {
    SCOPED_TRACE(app.id);
    EXPECT_EQ(app.category,
              app.id == "proc:kworker/evil" ? AppCategory::other : AppCategory::system);
  }
}

TEST(AppGrouper, CommandLinesCollapseBlanksAndCutLongOnesAtWholeCharacters) {
  const auto line = [](std::vector<std::string> arguments, std::string path = "/usr/bin/node") {
    return AppGrouper::commandLine(process(1, "node", std::move(path), std::move(arguments)));
  };
  EXPECT_EQ(line({"node", "  a\tb\n", "c"}), "node a b c");
  EXPECT_EQ(line({"ignored-argv0"}), "node");
  EXPECT_EQ(line({"node", "x"}, ""), "node x") << "no path: the process name";

  // "node " is 5 characters; the argument fills the rest.
  const std::string exact = line({"node", std::string(155, 'a')});
  EXPECT_EQ(exact.size(), 160u) << "160 characters stay whole";
  const std::string cut = line({"node", std::string(156, 'a')});
  EXPECT_EQ(cut, "node " + std::string(154, 'a') + "…");

  // Two-byte characters: 160 of them stay, 161 are cut after the 159th, never mid-character.
  std::string wide;
  for (int i = 0; i < 155; ++i) wide += "é";
  EXPECT_EQ(line({"node", wide}), "node " + wide);
  const std::string cutWide = line({"node", wide + "é"});
  EXPECT_EQ(cutWide, "node " + wide.substr(0, 154 * 2) + "…");
}

TEST(AppGrouper, SortsBusiestFirstThenByMemoryKeepingTheOrderOfEquals) {
  Grouping g;
  g.add(process(1, "a", "/usr/bin/a"), 0.0)
      .add(process(2, "b", "/usr/bin/b"), 0.5)
      .add(process(3, "c", "/usr/bin/c"), 0.0)
      .add(process(4, "d", "/usr/bin/d"), 0.0)
      .add(process(5, "e", "/usr/bin/e"), 0.0);
  g.samples[0].footprintBytes = 10;
  g.samples[2].footprintBytes = 30;
  g.samples[3].footprintBytes = 10;
  const auto apps = g.group();
  std::vector<std::string> order;
  for (const AppUsage& app : apps) order.push_back(app.name);
  EXPECT_EQ(order, (std::vector<std::string>{"b", "c", "a", "d", "e"}));
}

TEST(ProcessCatalog, CategoriesFollowTheirRulesInOrder) {
  const std::vector<std::string> none;
  const std::vector<std::string> konsole = {"Qt", "KDE", "System", "TerminalEmulator"};
  const std::vector<std::string> browser = {"Network", "WebBrowser"};
  const struct {
    const char* why;
    AppCategory actual;
    AppCategory expected;
  } cases[] = {
      {"the name table comes first",
       ProcessCatalog::category("Slack", "slack", "/usr/lib/slack/slack", false, true, browser),
       AppCategory::communication},
      {"then the desktop entry, by category priority rather than file order",
       ProcessCatalog::category("Konsole", "konsole", "/usr/bin/konsole", false, false, konsole),
       AppCategory::developer},
      {"a browser's entry",
       ProcessCatalog::category("Firefox Web Browser", "firefox", "/usr/lib/firefox/firefox", false,
                                false, browser),
       AppCategory::browsers},
      {"an interpreter", ProcessCatalog::category("ruby", "ruby", "/usr/bin/ruby", false, false),
       AppCategory::developer},
      {"a framework Python", ProcessCatalog::category("Python", "Python", "/x", true, false),
       AppCategory::developer},
      {"the web content override beats the system part",
       ProcessCatalog::category("Web page", "com.apple.WebKit.WebContent", "/System/x", false,
                                true),
       AppCategory::browsers},
      {"a system part", ProcessCatalog::category("Bluetooth", "bluetoothd", "", false, true),
       AppCategory::system},
      {"compiler internals are developer tools",
       ProcessCatalog::category("cc1plus", "cc1plus", "/usr/lib/gcc/x86_64-linux-gnu/12/cc1plus",
                                false, false),
       AppCategory::developer},
      {"gcc under libexec is developer before libexec is system",
       ProcessCatalog::category("cc1", "cc1", "/usr/libexec/gcc/x86_64-redhat-linux/13/cc1", false,
                                false),
       AppCategory::developer},
      {"a helper under libexec",
       ProcessCatalog::category("foo-helper", "foo-helper", "/usr/libexec/foo-helper", false,
                                false),
       AppCategory::system},
      {"a tool in /usr/bin is the user's",
       ProcessCatalog::category("yes", "yes", "/usr/bin/yes", false, false, none),
       AppCategory::other},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.actual, c.expected);
  }
}

}  // namespace
}  // namespace pellwin
