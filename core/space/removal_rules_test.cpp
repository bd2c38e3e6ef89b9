#include "core/space/removal_rules.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "core/base/data_folder.h"

namespace pellwin {
namespace {

struct Case {
  const char* why;
  std::string path;
  const char* reason;  // nullptr: allowed
};

void expectRefusals(std::string_view home, const RemovalGuards& guards,
                    const std::vector<Case>& cases) {
  const auto split = RemovalRules::split(guards);
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.why) + ": " + c.path);
    const auto refused = RemovalRules::refusal(c.path, home, split);
    if (c.reason == nullptr) {
      EXPECT_EQ(refused, std::nullopt);
    } else {
      EXPECT_EQ(refused, RemovalRefusal{.reason = c.reason});
    }
  }
}

constexpr const char* outside = "It's outside your home folder";
constexpr const char* invalid = "The path isn't valid";
constexpr const char* allApps =
    "It holds data for all your apps. Open it and pick one app's folder";
constexpr const char* keys = "It holds your passwords and keys";
constexpr const char* trash = "It's your Trash";
constexpr const char* needed = "Tovrin needs it to run";

TEST(RemovalRules, RefusesWithTheSentenceOfTheFirstRuleThatMatchesOnTheMacLayout) {
  const std::string home = "/Users/ann";
  expectRefusals(
      home, {.kept = DataFolder::protectedPaths(home, home + "/.local/share")},
      {
          {"home itself", "/Users/ann", "It's your home folder"},
          {"a main folder", "/Users/ann/Documents", "It's one of your main folders"},
          {"inside a main folder", "/Users/ann/Documents/old", nullptr},
          {"another user's file", "/Users/bob/x", outside},
          {"above home", "/Users", outside},
          {"climbing out", "/Users/ann/../bob", invalid},
          {"the Trash", "/Users/ann/.Trash", trash},
          {"inside the Trash", "/Users/ann/.Trash/old.txt", trash},
          {"ssh keys", "/Users/ann/.ssh/known_hosts", "It holds your security keys"},
          {"gpg keys", "/Users/ann/.gnupg", "It holds your security keys"},
          {"ssh only at the top", "/Users/ann/project/.ssh", nullptr},
          {"the data folder", "/Users/ann/Library/Application Support/Tovrin", needed},
          {"inside the former data folder", "/Users/ann/Library/Application Support/Pellwin/x",
           needed},
          {"keychains", "/Users/ann/Library/Keychains/x", keys},
          {"a system folder", "/Users/ann/Library/Biome", "macOS needs it to run"},
          {"all containers", "/Users/ann/Library/Containers", allApps},
          {"an Apple app's data", "/Users/ann/Library/Containers/com.apple.mail",
           "It's part of macOS. Deleting it can break built-in apps"},
          {"an Apple group", "/Users/ann/Library/Group Containers/group.com.apple.notes",
           "It's part of macOS. Deleting it can break built-in apps"},
          {"an ordinary app's data", "/Users/ann/Library/Containers/com.example.app", nullptr},
          {"Library itself", "/Users/ann/Library", "It's one of your main folders"},
          {"caches as a whole", "/Users/ann/Library/Caches", nullptr},
          {"case does not hide a rule", "/Users/ann/LIBRARY/keychains", keys},
      });
}

