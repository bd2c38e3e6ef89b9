#include "probe/system/bundle_identifier_cache.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

// A small desktop: two data folders, a shared program folder and a few apps installed the
// way their packages install them.
struct Desktop {
  testing::ScratchFolder root;
  std::string at(std::string_view relative) const { return (root / relative).string(); }
  void program(std::string_view relative) const {
    root.write(relative, "#!/bin/sh\n");
    fs::permissions(root / relative, fs::perms::owner_all);
  }
  void entry(std::string_view relative, const std::string& text) const {
    root.write(relative, "[Desktop Entry]\nType=Application\n" + text);
  }
  DesktopSources sources() const {
    return DesktopSources{.dataDirs = {root / "home/share", root / "usr/share"},
                          .searchPath = {root / "bin"},
                          .locale = "de_DE.UTF-8"};
  }

  Desktop() {
    program("opt/google/chrome/google-chrome");
    program("opt/google/chrome/chrome");
    program("opt/google/chrome/chrome_crashpad_handler");
    program("bin/vlc");
    program("bin/dolphin");
    fs::create_symlink(root / "opt/google/chrome/google-chrome", root / "bin/google-chrome-stable");
    entry("usr/share/applications/google-chrome.desktop",
          "Name=Google Chrome\nExec=" + at("bin/google-chrome-stable") +
              " %U\nCategories=Network;WebBrowser;\n");
    entry("usr/share/applications/chrome-abc-Default.desktop",
          "Name=Some Web App\nExec=" + at("opt/google/chrome/chrome") +
              " --profile-directory=Default --app-id=abc\n");

    program("usr/share/code/code");
    entry("usr/share/applications/code.desktop",
          "Name=Visual Studio Code\nExec=" + at("usr/share/code/code") +
              " %F\nStartupWMClass=Code\nCategories=TextEditor;Development;IDE;\n");
    entry("usr/share/applications/code-url-handler.desktop",
          "Name=Visual Studio Code - URL Handler\nNoDisplay=true\nExec=" +
              at("usr/share/code/code") + " --open-url %U\n");

    // Debian's Chromium: a wrapper script in the shared folder, the browser elsewhere.
    program("bin/chromium");
    program("usr/lib/chromium/chromium");
    program("usr/lib/chromium/chrome_crashpad_handler");
    entry("usr/share/applications/chromium.desktop",
          "Name=Chromium\nExec=chromium %U\nStartupWMClass=chromium\n");

    program("bin/python3");
    program("bin/meld");
    entry("usr/share/applications/org.gnome.Meld.desktop",
          "Name=Meld\nExec=python3 " + at("bin/meld") + " %F\n");

    entry("usr/share/applications/com.slack.Slack.desktop",
          "Name=Slack\nX-Flatpak=com.slack.Slack\nExec=/usr/bin/flatpak run --branch=stable "
          "--command=slack com.slack.Slack @@u %U @@\n");
    entry("usr/share/applications/firefox_firefox.desktop",
          "Name=Firefox\nX-SnapInstanceName=firefox\nExec=env BAMF_DESKTOP_FILE_HINT=x "
          "/snap/bin/firefox %u\n");

    entry("usr/share/applications/org.gnome.Nautilus.desktop",
          "Name=Files\nName[de]=Dateien\nExec=nautilus --new-window %U\n");
    entry("home/share/applications/org.gnome.Nautilus.desktop",
          "Name=My Files\nExec=nautilus --new-window %U\n");
    entry("home/share/applications/vlc.desktop", "Hidden=true\n");
    entry("usr/share/applications/vlc.desktop", "Name=VLC\nExec=vlc %U\n");
    entry("usr/share/applications/ghost.desktop",
          "Name=Not Installed\nTryExec=" + at("nowhere/ghost") + "\nExec=ghost\n");
    entry("usr/share/applications/kde4/dolphin.desktop", "Name=Dolphin\nExec=dolphin\n");
    entry("usr/share/applications/obsidian.desktop",
          "Name=Obsidian Notes\nExec=" + at("home/Apps/Obsidian-1.4.16.AppImage") + " %U\n");
    root.write("usr/share/applications/notes.txt", "not an entry");
    entry("usr/share/applications/link.desktop", "Type=Link\nName=A Link\n");
  }
};

