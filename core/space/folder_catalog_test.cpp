#include "core/space/folder_catalog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "core/space/folder_catalog_rows.h"

namespace pellwin {
namespace {

constexpr std::string_view kHome = "/home/ann";

TEST(FolderCatalog, ClassifiesByTheDeepestMatch) {
  const struct {
    const char* why;
    std::string path;
    StorageCategory category;
    bool cleanable;
  } cases[] = {
      {"deeper row beats Library/Caches", "/home/ann/Library/Caches/Homebrew/downloads",
       StorageCategory::developer, true},
      {"Library/Caches itself", "/home/ann/Library/Caches/com.example", StorageCategory::other,
       true},
      {"anywhere row inside an unknown folder", "/home/ann/code/app/node_modules/x",
       StorageCategory::developer, true},
      {"anywhere row deeper than a fixed row", "/home/ann/Documents/app/node_modules",
       StorageCategory::developer, true},
      {"anywhere row inside a cleanable folder", "/home/ann/.local/share/Trash/files/p/.git",
       StorageCategory::developer, false},
      {"history folder is not cleanable", "/home/ann/code/app/.git/objects",
       StorageCategory::developer, false},
      {"Library inside /System", "/System/Library", StorageCategory::system, false},
      {"outside home, no absolute row", "/srv/data", StorageCategory::system, false},
      {"anywhere rows do not reach outside home", "/srv/app/node_modules", StorageCategory::system,
       false},
      {"unknown folder in home", "/home/ann/Notes", StorageCategory::other, false},
      {"home itself", "/home/ann", StorageCategory::other, false},
      {"component match, not string prefix", "/home/ann/Documentsx", StorageCategory::other, false},
      {"case matters on Linux", "/home/ann/documents", StorageCategory::other, false},
      {"the Linux Trash", "/home/ann/.local/share/Trash/files/a", StorageCategory::other, true},
      {"XDG cache, Linux wording", "/home/ann/.cache/thumbnails", StorageCategory::other, true},
      {"Tovrin's data folder", "/home/ann/.local/share/Tovrin/history.sqlite",
       StorageCategory::appData, false},
      {"Flatpak app data", "/home/ann/.var/app/org.gimp.GIMP", StorageCategory::appData, false},
      {"Maven repository", "/home/ann/.m2/repository/org", StorageCategory::developer, true},
      {"Maven settings", "/home/ann/.m2/settings.xml", StorageCategory::developer, false},
      {"system logs", "/var/log/journal", StorageCategory::system, false},
      {"Docker's system folder", "/var/lib/docker/overlay2", StorageCategory::system, false},
      {"trailing and doubled slashes", "/home//ann/.cache/", StorageCategory::other, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(FolderCatalog::category(c.path, kHome), c.category);
    EXPECT_EQ(FolderCatalog::isCleanable(c.path, kHome), c.cleanable);
  }
}

TEST(FolderCatalog, HomeInsideAnAbsoluteRowStillUsesHomeRows) {
  // A service account's home under /var: the home row lies deeper than /var.
  EXPECT_EQ(FolderCatalog::category("/var/lib/svc/.cache/x", "/var/lib/svc"),
            StorageCategory::other);
  EXPECT_TRUE(FolderCatalog::isCleanable("/var/lib/svc/.cache/x", "/var/lib/svc"));
  EXPECT_FALSE(FolderCatalog::isCleanable("/var/lib/svc/data", "/var/lib/svc"));
}

TEST(FolderCatalog, WhereHomeLiesDoesNotClassifyWhatIsInside) {
  EXPECT_EQ(FolderCatalog::category("/var/home/ann/code", "/var/home/ann"), StorageCategory::other);
  EXPECT_EQ(FolderCatalog::category("/var/home/ann", "/var/home/ann"), StorageCategory::other);
  EXPECT_EQ(FolderCatalog::category("/var/home/bob", "/var/home/ann"), StorageCategory::system);
  EXPECT_EQ(FolderCatalog::explanation("/var/home/ann", "/var/home/ann"), std::nullopt);
}

TEST(FolderCatalog, ExplainsOnlyTheFolderItself) {
  EXPECT_EQ(FolderCatalog::explanation("/home/ann/.ssh", kHome),
            "Your keys for signing in to servers. Never remove these");
  EXPECT_EQ(FolderCatalog::explanation("/home/ann/.ssh/id_ed25519", kHome), std::nullopt);
  EXPECT_EQ(FolderCatalog::explanation("/home/ann/x/node_modules", kHome),
            "Packages a JavaScript project downloaded. npm or pnpm installs them again");
  EXPECT_EQ(FolderCatalog::explanation("/home/ann/x/node_modules/y", kHome), std::nullopt);
  EXPECT_EQ(FolderCatalog::explanation("/home/ann/.local/share/Tovrin", kHome),
            "Tovrin's own history. Clear it from Settings");
  EXPECT_EQ(FolderCatalog::explanation("/home/ann/Notes", kHome), std::nullopt);
  EXPECT_EQ(FolderCatalog::explanation("/usr", kHome),
            "Programs and files that the system's packages install");
}

TEST(FolderCatalog, BestNamesTheWinningRow) {
  auto entry = FolderCatalog::best("/home/ann/.config/google-chrome/Default", kHome);
  ASSERT_TRUE(entry.has_value());
  EXPECT_EQ(entry->path, ".config/google-chrome");
  EXPECT_EQ(FolderCatalog::best("/home/ann/Notes", kHome), std::nullopt);
}

TEST(FolderCatalog, RowsStayWithinTheLookupDepthAndNoneHidesAnotherOfItsTable) {
  // Lookups split paths only this deep below home.
  for (const auto& entry : FolderCatalog::entries()) {
    EXPECT_LE(std::count(entry.path.begin(), entry.path.end(), '/'), 7) << entry.path;
  }
  // Equal matches go to the earlier row, so a second row for a folder in the same table would
  // never be found; an anywhere row is compared with one folder name at a time.
  for (const auto table : {FolderCatalog::linuxRows(), FolderCatalog::macosRows()}) {
    std::set<std::string_view> paths;
    for (const auto& entry : table) {
      EXPECT_TRUE(paths.insert(entry.path).second) << entry.path;
      EXPECT_FALSE(entry.explanation.empty()) << entry.path;
      if (entry.anywhere) {
        EXPECT_EQ(entry.path.find('/'), std::string_view::npos) << entry.path;
      }
    }
  }
}

// Every path below the given one by one more component, as a walk meets them.
std::vector<std::string> prefixes(const std::string& path) {
  std::vector<std::string> found;
  for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
    found.push_back(path.substr(0, at));
  }
  found.push_back(path);
  return found;
}

TEST(CategoryTrail, GivesEveryPathDownATreeTheCategoryItsWholePathGets) {
  const std::string home = "/home/ann";
  std::vector<std::string> paths;
  // Every row, deep below it, and inside anywhere rows nested in other rows.
  for (const FolderEntry& row : FolderCatalog::entries()) {
    const std::string at = row.anywhere                ? home + "/code/x/" + std::string(row.path)
                           : row.path.starts_with('/') ? std::string(row.path)
                                                       : home + "/" + std::string(row.path);
    paths.push_back(at + "/a/b/c/d/e/f/g/h/i/j/node_modules/k/l");
    paths.push_back(at + "/.cache/m");
  }
  paths.push_back("/var/home/ann/x");
  paths.push_back("/home/an/x/y");
  paths.push_back("/home/ann");
  for (const std::string& path : paths) {
    SCOPED_TRACE(path);
    const auto steps = prefixes(path);
    FolderCatalog::CategoryTrail trail(steps.front(), home);
    EXPECT_EQ(trail.category(), FolderCatalog::category(steps.front(), home));
    for (std::size_t i = 1; i < steps.size(); ++i) {
      trail = trail.below(std::string_view(steps[i]).substr(steps[i - 1].size() + 1));
      ASSERT_EQ(trail.category(), FolderCatalog::category(steps[i], home)) << steps[i];
    }
  }
}

}  // namespace
}  // namespace pellwin
