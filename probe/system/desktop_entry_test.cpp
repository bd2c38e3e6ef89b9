#include "probe/system/desktop_entry.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

using Strings = std::vector<std::string>;

TEST(ParseDesktopEntry, ReadsTheMainGroupWithLocalisedName) {
  const char* text =
      "# comment\n"
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Name=Files\n"
      "Name[de]=Dateien\n"
      "Name[de_AT]=Dateien (AT)\n"
      "Name[fr]=Fichiers\n"
      "Exec=nautilus --new-window %U\n"
      "Categories=GNOME;GTK;Utility;Core;FileManager\\;Special;\n"
      "StartupWMClass=org.gnome.Nautilus\n"
      "NoDisplay=false\n"
      "Exec=ignored --second-time\n"
      "\n"
      "[Desktop Action new-window]\n"
      "Name=New Window\n"
      "Exec=nautilus --new-window\n";
  const struct {
    const char* locale;
    const char* name;
  } locales[] = {{"", "Files"},
                 {"C", "Files"},
                 {"de_DE.UTF-8", "Dateien"},
                 {"de_AT.UTF-8@euro", "Dateien (AT)"},
                 {"fr_CA", "Fichiers"},
                 {"ja_JP.UTF-8", "Files"}};
  for (const auto& l : locales) {
    SCOPED_TRACE(l.locale);
    const auto entry = parseDesktopEntry(text, l.locale);
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->name, l.name);
  }
  const auto entry = parseDesktopEntry(text, "");
  EXPECT_EQ(entry->type, "Application");
  EXPECT_EQ(entry->exec, (Strings{"nautilus", "--new-window"}));
  EXPECT_EQ(entry->categories, (Strings{"GNOME", "GTK", "Utility", "Core", "FileManager;Special"}));
  EXPECT_EQ(entry->startupWMClass, "org.gnome.Nautilus");
  EXPECT_FALSE(entry->noDisplay);
  EXPECT_FALSE(parseDesktopEntry("[Desktop Action x]\nName=y\n", "").has_value());
  EXPECT_FALSE(parseDesktopEntry("", "").has_value());
  EXPECT_TRUE(parseDesktopEntry("[Desktop Entry]\nHidden=true", "")->hidden);
}

TEST(SplitExec, FollowsTheQuotingRules) {
  const struct {
    const char* why;
    const char* exec;
    Strings arguments;
  } cases[] = {
      {"field codes go", "code --unity-launch %F", {"code", "--unity-launch"}},
      {"quotes group and escape",
       R"("/opt/My App/run" --title "say \"hi\" \$HOME")",
       {"/opt/My App/run", "--title", R"(say "hi" $HOME)"}},
      {"%% is a percent sign", "printf 100%%", {"printf", "100%"}},
      {"runs of spaces", "  a   b  ", {"a", "b"}},
      {"an empty quoted argument", R"(a "" b)", {"a", "", "b"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(splitExec(c.exec), c.arguments);
  }
}

TEST(LaunchTarget, TakesOffLaunchersAndRecognisesSandboxes) {
  using Kind = LaunchTarget::Kind;
  const struct {
    const char* why;
    const char* exec;
    LaunchTarget target;
  } cases[] = {
      {"plain", "/usr/bin/gimp-2.10 %U", {.arguments = {"/usr/bin/gimp-2.10"}}},
      {"env with variables", "env GDK_BACKEND=x11 -u FOO slack %U", {.arguments = {"slack"}}},
      {"sh -c",
       R"(sh -c "exec /opt/foo/foo --bar")",
       {.arguments = {"exec", "/opt/foo/foo", "--bar"}}},
      {"nice with a value", "nice -n 5 blender", {.arguments = {"blender"}}},
      {"flatpak run",
       "/usr/bin/flatpak run --branch=stable --arch=x86_64 --command=slack com.slack.Slack @@u %U "
       "@@",
       {.kind = Kind::flatpak, .sandboxId = "com.slack.Slack"}},
      {"snap bin",
       "env BAMF_DESKTOP_FILE_HINT=/var/lib/snapd/desktop/applications/firefox_firefox.desktop "
       "/snap/bin/firefox %u",
       {.kind = Kind::snap, .sandboxId = "firefox"}},
      {"snap run", "snap run spotify", {.kind = Kind::snap, .sandboxId = "spotify"}},
      {"nothing left", "env A=b", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(launchTarget(splitExec(c.exec)), c.target);
  }
}

TEST(IsGenericProgramName, IgnoresVersionSuffixes) {
  for (const char* name : {"python3", "python3.11", "electron33", "bash", "env", "java", "node"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(isGenericProgramName(name));
  }
  for (const char* name : {"code", "firefox-esr", "chrome", "gimp-2.10", "python-app", ""}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(isGenericProgramName(name));
  }
}

}  // namespace
}  // namespace pellwin
