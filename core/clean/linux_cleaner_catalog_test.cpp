#include "core/clean/linux_cleaner_catalog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/space/folder_catalog.h"

namespace pellwin {
namespace {

std::vector<std::string> paths(const std::vector<CleanGroup>& groups, const std::string& id) {
  std::vector<std::string> out;
  for (const CleanGroup& g : groups) {
    if (g.id != id) continue;
    for (const CleanSource& s : g.sources) out.push_back(s.path);
  }
  return out;
}

std::optional<std::string> pathOf(const std::vector<CleanGroup>& groups, const std::string& title) {
  for (const CleanGroup& g : groups) {
    for (const CleanSource& s : g.sources) {
      if (s.title == title) return s.path;
    }
  }
  return std::nullopt;
}

const CleanGroup& groupWithID(const std::vector<CleanGroup>& groups, const std::string& id) {
  for (const CleanGroup& g : groups) {
    if (g.id == id) return g;
  }
  ADD_FAILURE() << "no group " << id;
  return groups.front();
}

bool has(const std::vector<std::string>& list, const std::string& value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

TEST(LinuxCleanerCatalog, SourcesStayInHomeAndWhatIsSlowToRebuildGoesToTheTrash) {
  // Indexes, build output and debug symbols take a while to make again: the user can still
  // get them back from the Trash.
  const std::map<std::string, CleanAction> actions = {{"developer-caches", CleanAction::delete_},
                                                      {"app-caches", CleanAction::delete_},
                                                      {"old-logs", CleanAction::delete_},
                                                      {"ide-caches", CleanAction::trash},
                                                      {"debug-symbols", CleanAction::trash}};
  for (const CleanGroup& group : LinuxCleanerCatalog::groups({.home = "/home/ann"})) {
    SCOPED_TRACE(group.id);
    ASSERT_TRUE(actions.contains(group.id));
    EXPECT_EQ(group.action, actions.at(group.id));
    for (const CleanSource& s : group.sources) {
      SCOPED_TRACE(s.path);
      EXPECT_FALSE(s.path.empty() || s.path.front() == '/' ||
                   s.path.find("..") != std::string::npos);
      // Folders that are costly to rebuild, and shared tool caches, must name who uses them.
      if (group.id == "developer-caches" || group.action == CleanAction::trash) {
        EXPECT_FALSE(s.tools.empty());
      }
    }
  }
}

TEST(LinuxCleanerCatalog, ToolFoldersFollowTheXdgVariablesWhereTheToolsDo) {
  const struct {
    const char* why;
    CleanerPlaces places;
    const char* title;
    std::optional<std::string> path;
  } cases[] = {
      {"pip in the default cache", {.home = "/home/ann"}, "pip cache", ".cache/pip"},
      {"pip in a moved cache",
       {.home = "/home/ann", .xdgCacheHome = "/home/ann/var/cache/"},
       "pip cache",
       "var/cache/pip"},
      {"a relative variable is ignored",
       {.home = "/home/ann", .xdgCacheHome = "cache"},
       "pip cache",
       ".cache/pip"},
      {"an empty variable is ignored",
       {.home = "/home/ann", .xdgCacheHome = ""},
       "pip cache",
       ".cache/pip"},
      {"a cache outside home is never cleaned",
       {.home = "/home/ann", .xdgCacheHome = "/var/tmp/c"},
       "pip cache",
       std::nullopt},
      {"a cache that is home itself is never cleaned",
       {.home = "/home/ann/", .xdgCacheHome = "/home/ann"},
       "pip cache",
       std::nullopt},
      {"a sibling whose name starts like home is outside it",
       {.home = "/home/ann", .xdgCacheHome = "/home/anna/.cache"},
       "pip cache",
       std::nullopt},
      {"a path that climbs out is not trusted",
       {.home = "/home/ann", .xdgCacheHome = "/home/ann/../bob/.cache"},
       "pip cache",
       std::nullopt},
      {"npm ignores the variables",
       {.home = "/home/ann", .xdgCacheHome = "/var/tmp/c"},
       "npm cache",
       ".npm/_cacache"},
      {"pnpm's store is data",
       {.home = "/home/ann", .xdgDataHome = "/home/ann/data"},
       "pnpm store",
       "data/pnpm/store"},
      {"JetBrains caches per IDE version",
       {.home = "/home/ann", .xdgCacheHome = "/home/ann/c"},
       "* caches",
       "c/JetBrains/*/caches"},
      {"debug symbols", {.home = "/home/ann"}, "debuginfod cache", ".cache/debuginfod_client"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(pathOf(LinuxCleanerCatalog::groups(c.places), c.title), c.path);
  }
}

TEST(LinuxCleanerCatalog, LogFoldersComeFromConfigDataAndFixedPlaces) {
  const auto standard = paths(LinuxCleanerCatalog::groups({.home = "/h"}), "old-logs");
  for (const char* path :
       {".config/Code/logs", ".cache/JetBrains/*/log", ".npm/_logs", ".cache/Homebrew/Logs",
        ".local/share/xorg", ".local/share/sddm", ".xsession-errors.old"}) {
    EXPECT_TRUE(has(standard, path)) << path;
  }
  const auto moved =
      paths(LinuxCleanerCatalog::groups(
                {.home = "/h", .xdgConfigHome = "/h/cfg", .xdgDataHome = "/elsewhere"}),
            "old-logs");
  EXPECT_TRUE(has(moved, "cfg/Code/logs"));
  EXPECT_FALSE(has(moved, ".local/share/xorg"));
  EXPECT_TRUE(has(moved, ".local/share/sddm")) << "SDDM ignores XDG_DATA_HOME";
}

TEST(LinuxCleanerCatalog, AppCachesLeaveOutOtherGroupsPortalsAndBaseFoldersInsideTheCache) {
  const auto groups = LinuxCleanerCatalog::groups(
      {.home = "/h", .xdgCacheHome = "/h/.local", .xdgStateHome = "/h/.local/state"});
  const CleanSource& caches = groupWithID(groups, "app-caches").sources.at(0);
  EXPECT_EQ(caches.path, ".local");
  EXPECT_TRUE(caches.eachChild);
  for (const char* name : {"pip", "homebrew", "jetbrains", "bazel", "debuginfod_client", "doc",
                           "gvfs", "huggingface", "share", "state"}) {
    EXPECT_TRUE(has(caches.excludeChildren, name)) << name;
  }
  const auto noCache = LinuxCleanerCatalog::groups({.home = "/h", .xdgCacheHome = "/tmp/c"});
  EXPECT_TRUE(groupWithID(noCache, "app-caches").sources.empty());
}

// The trash mover deletes for good only where the folder catalog says the contents rebuild,
// so every place this catalog deletes from must be cleanable there too.
TEST(LinuxCleanerCatalog, EverythingDeletedForGoodIsCleanableInTheFolderCatalog) {
  const std::string home = "/home/ann";
  for (const CleanGroup& group : LinuxCleanerCatalog::groups({.home = home})) {
    if (group.action != CleanAction::delete_) continue;
    for (const CleanSource& source : group.sources) {
      std::string path = home + "/" + source.path;
      for (auto star = path.find('*'); star != std::string::npos; star = path.find('*')) {
        path.replace(star, 1, "IntelliJIdea2025.2");
      }
      if (source.eachChild) path += "/some-child";
      EXPECT_TRUE(FolderCatalog::isCleanable(path, home)) << group.id << ": " << path;
    }
  }
}

// Moved base folders: whatever quick clean deletes for good in them, the folder catalog calls
// cleanable once the path is spelled in the standard place, as the trasher judges it.
TEST(LinuxCleanerCatalog, EverythingDeletedForGoodInMovedBasesIsCleanableInTheStandardPlace) {
  const std::string home = "/home/ann";
  const CleanerPlaces places{.home = home,
                             .xdgCacheHome = "/home/ann/var/cache/",
                             .xdgConfigHome = "/home/ann/etc",
                             .xdgDataHome = "/home/ann/data",
                             .xdgStateHome = "/home/ann/.local/state"};
  const auto moved = LinuxCleanerCatalog::movedBases(places);
  const std::vector<MovedFolder> expected = {
      {.actual = "/home/ann/var/cache", .standard = "/home/ann/.cache"},
      {.actual = "/home/ann/etc", .standard = "/home/ann/.config"},
      {.actual = "/home/ann/data", .standard = "/home/ann/.local/share"}};
  EXPECT_EQ(moved, expected) << "the state folder is in its standard place";
  EXPECT_EQ(LinuxCleanerCatalog::standardPath("/home/ann/var/cache", moved), "/home/ann/var/cache");
  EXPECT_EQ(LinuxCleanerCatalog::standardPath("/home/ann/var/cachet/x", moved),
            "/home/ann/var/cachet/x");
  EXPECT_TRUE(LinuxCleanerCatalog::movedBases({.home = home, .xdgCacheHome = "/tmp/c"}).empty());

  int checked = 0;
  for (const CleanGroup& group : LinuxCleanerCatalog::groups(places)) {
    if (group.action != CleanAction::delete_) continue;
    for (const CleanSource& source : group.sources) {
      std::string path = home + "/" + source.path;
      if (source.eachChild) path += "/some-child";
      const std::string standard = LinuxCleanerCatalog::standardPath(path, moved);
      checked += standard != path;
      EXPECT_TRUE(FolderCatalog::isCleanable(standard, home)) << group.id << ": " << path;
    }
  }
  EXPECT_GT(checked, 3);
}

}  // namespace
}  // namespace pellwin
