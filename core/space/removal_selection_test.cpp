#include "core/space/removal_selection.h"

#include <gtest/gtest.h>

#include "core/base/data_folder.h"

namespace pellwin {
namespace {

const std::string home = "/home/ann";

SizeNode file(const std::string& path, std::uint64_t bytes) {
  return {.name = path.substr(path.rfind('/') + 1), .path = path, .bytes = bytes};
}

SizeNode folder(const std::string& path, std::vector<SizeNode> children,
                std::optional<std::vector<std::string>> markers = std::nullopt) {
  std::uint64_t bytes = 0;
  for (const SizeNode& child : children) bytes += child.bytes;
  return {.name = path.substr(path.rfind('/') + 1),
          .path = path,
          .bytes = bytes,
          .isDirectory = true,
          .children = std::move(children),
          .markers = std::move(markers)};
}

SizeNode locked(const std::string& path) {
  SizeNode node = folder(path, {});
  node.isLocked = true;
  return node;
}

RemovalGuards extras() {
  return {.kept = DataFolder::protectedPaths(home, home + "/.local/share"),
          .mainFolders = {"/home/ann/Media/Bilder"}};
}

std::vector<std::string> paths(const RemovalSelection& selection) {
  std::vector<std::string> out;
  for (const SizeNode& item : selection.items()) out.push_back(item.path);
  return out;
}

TEST(RemovalSelection, RefusesLockedNodesRuleBreakersAndFoldersHoldingThem) {
  const struct {
    const char* why;
    SizeNode node;
    std::optional<std::string> reason;
  } cases[] = {
      {"locked", locked("/home/ann/secret"),
       "macOS keeps it private. Allow whole-disk scan to see and delete it"},
      {"a rule", folder("/home/ann/Pictures", {}), "It's one of your main folders"},
      {"Library is a main folder", folder("/home/ann/Library", {}),
       "It's one of your main folders"},
      {"an app's folder, whatever its case", folder("/home/ann/.LOCAL/share/x", {}), std::nullopt},
      {".ssh is only protected at the top of home",
       folder("/home/ann/backup",
              {folder("/home/ann/backup/stuff", {file("/home/ann/backup/stuff/f", 5)}),
               folder("/home/ann/backup/.ssh", {})}),
       std::nullopt},
      {"holds the Linux trash",
       folder("/home/ann/old-home", {folder("/home/ann/old-home/.Trash-1000", {})}),
       "It holds .Trash-1000, which Tovrin keeps safe"},
      {"a locked folder below is tested by its path but not entered",
       folder("/home/ann/proj", {locked("/home/ann/proj/private")}), std::nullopt},
      {"a file", file("/home/ann/movie.mkv", 9), std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const auto refused = RemovalSelection::refusal(c.node, home, extras());
    EXPECT_EQ(refused ? std::optional(refused->reason) : std::nullopt, c.reason);
  }
  // A protected path or a main folder below the node, whether or not the tree shows it.
  const RemovalGuards custom{.kept = {"/home/ann/data/Tovrin"},
                             .mainFolders = {"/home/ann/Media/Bilder"}};
  EXPECT_EQ(RemovalSelection::refusal(folder("/home/ann/Data", {}), home, custom),
            RemovalRefusal{.reason = "It holds Tovrin, which Tovrin keeps safe"});
  EXPECT_EQ(RemovalSelection::refusal(folder("/home/ann/dat", {}), home, custom), std::nullopt);
  EXPECT_EQ(RemovalSelection::refusal(folder("/home/ann/media", {}), home, custom),
            RemovalRefusal{.reason = "It holds Bilder, which Tovrin keeps safe"});
  EXPECT_EQ(RemovalSelection::refusal(folder("/home/ann/Media/Bilder", {}), home, custom),
            RemovalRefusal{.reason = "It's one of your main folders"});
  EXPECT_EQ(RemovalSelection::refusal(folder("/home/ann/Media/Bilder/2024", {}), home, custom),
            std::nullopt);
}

TEST(RemovalSelection, NeverHoldsOneItemInsideAnotherSoNothingCountsTwice) {
  const SizeNode b = file("/home/ann/a/b", 3'000'000);
  const SizeNode c = file("/home/ann/a/c", 2'000'000);
  const SizeNode a = folder("/home/ann/a", {b, c});
  const SizeNode ab = file("/home/ann/ab", 1'000'000);  // a name that merely starts like "a"

  RemovalSelection selection;
  EXPECT_EQ(selection.add(b, home, extras()), std::nullopt);
  EXPECT_EQ(selection.add(ab, home, extras()), std::nullopt);
  EXPECT_EQ(selection.add(a, home, extras()), std::nullopt);
  EXPECT_EQ(paths(selection), (std::vector<std::string>{"/home/ann/ab", "/home/ann/a"}));
  EXPECT_EQ(selection.totalBytes(), 6'000'000u);

  EXPECT_EQ(selection.add(c, home, extras()), std::nullopt);  // covered: nothing changes
  EXPECT_EQ(selection.count(), 2u);
  EXPECT_EQ(paths(RemovalSelection{selection}), paths(selection));
  ASSERT_EQ(selection.covering(c).size(), 1u);
  EXPECT_EQ(selection.covering(c)[0].path, "/home/ann/a");
  EXPECT_TRUE(selection.covering(file("/home/ann/abc", 1)).empty());

  EXPECT_EQ(selection.toggle(a, home, extras()), std::nullopt);
  EXPECT_EQ(paths(selection), (std::vector<std::string>{"/home/ann/ab"}));
  EXPECT_EQ(selection.add(folder("/home/ann/Music", {}), home, extras()),
            RemovalRefusal{.reason = "It's one of your main folders"});
  EXPECT_EQ(selection.count(), 1u);
  selection.clear();
  EXPECT_TRUE(selection.isEmpty());
}

TEST(RemovalSelection, ReconcileKeepsWhatStillExistsAndPassesWithItsNewSize) {
  RemovalSelection selection;
  const SizeNode tree = folder(home, {folder("/home/ann/a", {file("/home/ann/a/x", 4'000'000)}),
                                      file("/home/ann/b", 2'000'000), folder("/home/ann/c", {})});
  for (const SizeNode& child : tree.children)
    ASSERT_EQ(selection.add(child, home, extras()), std::nullopt);

  // After the rescan "a" grew, "b" is gone, and "c" now holds keys.
  const SizeNode rescanned = folder(
      home,
      {folder("/home/ann/a", {file("/home/ann/a/x", 4'000'000), file("/home/ann/a/y", 1'000'000)}),
       folder("/home/ann/c", {folder("/home/ann/c/.Trash", {})})});
  selection.reconcile(rescanned, home, extras());
  EXPECT_EQ(paths(selection), (std::vector<std::string>{"/home/ann/a"}));
  EXPECT_EQ(selection.totalBytes(), 5'000'000u);
}

TEST(RemovalSelection, CautionsComeInOrderEachOnce) {
  const SizeNode project =
      folder("/home/ann/code/site",
             {folder("/home/ann/code/site/.git", {}),
              folder("/home/ann/code/site/sub", {folder("/home/ann/code/site/sub/.git", {})}),
              locked("/home/ann/code/site/private")},
             std::vector<std::string>{"package.json"});
  EXPECT_EQ(
      RemovalSelection::cautions(project, home, std::nullopt),
      (std::vector<std::string>{
          "Deleting this JavaScript project deletes its code too, not only the parts that can be "
          "rebuilt.",
          "This is the project's change history. Your code stays, but past versions are lost.",
          std::string(RemovalSelection::privateInsideCaution)}));
  EXPECT_TRUE(RemovalSelection::cautions(file("/home/ann/x.iso", 1), home, std::nullopt).empty());
}

TEST(RemovalRules, CautionWarnsAboutLibrariesHistoryAndAnAppsOwnData) {
  const auto appData = [](const std::string& app) {
    return app + " keeps its data here. Deleting it resets " + app +
           ", so you may lose its settings, sign-ins or saved work. Quit " + app + " first.";
  };
  const struct {
    const char* why;
    const char* path;
    std::optional<std::string_view> appName;
    std::optional<std::string> warning;
  } cases[] = {
      {"Photos", "/home/ann/Pictures/Photos Library.photoslibrary/x", std::nullopt,
       "This is your Photos library. Deleting it removes your photos from the Photos app."},
      {"Music", "/home/ann/Music/Music Library.musiclibrary", std::nullopt,
       "This is your Music library. Deleting it removes your songs from the Music app."},
      {"OrbStack", "/home/ann/.orbstack/data", std::nullopt,
       "OrbStack keeps its machines and containers here. Deleting it removes them."},
      {"history", "/home/ann/code/.git", std::nullopt,
       "This is the project's change history. Your code stays, but past versions are lost."},
      {"iCloud", "/home/ann/Library/Mobile Documents/com~apple~CloudDocs/a", std::nullopt,
       "This is in iCloud Drive. Deleting it also removes it from iCloud on your other devices."},
      {"a Mac app by bundle id", "/home/ann/Library/Containers/com.example.Notes", std::nullopt,
       appData("Notes")},
      {"a Mac app the catalog names", "/home/ann/Library/Application Support/Google/Chrome/Default",
       std::nullopt, appData("Chrome")},
      {"the caller names the app", "/home/ann/Library/Containers/com.example.app", "Example",
       appData("Example")},
      {"a Linux app's settings", "/home/ann/.config/google-chrome", std::nullopt,
       appData("Chrome")},
      {"a Linux app the catalog doesn't know", "/home/ann/.local/share/gnome-boxes/images",
       std::nullopt, appData("Gnome Boxes")},
      {"a Flatpak app", "/home/ann/.var/app/org.mozilla.firefox", std::nullopt, appData("Firefox")},
      {"a snap", "/home/ann/snap/spotify", std::nullopt, appData("Spotify")},
      {"the desktop's own folder", "/home/ann/.local/share/fonts/x.ttf", std::nullopt,
       std::nullopt},
      {"plain files", "/home/ann/Documents/a.txt", std::nullopt, std::nullopt},
      {"outside home", "/etc/.config/x", std::nullopt, std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(RemovalRules::caution(c.path, home, c.appName), c.warning);
  }
  EXPECT_EQ(RemovalRules::appDisplayName("com.spotify.client"), "Spotify");
  EXPECT_EQ(RemovalRules::appDisplayName("Slack"), "Slack");
}

}  // namespace
}  // namespace pellwin