TEST(RemovalRules, AddsTheLinuxProtectionsWithTheSameSentences) {
  const std::string home = "/home/ann";
  expectRefusals(
      home,
      {.kept = DataFolder::protectedPaths(home, home + "/.local/share"),
       .mainFolders = {"/home/ann/Schreibtisch", "/home/ann/Media/Musik", "/data/Bilder"}},
      {
          {"XDG Videos", "/home/ann/Videos", "It's one of your main folders"},
          {"a localised user folder", "/home/ann/Schreibtisch/", "It's one of your main folders"},
          {"its case does not hide it", "/home/ann/SCHREIBTISCH", "It's one of your main folders"},
          {"inside it", "/home/ann/Schreibtisch/notes.txt", nullptr},
          {"a user folder moved deeper", "/home/ann/Media/Musik", "It's one of your main folders"},
          {"the folder holding it is another rule's", "/home/ann/Media", nullptr},
          {"a user folder outside home", "/data/Bilder", outside},
          {"XDG Templates", "/home/ann/Templates", "It's one of your main folders"},
          {"inside Videos", "/home/ann/Videos/holiday.mp4", nullptr},
          {"the home trash", "/home/ann/.local/share/Trash", trash},
          {"inside the home trash", "/home/ann/.local/share/Trash/files/x", trash},
          {"a volume trash in home", "/home/ann/usb/.Trash-1000", trash},
          {"inside a sticky volume trash", "/home/ann/usb/.Trash/1000/files/a", trash},
          {"not a trash name", "/home/ann/usb/.Trash-old", nullptr},
          {"NSS keys", "/home/ann/.pki/nssdb", keys},
          {"GNOME keyring", "/home/ann/.local/share/keyrings", keys},
          {"inside the keyring", "/home/ann/.local/share/keyrings/login.keyring", keys},
          {"pass", "/home/ann/.password-store", keys},
          {"KDE wallet", "/home/ann/.local/share/kwalletd", keys},
          {"cloud credentials", "/home/ann/.config/gcloud/credentials.db", keys},
          {"git credentials file", "/home/ann/.git-credentials", keys},
          {"all settings", "/home/ann/.config", allApps},
          {"all local", "/home/ann/.local", allApps},
          {"all app data", "/home/ann/.local/share", allApps},
          {"all app state", "/home/ann/.local/state", allApps},
          {"flatpak apps", "/home/ann/.var/app", allApps},
          {"flatpak root", "/home/ann/.var", allApps},
          {"one app's settings", "/home/ann/.config/gimp", nullptr},
          {"one app's data", "/home/ann/.local/share/gnome-shell", nullptr},
          {"one flatpak app", "/home/ann/.var/app/org.mozilla.firefox", nullptr},
          {"the caches as a whole", "/home/ann/.cache", nullptr},
          {"the data folder", "/home/ann/.local/share/Tovrin", needed},
          {"the former data folder", "/home/ann/.local/share/Pellwin/history.sqlite", needed},
          {"a lookalike of the data folder", "/home/ann/.local/share/Tovrin2", nullptr},
          {"macOS rules stay", "/home/ann/Library/Keychains", keys},
      });
}

TEST(RemovalRules, NeverAllowsAPathOutsideHomeWhateverItsSpelling) {
  expectRefusals("/home/ann", {},
                 {
                     {"double slashes", "//home//ann//", "It's your home folder"},
                     {"dot parts", "/home/./ann/.", "It's your home folder"},
                     {"trailing slash on a main folder", "/home/ann/Documents/",
                      "It's one of your main folders"},
                     {"climbing back in", "/home/ann/x/../Music", invalid},
                     {"climbing at the end", "/home/ann/x/..", invalid},
                     {"mixed case is another folder on Linux", "/HOME/ann/notes", outside},
                     {"mixed case of the user", "/home/Ann/notes", outside},
                     {"a prefix that is not a component", "/home/anna/notes", outside},
                     {"relative spelling", "home/ann/notes", invalid},
                     {"empty", "", invalid},
                     {"the root", "/", outside},
                     {"NUL hides the rest", std::string("/home/ann/\0/x", 12), invalid},
                     {"a plain file inside", "/home/ann/notes.txt", nullptr},
                 });
  // A home that is the root or relative would make everything look inside it.
  for (const char* home : {"/", "", "home/ann", "/home/ann/.."}) {
    SCOPED_TRACE(home);
    EXPECT_EQ(RemovalRules::refusal("/etc/passwd", home, {}), RemovalRefusal{.reason = outside});
    EXPECT_EQ(RemovalRules::refusal("/home/ann/x", home, {}), RemovalRefusal{.reason = outside});
  }
  // An empty protected path is a caller's mistake: it refuses everything rather than nothing.
  EXPECT_EQ(RemovalRules::refusal("/home/ann/x", "/home/ann", {.kept = {{}}}),
            RemovalRefusal{.reason = needed});
}

