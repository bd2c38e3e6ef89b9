#include "core/monitor/quit_policy.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>

namespace pellwin {
namespace {

constexpr std::int32_t ownPID = 4242;

AppUsage app(std::string id, std::string name, std::vector<std::int32_t> pids,
             AppCategory category = AppCategory::other) {
  return AppUsage{.id = std::move(id),
                  .name = std::move(name),
                  .category = category,
                  .processCount = static_cast<int>(pids.size()),
                  .pids = std::move(pids)};
}

TEST(QuitPolicy, RefusesInOrderWithItsSentence) {
  const std::string systemPart =
      " is part of macOS. Quitting it can log you out or it starts again straight away.";
  AppUsage withCommandLine = app("proc:Xorg", "Display server", {900});
  AppUsage ownScript = app("pid:4242", "python3", {ownPID}, AppCategory::system);
  AppUsage detailOnly = app("pid:77", "Helper", {77});
  detailOnly.detail = "Xorg";
  const struct {
    const char* why;
    AppUsage app;
    std::optional<std::string> expected;
  } cases[] = {
      {"no processes, even for a system part", app("proc:Finder", "Finder", {}, AppCategory::system),
       "Tovrin can't tell which processes belong to Finder."},
      {"the program itself comes before the category", ownScript,
       "This is Tovrin. Use Quit Tovrin in the menu bar panel."},
      {"own pid among several", app("app:tovrin", "Tovrin", {1, ownPID, 3}),
       "This is Tovrin. Use Quit Tovrin in the menu bar panel."},
      {"a system category", app("proc:kworker/", "Kernel workers", {5}, AppCategory::system),
       "Kernel workers" + systemPart},
      {"an essential by name", app("app:finder", "Finder", {10}), "Finder" + systemPart},
      {"an essential by command line", detailOnly, "Helper" + systemPart},
      {"a Linux essential by the process name in its key", withCommandLine,
       "Display server" + systemPart},
      {"a cut name of a longer essential", app("proc:gnome-session-b", "gnome-session-b", {12}),
       "gnome-session-b" + systemPart},
      {"an ordinary app", app("app:firefox", "Firefox", {20, 21}), std::nullopt},
      {"a command-line tool", app("proc:make", "make", {30}), std::nullopt},
      {"a name that only begins like an essential", app("proc:systemd-run", "systemd-run", {31}),
       std::nullopt},
      {"an app key that spells an essential is not a process name",
       app("app:Xorg-viewer", "Viewer", {32}), std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(QuitPolicy::refusal(c.app, ownPID), c.expected);
  }
}

TEST(QuitPolicy, EveryLinuxEssentialSaysWhyOnceInOneSentence) {
  std::set<std::string_view> seen;
  for (const EssentialProcess& e : QuitPolicy::linuxEssentials()) {
    SCOPED_TRACE(std::string(e.name));
    EXPECT_TRUE(seen.insert(e.name).second);
    EXPECT_TRUE(e.why.ends_with(".")) << e.why;
    EXPECT_EQ(e.why.find(". "), std::string_view::npos) << e.why;
    EXPECT_TRUE(QuitPolicy::isEssential(e.name));
  }
  for (const char* name : {"gnome-shell", "kwin_wayland", "Xorg", "Xwayland", "plasmashell",
                           "xfce4-panel", "dbus-daemon", "systemd", "gdm", "sddm", "lightdm"}) {
    EXPECT_TRUE(seen.contains(name)) << name;
  }
}

}  // namespace
}  // namespace pellwin