std::string appId(const std::optional<AppIdentity>& app) { return app ? app->id : "(none)"; }

TEST(BundleIdentifierCache, NamesTheAppOfEachKindOfProcess) {
  Desktop desktop;
  BundleIdentifierCache cache(desktop.sources());
  const std::string appScope =
      "/user.slice/user-1000.slice/user@1000.service/app.slice/app-gnome-code-4567.scope";
  const struct {
    const char* why;
    ProcessFacts facts;
    const char* id;
  } cases[] = {
      {"Chrome's browser by its install folder",
       {.executable = desktop.at("opt/google/chrome/chrome"), .arguments = {"chrome"}},
       "google-chrome"},
      {"Chrome's crash handler, double-forked to init",
       {.executable = desktop.at("opt/google/chrome/chrome_crashpad_handler")},
       "google-chrome"},
      {"VS Code by its executable, not the hidden URL handler",
       {.executable = desktop.at("usr/share/code/code")},
       "code"},
      {"a language server in VS Code's scope",
       {.executable = desktop.at("bin/python3"),
        .arguments = {"python3", "-m", "pylsp"},
        .cgroup = appScope},
       "code"},
      {"a shell with a terminal in VS Code's scope is a command-line program",
       {.executable = desktop.at("bin/python3"),
        .arguments = {"python3"},
        .controllingTerminal = true,
        .cgroup = appScope},
       "(none)"},
      {"a shell in a terminal tab's scope",
       {.executable = "/bin/bash", .cgroup = appScope + "/vte-spawn-a1b2.scope"},
       "(none)"},
      {"Chromium by its program name",
       {.executable = desktop.at("usr/lib/chromium/chromium")},
       "chromium"},
      {"Meld, a Python script",
       {.executable = desktop.at("bin/python3"), .arguments = {"python3", desktop.at("bin/meld")}},
       "org.gnome.Meld"},
      {"Meld from a relative script path",
       {.executable = desktop.at("bin/python3"),
        .arguments = {"python3", "-O", "meld"},
        .workingDirectory = desktop.at("bin")},
       "org.gnome.Meld"},
      {"a Flatpak by its scope, whatever its sandbox path",
       {.executable = "/app/bin/slack",
        .cgroup = "/user.slice/app-flatpak-com.slack.Slack-12.scope"},
       "com.slack.Slack"},
      {"a Flatpak by its sandbox info, with no entry",
       {.executable = "/app/bin/tool", .flatpakId = "org.example.Tool"},
       "org.example.Tool"},
      {"a Snap by its scope",
       {.executable = "/snap/firefox/4000/usr/lib/firefox/firefox",
        .cgroup = "/user.slice/snap.firefox.firefox-2b9c7b35-4c3e-4d0f-9a0b-2f8a51d2c1aa.scope"},
       "firefox_firefox"},
      {"an AppImage with an entry",
       {.executable = "/tmp/.mount_Obsidi1/obsidian",
        .appImage = desktop.at("home/Apps/Obsidian-1.4.16.AppImage")},
       "obsidian"},
      {"an AppImage without one",
       {.executable = "/tmp/.mount_Foo2/foo", .appImage = "/home/u/Foo-2.0-x86_64.AppImage"},
       "Foo"},
      {"Chrome's own scope name, through the alias table",
       {.executable = "/somewhere/else/chrome-beta",
        .cgroup = "/user.slice/app-com.google.Chrome-11254.scope"},
       "google-chrome"},
      {"a D-Bus activated app",
       {.cgroup = "/user.slice/app.slice/dbus-:1.2-org.gnome.Nautilus@7.service"},
       "org.gnome.Nautilus"},
      {"an entry in a subfolder", {.comm = "dolphin"}, "kde4-dolphin"},
      {"a masked entry", {.executable = desktop.at("bin/vlc")}, "(none)"},
      {"an entry whose TryExec is missing", {.comm = "ghost"}, "(none)"},
      {"a system service",
       {.executable = "/usr/sbin/cron", .cgroup = "/system.slice/cron.service"},
       "(none)"},
      {"an unresolvable app scope",
       {.executable = "/usr/bin/tool", .cgroup = "/user.slice/app-gnome-unknown-1.scope"},
       "(none)"},
      {"a helper of an app, with nothing of its own to tell",
       {.executable = "/usr/bin/tool", .parentApp = AppIdentity{.id = "code"}},
       "code"},
      {"a helper that is an app of its own",
       {.executable = desktop.at("usr/lib/chromium/chromium"),
        .parentApp = AppIdentity{.id = "code"}},
       "chromium"},
      {"a helper in another app's scope",
       {.executable = "/usr/bin/tool", .cgroup = appScope, .parentApp = AppIdentity{.id = "x"}},
       "code"},
      {"a terminal's shell is never its terminal's helper",
       {.executable = "/bin/bash",
        .controllingTerminal = true,
        .parentApp = AppIdentity{.id = "org.gnome.Terminal"}},
       "(none)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(appId(cache.identity(c.facts, 1000)), c.id);
  }
}

TEST(BundleIdentifierCache, GivesTheEntrysNameCategoriesAndFile) {
  Desktop desktop;
  BundleIdentifierCache cache(desktop.sources());
  const auto code = cache.identity({.executable = desktop.at("usr/share/code/code")}, 0);
  EXPECT_EQ(code, (AppIdentity{.id = "code",
                               .name = "Visual Studio Code",
                               .entryPath = desktop.at("usr/share/applications/code.desktop"),
                               .categories = {"TextEditor", "Development", "IDE"}}));
  // The first data folder wins, and its Name is the one shown.
  const auto files = cache.identity("org.gnome.Nautilus.desktop");
  ASSERT_TRUE(files.has_value());
  EXPECT_EQ(files->name, "My Files");
  EXPECT_EQ(cache.identity("vlc"), std::nullopt);
}

TEST(BundleIdentifierCache, LearnsAnAppsFolderFromAProgramFoundByName) {
  Desktop desktop;
  BundleIdentifierCache cache(desktop.sources());
  const ProcessFacts crashpad{.executable = desktop.at("usr/lib/chromium/chrome_crashpad_handler")};
  EXPECT_EQ(cache.identity(crashpad, 0), std::nullopt);
  const auto before = cache.generation();
  EXPECT_EQ(appId(cache.identity({.executable = desktop.at("usr/lib/chromium/chromium")}, 0)),
            "chromium");
  EXPECT_GT(cache.generation(), before);  // callers ask again about their misses
  EXPECT_EQ(appId(cache.identity(crashpad, 0)), "chromium");
}

TEST(BundleIdentifierCache, ReadsTheEntriesAgainOnlyWhenTheirFoldersChanged) {
  Desktop desktop;
  BundleIdentifierCache cache(desktop.sources());
  const ProcessFacts gimp{.comm = "gimp"};
  EXPECT_EQ(cache.identity(gimp, 1000), std::nullopt);
  const auto before = cache.generation();

  desktop.entry("home/share/applications/gimp.desktop", "Name=GIMP\nExec=gimp %U\n");
  EXPECT_EQ(cache.identity(gimp, 1029), std::nullopt);  // not looked at again yet
  EXPECT_EQ(cache.generation(), before);
  EXPECT_EQ(appId(cache.identity(gimp, 1030)), "gimp");
  EXPECT_GT(cache.generation(), before);
  EXPECT_EQ(cache.identity("gimp")->name, "GIMP");

  // Nothing changed: the index stays, and so does the generation.
  const auto after = cache.generation();
  EXPECT_EQ(appId(cache.identity(gimp, 1100)), "gimp");
  EXPECT_EQ(cache.generation(), after);
}

TEST(BundleIdentifierCache, WorksWithoutAnyDesktopEntries) {
  BundleIdentifierCache cache(DesktopSources{});
  EXPECT_EQ(cache.identity({.executable = "/usr/bin/firefox"}, 0), std::nullopt);
  EXPECT_EQ(appId(cache.identity({.cgroup = "/app-flatpak-org.gimp.GIMP-3.scope"}, 0)),
            "org.gimp.GIMP");
  EXPECT_EQ(cache.identity("anything"), std::nullopt);
}

}  // namespace
}  // namespace pellwin