TEST(RemovalRules, VerdictRefusesLinksAndTestsTheResolvedPathToo) {
  const std::string home = "/home/ann";
  const RemovalGuards guards{.kept = {"/home/ann/.local/share/Tovrin"},
                             .mainFolders = {"/home/ann/Dokumente"}};
  const struct {
    const char* why;
    const char* path;
    bool isSymlink;
    std::optional<std::string_view> resolved;
    const char* reason;
  } cases[] = {
      {"a link to anywhere", "/home/ann/notes", true, std::nullopt,
       "It's a shortcut to somewhere else"},
      {"a link to a harmless file", "/home/ann/a", true, "/home/ann/b",
       "It's a shortcut to somewhere else"},
      {"resolves outside home", "/home/ann/mnt/x", false, "/etc/x", outside},
      {"resolves into the data folder", "/home/ann/data", false, "/home/ann/.local/share/Tovrin",
       needed},
      {"resolves to a main folder", "/home/ann/docs", false, "/home/ann/Documents",
       "It's one of your main folders"},
      {"resolves to a localised main folder", "/home/ann/papers", false, "/home/ann/Dokumente",
       "It's one of your main folders"},
      {"the path's own refusal comes first", "/home/ann/.ssh", false, "/etc",
       "It holds your security keys"},
      {"resolves inside home", "/home/ann/link/x", false, "/home/ann/real/x", nullptr},
      {"no resolved path", "/home/ann/x", false, std::nullopt, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const auto refused = RemovalRules::verdict(c.path, home, c.isSymlink, c.resolved, guards);
    if (c.reason == nullptr) {
      EXPECT_EQ(refused, std::nullopt);
    } else {
      EXPECT_EQ(refused, RemovalRefusal{.reason = c.reason});
    }
  }
}

TEST(RemovalRules, ComponentsDropEmptyAndDotPartsAndLowerCase) {
  EXPECT_EQ(RemovalRules::components("//Home/./Ann//Library/"),
            (std::vector<std::string>{"home", "ann", "library"}));
  EXPECT_EQ(RemovalRules::components("/a/../B"), (std::vector<std::string>{"a", "..", "b"}));
  EXPECT_TRUE(RemovalRules::components("/").empty());
}

}  // namespace
}  // namespace pellwin

namespace pellwin {
namespace {

// Whatever a path's spelling, an allowed path lies strictly inside home once "." and ".." are
// worked out; checked against the standard library's own lexical normalisation.
TEST(RemovalRules, AnAllowedPathIsAlwaysStrictlyInsideHomeForManyGeneratedSpellings) {
  const std::string home = "/home/ann";
  const std::vector<std::string> words = {
      "home",   "ann",       "Ann",     "HOME", "anna",    "..",     ".",
      "",       "Documents", "docs",    "x",    ".ssh",    ".local", "share",
      "Tovrin", "Trash",     ".config", "app",  "Library", "bob",    std::string("\0", 1),
      "a b",    "\xff"};
  const auto guards =
      RemovalRules::split({.kept = DataFolder::protectedPaths(home, home + "/.local/share"),
                           .mainFolders = {"/home/ann/Documents/x"}});
  std::mt19937 random(7);
  int allowed = 0;
  for (int round = 0; round < 40000; ++round) {
    std::string path = random() % 10 == 0 ? "" : "/";
    if (random() % 2 == 0) path += "home/ann/";
    const int parts = static_cast<int>(random() % 6);
    for (int i = 0; i < parts; ++i) {
      path += words[random() % words.size()];
      path += random() % 8 == 0 ? "//" : "/";
    }
    if (random() % 2 == 0 && !path.empty()) path.pop_back();
    if (RemovalRules::refusal(path, home, guards)) continue;
    ++allowed;
    SCOPED_TRACE(path);
    ASSERT_EQ(path.find('\0'), std::string::npos);
    const std::string normal = std::filesystem::path(path).lexically_normal().string();
    ASSERT_TRUE(normal.starts_with(home + "/")) << normal;
    ASSERT_GT(normal.size(), home.size() + 1);
  }
  EXPECT_GT(allowed, 200);  // the generator reaches allowed paths, so the check above bites
}

}  // namespace
}  // namespace pellwin
