#include "probe/system/cgroup_unit.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace pellwin {
namespace {

using Kind = CgroupUnit::Kind;

TEST(ParseUnitName, FindsTheAppIdThatLaunchersWrite) {
  const struct {
    const char* unit;
    Kind kind;
    const char* id;  // must be among the candidates
  } cases[] = {
      {R"(app-gnome-org.gnome.Evolution\x2dalarm\x2dnotify-2437.scope)", Kind::app,
       "org.gnome.Evolution-alarm-notify"},
      {"app-flatpak-com.slack.Slack-12345.scope", Kind::flatpak, "com.slack.Slack"},
      {"app-org.kde.konsole@0a1b2c3d4e5f.service", Kind::app, "org.kde.konsole"},
      {R"(app-org.gnome.Evolution\x2dalarm\x2dnotify@autostart.service)", Kind::app,
       "org.gnome.Evolution-alarm-notify"},
      {"app-gnome-code-autostart.service", Kind::app, "code"},
      {"app-com.google.Chrome-11254.scope", Kind::app, "com.google.Chrome"},
      {R"(app-gnome-google\x2dchrome-4242.scope)", Kind::app, "google-chrome"},
      {R"(app-Hyprland-google\x2dchrome\x2dstable-8fdeb60e.scope)", Kind::app,
       "google-chrome-stable"},
      {"app-gnome-code-4567.scope", Kind::app, "code"},
      {"app-desktop-plus-1234.scope", Kind::app, "plus"},  // Electron's unescaped dashes
      {"app-desktop-plus-1234.scope", Kind::app, "desktop-plus"},
      {"app-org.gnome.Terminal.slice", Kind::app, "org.gnome.Terminal"},
      {R"(app-dbus\x2d:1.37\x2dorg.a11y.atspi.Registry.slice)", Kind::dbus,
       "org.a11y.atspi.Registry"},
      {"dbus-:1.2-org.kde.kdeconnect@7.service", Kind::dbus, "org.kde.kdeconnect"},
      {"snap.firefox.firefox-2b9c7b35-4c3e-4d0f-9a0b-2f8a51d2c1aa.scope", Kind::snap,
       "firefox_firefox"},
      {R"(snap.signal\x2ddesktop.signal\x2ddesktop-1b2c3d4e-aaaa-bbbb-cccc-000011112222.scope)",
       Kind::snap, "signal-desktop_signal-desktop"},
      {"snap.docker.dockerd.service", Kind::snap, "docker_dockerd"},
      {"snap.lxd.hook.configure-0f1e2d3c-aaaa-bbbb-cccc-000011112222.scope", Kind::snap, "lxd"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.unit);
    const auto unit = parseUnitName(c.unit);
    EXPECT_EQ(unit.kind, c.kind);
    EXPECT_NE(std::find(unit.ids.begin(), unit.ids.end(), c.id), unit.ids.end())
        << (unit.ids.empty() ? "no candidates" : unit.ids.front());
  }
  EXPECT_EQ(parseUnitName("app-gnome-code-4567.scope").ids.front(), "code");
  for (const char* terminal :
       {"vte-spawn-1f2e3d4c.scope", "tab(4242).scope", "run-r5d2a.scope", "session-3.scope"}) {
    SCOPED_TRACE(terminal);
    EXPECT_EQ(parseUnitName(terminal).kind, Kind::terminal);
  }
  for (const char* none : {"user@1000.service", "app.slice", "system.slice", "cron.service",
                           "session-x.scope", "app-.scope", ""}) {
    SCOPED_TRACE(none);
    EXPECT_EQ(parseUnitName(none).kind, Kind::none);
  }
}

TEST(InnermostUnit, StopsAtTheFirstTellingComponentFromTheLeaf) {
  EXPECT_EQ(innermostUnit("/user.slice/user-1000.slice/user@1000.service/app.slice/"
                          "app-org.gnome.Terminal.slice/vte-spawn-a1b2.scope")
                .kind,
            Kind::terminal);
  const auto konsoleTab = innermostUnit(
      "/user.slice/user-1000.slice/user@1000.service/app.slice/"
      "app-org.kde.konsole@0a1b.service/tab(4242).scope");
  EXPECT_EQ(konsoleTab.kind, Kind::terminal);
  const auto nautilus = innermostUnit(
      "/user.slice/user-1000.slice/user@1000.service/app.slice/"
      "app-gnome-org.gnome.Nautilus-4242.scope");
  EXPECT_EQ(nautilus.ids.front(), "org.gnome.Nautilus");
  EXPECT_EQ(innermostUnit("/system.slice/cron.service").kind, Kind::none);
  EXPECT_EQ(innermostUnit("/").kind, Kind::none);
}

TEST(ParseCgroupPath, PrefersTheUnifiedHierarchy) {
  EXPECT_EQ(parseCgroupPath("0::/user.slice/a.scope\n"), "/user.slice/a.scope");
  // Hybrid: the unified line says "/" while the systemd hierarchy has the real path.
  EXPECT_EQ(parseCgroupPath("12:pids:/x\n1:name=systemd:/user.slice/b.scope\n0::/\n"),
            "/user.slice/b.scope");
  EXPECT_EQ(parseCgroupPath("4:memory:/x\n"), "");
}

TEST(UnescapeUnitName, TurnsHexEscapesIntoBytes) {
  EXPECT_EQ(unescapeUnitName(R"(google\x2dchrome)"), "google-chrome");
  EXPECT_EQ(unescapeUnitName(R"(caf\xc3\xa9)"), "café");
  EXPECT_EQ(unescapeUnitName(R"(cut\x2)"), R"(cut\x2)");
  EXPECT_EQ(unescapeUnitName(R"(bad\xzz)"), R"(bad\xzz)");
}

}  // namespace
}  // namespace pellwin
