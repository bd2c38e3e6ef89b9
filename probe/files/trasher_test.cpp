#include "probe/files/trasher.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>

#include "core/base/data_folder.h"
#include "probe/files/live_removal_disk.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

using Outcome = TrashResult::Outcome;

// A disk made of a table: what lstat says, what realpath gives, which folders lie below a
// folder, and a log of what was asked to go. `failing` makes every move and removal fail.
class FakeDisk final : public RemovalDisk {
 public:
  struct Node {
    Entry entry;
    std::optional<std::string> resolved;  // defaults to the path itself
  };
  std::map<std::string, Node> nodes;
  std::map<std::string, std::vector<Subfolder>> below;
  std::vector<std::string> acted;
  std::map<std::string, Identity> trashed;  // where moveToTrash put each item
  bool failing = false;
  std::uint64_t lastInode = 0;

  void folder(const std::string& path, std::vector<Subfolder> inside = {}) {
    nodes[path] = {.entry = {.isSymlink = false, .isDirectory = true, .identity = next()},
                   .resolved = path};
    below[path] = std::move(inside);
  }
  void file(const std::string& path, std::optional<std::string> resolved = std::nullopt) {
    nodes[path] = {.entry = {.isSymlink = false, .isDirectory = false, .identity = next()},
                   .resolved = resolved ? resolved : path};
  }
  void link(const std::string& path, const std::string& target) {
    nodes[path] = {.entry = {.isSymlink = true, .isDirectory = false, .identity = next()},
                   .resolved = target};
  }
  Identity next() { return {.device = 1, .inode = ++lastInode}; }

  std::expected<Entry, SystemError> inspect(const std::string& path) override {
    if (const auto moved = trashed.find(path); moved != trashed.end()) {
      return Entry{.identity = moved->second};
    }
    const auto it = nodes.find(path);
    if (it == nodes.end()) {
      return std::unexpected(SystemError{.operation = "lstat", .path = path, .code = ENOENT});
    }
    return it->second.entry;
  }
  std::optional<std::string> resolve(const std::string& path) override {
    const auto it = nodes.find(path);
    if (it == nodes.end())
      return path == "/home/ann" ? std::optional<std::string>(path) : std::nullopt;
    return it->second.resolved;
  }
  std::expected<std::optional<Subfolder>, SystemError> findSubfolder(
      const std::string& folder,
      const std::function<bool(const Subfolder&)>& isProtected) override {
    for (const Subfolder& sub : below[folder]) {
      if (isProtected(sub)) return sub;
    }
    return std::nullopt;
  }
  std::expected<std::string, std::string> moveToTrash(const std::string& path,
                                                      const Identity& expected) override {
    acted.push_back("trash " + path);
    if (failing) return std::unexpected(std::string("Permission denied"));
    trashed["/trash/files" + path] = expected;
    return "/trash/files" + path;
  }
  std::expected<void, std::string> putBack(const std::string& from,
                                           const std::string& path) override {
    acted.push_back("put back " + path);
    trashed.erase(from);
    return {};
  }
  std::expected<void, std::string> removeForGood(const std::string& path, const Identity&,
                                                 const std::vector<Identity>&) override {
    acted.push_back("delete " + path);
    if (failing) return std::unexpected(std::string("Read-only file system"));
    return {};
  }
};

RemovalGuards dataFolders() {
  return {.kept = DataFolder::protectedPaths("/home/ann", "/home/ann/.local/share")};
}

TEST(Trasher, ChecksEachItemOnTheDiskAndGivesOneResultPerItemInOrder) {
  FakeDisk disk;
  disk.folder("/home/ann/old");
  disk.file("/home/ann/notes.txt");
  disk.link("/home/ann/shortcut", "/home/ann/old");
  disk.file("/home/ann/mnt/escape", "/etc/passwd");
  disk.nodes["/home/ann/dangling"] = {.entry = {.isSymlink = true, .isDirectory = false},
                                      .resolved = std::nullopt};
  disk.folder("/home/ann/projects",
              {{.path = "/home/ann/projects/app", .name = "app", .isMountPoint = false},
               {.path = "/home/ann/projects/app/.local/share/Tovrin",
                .name = "Tovrin",
                .isMountPoint = false}});
  disk.folder("/home/ann/media",
              {{.path = "/home/ann/media/usb", .name = "usb", .isMountPoint = true}});
  disk.folder("/home/ann/.local/share/Tovrin");
  disk.folder("/home/ann/Documents");
  Trasher trasher("/home/ann", {.kept = {"/home/ann/projects/app/.local/share/Tovrin"}}, disk);

  const struct {
    const char* path;
    Outcome outcome;
    const char* reason;
  } cases[] = {
      {"/home/ann/old/", Outcome::moved, ""},
      {"/home/ann/gone", Outcome::alreadyGone, ""},
      {"/home/ann/shortcut", Outcome::refused, "It's a shortcut to somewhere else"},
      {"/home/ann/mnt/escape", Outcome::refused, "It's outside your home folder"},
      {"/home/ann/dangling", Outcome::refused, "Tovrin couldn't find it on disk"},
      {"/home/ann/projects", Outcome::refused, "It holds Tovrin, which Tovrin keeps safe"},
      {"/home/ann/media", Outcome::refused, "Another disk or folder is mounted inside it, at usb"},
      {"/home/ann/Documents", Outcome::refused, "It's one of your main folders"},
      {"//home/ann/./notes.txt", Outcome::moved, ""},
      {"/home/ann/notes.txt/", Outcome::refused, "Tovrin couldn't find it on disk"},
  };
  std::vector<TrashItem> items;
  std::vector<TrashResult> expected;
  for (const auto& c : cases) {
    const std::uint64_t bytes = 10 * (items.size() + 1);
    items.push_back({.path = c.path, .bytes = bytes});
    expected.push_back({.path = c.path, .bytes = bytes, .outcome = c.outcome, .reason = c.reason});
  }
  EXPECT_EQ(trasher.trash(items), expected);
  EXPECT_EQ(disk.acted,
            (std::vector<std::string>{"trash /home/ann/old", "trash /home/ann/notes.txt"}));
}

TEST(Trasher, DeletesForGoodOnlyWhereTheCatalogSaysItRebuilds) {
  FakeDisk disk;
  disk.folder("/home/ann/.cache/thumbnails");
  disk.folder("/home/ann/Music/old");
  disk.file("/home/ann/c/pip", "/home/ann/.cache/pip");    // a cleanable place through a link
  disk.file("/home/ann/.cache/notes", "/home/ann/notes");  // and the other way round
  Trasher trasher("/home/ann", dataFolders(), disk);
  const auto results = trasher.perform({{.path = "/home/ann/.cache/thumbnails", .bytes = 1},
                                        {.path = "/home/ann/Music/old", .bytes = 2},
                                        {.path = "/home/ann/c/pip", .bytes = 3},
                                        {.path = "/home/ann/.cache/notes", .bytes = 4}},
                                       CleanAction::delete_);
  ASSERT_EQ(results.size(), 4u);
  EXPECT_EQ(results[0].outcome, Outcome::deleted);
  for (std::size_t i = 1; i < 4; ++i) {
    SCOPED_TRACE(results[i].path);
    EXPECT_EQ(results[i].outcome, Outcome::refused);
    EXPECT_EQ(results[i].reason, "Tovrin only deletes caches and logs for good");
  }
  EXPECT_EQ(disk.acted, (std::vector<std::string>{"delete /home/ann/.cache/thumbnails"}));
}

TEST(Trasher, JudgesAMovedCacheFolderAsTheStandardOne) {
  FakeDisk disk;
  disk.folder("/home/ann/xcache/pip");
  disk.folder("/home/ann/xcache");
  disk.folder("/home/ann/Documents/thumbnails");
  disk.folder("/home/ann/.cache/thumbnails");
  // XDG_CACHE_HOME=~/xcache, and a config home moved onto a main folder.
  Trasher trasher("/home/ann", dataFolders(), disk,
                  {{.actual = "/home/ann//xcache/", .standard = "/home/ann/.cache"},
                   {.actual = "/home/ann/Documents", .standard = "/home/ann/.cache"}});
  const auto results = trasher.perform({{.path = "/home/ann/xcache/pip"},
                                        {.path = "/home/ann/xcache"},
                                        {.path = "/home/ann/Documents/thumbnails"},
                                        {.path = "/home/ann/.cache/thumbnails"}},
                                       CleanAction::delete_);
  ASSERT_EQ(results.size(), 4u);
  EXPECT_EQ(results[0].outcome, Outcome::deleted);
  EXPECT_EQ(results[1].reason, "Tovrin only deletes caches and logs for good") << "the base itself";
  EXPECT_EQ(results[2].reason, "Tovrin only deletes caches and logs for good");
  EXPECT_EQ(results[3].outcome, Outcome::deleted);
}

TEST(Trasher, ADiskThatFailsGivesFailedResultsAndTheNextItemIsStillTried) {
  FakeDisk disk;
  disk.failing = true;
  disk.file("/home/ann/a");
  disk.file("/home/ann/.cache/b");
  Trasher trasher("/home/ann", dataFolders(), disk);
  EXPECT_EQ(
      trasher.trash({{.path = "/home/ann/a", .bytes = 1}, {.path = "/home/ann/a", .bytes = 1}}),
      (std::vector<TrashResult>(2, {.path = "/home/ann/a",
                                    .bytes = 1,
                                    .outcome = Outcome::failed,
                                    .reason = "Permission denied"})));
  const auto deleted =
      trasher.perform({{.path = "/home/ann/.cache/b", .bytes = 2}}, CleanAction::delete_);
  EXPECT_EQ(deleted.at(0).outcome, Outcome::failed);
  EXPECT_EQ(deleted.at(0).reason, "Read-only file system");
  EXPECT_EQ(disk.acted.size(), 3u);
}

TEST(Trasher, ReadsAHomeReachedThroughALinkInItsOwnSpelling) {
  FakeDisk disk;
  disk.nodes["/home/ann"] = {.entry = {.isSymlink = true, .isDirectory = false},
                             .resolved = "/data/ann"};
  disk.file("/home/ann/x", "/data/ann/x");
  disk.file("/home/ann/y", "/data/ann/.local/share/Tovrin/history.sqlite");
  disk.file("/home/ann/z", "/data/bob/z");
  disk.nodes["/home/ann/.local/share/Tovrin"] = {.entry = {},
                                                 .resolved = "/data/ann/.local/share/Tovrin"};
  Trasher trasher("/home/ann", dataFolders(), disk);
  EXPECT_EQ(trasher.resolvedHome(), "/data/ann");
  const auto results =
      trasher.trash({{.path = "/home/ann/x"}, {.path = "/home/ann/y"}, {.path = "/home/ann/z"}});
  EXPECT_EQ(results[0].outcome, Outcome::moved);
  EXPECT_EQ(results[1].reason, "Tovrin needs it to run");
  EXPECT_EQ(results[2].reason, "It's outside your home folder");
  EXPECT_EQ(disk.acted, (std::vector<std::string>{"trash /data/ann/x"}));
}

// The live disk in a scratch home: the same decisions, and the Trash entries real.
TEST(Trasher, OnTheLiveDiskMovesWhatIsAllowedAndTrashCliSeesIt) {
  testing::ScratchHome scratch;
  namespace fs = std::filesystem;
  scratch.scratch.write("home/projects/old/main.c", "int main;");
  scratch.scratch.write("home/projects/keep/.local/share/Tovrin/history.sqlite", "db");
  scratch.scratch.write("home/.cache/tool/blob", "cache");
  scratch.scratch.write("outside.txt", "outside");
  fs::create_symlink(scratch.home + "/projects/keep", scratch.home + "/keep-link");
  const std::string outside = fs::canonical(scratch.scratch.path()).string() + "/outside.txt";

  LiveRemovalDisk disk(FreedesktopTrash(scratch.dataHome, ::getuid()));
  Trasher trasher(scratch.home, {.kept = {scratch.home + "/projects/keep/.local/share/Tovrin"}},
                  disk);
  const auto moved = trasher.trash({{.path = scratch.home + "/projects/old"},
                                    {.path = scratch.home + "/projects/keep"},
                                    {.path = scratch.home + "/keep-link/"},
                                    {.path = outside},
                                    {.path = scratch.home + "/projects/old"}});
  const auto deleted =
      trasher.perform({{.path = scratch.home + "/.cache/tool"}}, CleanAction::delete_);

  // Picked as a folder, then swapped for a link to outside home, or given a protected folder,
  // before the trasher runs: refused at the last moment.
  scratch.scratch.write("home/picked/a", "a");
  scratch.scratch.write("home/grows/a", "a");
  fs::rename(scratch.home + "/picked", scratch.home + "/picked-away");
  fs::create_directory_symlink(fs::path(outside).parent_path(), scratch.home + "/picked");
  fs::create_directories(scratch.home + "/grows/.local/share/Tovrin");
  // The user's own folders, one moved deeper and one reached through a link.
  scratch.scratch.write("home/Media/Musik/song.ogg", "la");
  scratch.scratch.write("home/Sync/Pictures/cat.png", "cat");
  fs::create_directory_symlink(scratch.home + "/Sync/Pictures", scratch.home + "/Bilder");
  Trasher late(scratch.home,
               {.kept = {scratch.home + "/grows/.local/share/Tovrin"},
                .mainFolders = {scratch.home + "/Media/Musik", scratch.home + "/Bilder"}},
               disk);
  const auto lastMoment = late.trash({{.path = scratch.home + "/picked"},
                                      {.path = scratch.home + "/grows"},
                                      {.path = scratch.home + "/Media"},
                                      {.path = scratch.home + "/Media/Musik"},
                                      {.path = scratch.home + "/Sync/Pictures"},
                                      {.path = scratch.home + "/Media/Musik/song.ogg"}});
  EXPECT_EQ(lastMoment[0].reason, "It's a shortcut to somewhere else");
  EXPECT_EQ(lastMoment[1].reason, "It holds Tovrin, which Tovrin keeps safe");
  EXPECT_EQ(lastMoment[2].reason, "It holds Musik, which Tovrin keeps safe");
  EXPECT_EQ(lastMoment[3].reason, "It's one of your main folders");
  EXPECT_EQ(lastMoment[4].reason, "It's one of your main folders");
  EXPECT_EQ(lastMoment[5].outcome, Outcome::moved);
  EXPECT_TRUE(fs::exists(scratch.home + "/grows/a"));
  EXPECT_TRUE(fs::exists(scratch.home + "/Sync/Pictures/cat.png"));

  EXPECT_EQ(moved[0].outcome, Outcome::moved);
  EXPECT_EQ(moved[1].reason, "It holds Tovrin, which Tovrin keeps safe");
  EXPECT_EQ(moved[2].reason, "It's a shortcut to somewhere else");
  EXPECT_EQ(moved[3].reason, "It's outside your home folder");
  EXPECT_EQ(moved[4].outcome, Outcome::alreadyGone);
  EXPECT_EQ(deleted[0].outcome, Outcome::deleted);
  EXPECT_TRUE(fs::exists(outside));
  EXPECT_TRUE(fs::exists(scratch.home + "/projects/keep/.local/share/Tovrin/history.sqlite"));
  EXPECT_TRUE(fs::is_symlink(scratch.home + "/keep-link"));
  EXPECT_FALSE(fs::exists(scratch.home + "/.cache/tool"));
  const std::string listing = scratch.run("trash-list");
  EXPECT_NE(listing.find(" " + scratch.home + "/projects/old\n"), std::string::npos) << listing;
}

// HOME through a link and XDG_DATA_HOME by the real path, and the other way round: the data
// folder stays protected in every spelling.
TEST(Trasher, GuardsTheDataFolderHoweverHomeAndTheDataHomeAreSpelled) {
  namespace fs = std::filesystem;
  testing::ScratchFolder scratch;
  const std::string base = fs::canonical(scratch.path()).string();
  scratch.write("real/ann/.local/share/Tovrin/history.sqlite", "history");
  scratch.write("real/ann/notes/old.txt", "old");
  fs::create_directory_symlink(base + "/real/ann", base + "/ann");
  const struct {
    const char* why;
    std::string home;
    std::string dataHome;
  } cases[] = {
      {"home through a link", base + "/ann", base + "/real/ann/.local/share"},
      {"data home through a link", base + "/real/ann", base + "/ann/.local/share"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    LiveRemovalDisk disk(FreedesktopTrash(c.dataHome, ::getuid()));
    const Trasher trasher(c.home, {.kept = DataFolder::protectedPaths(c.home, c.dataHome)}, disk);
    for (const std::string& spelledHome : {base + "/ann", base + "/real/ann"}) {
      SCOPED_TRACE(spelledHome);
      const auto results = trasher.trash({{.path = spelledHome + "/.local/share/Tovrin"},
                                          {.path = spelledHome + "/.local/share"},
                                          {.path = spelledHome + "/.local"}});
      // Spelled through a link home does not go through, it is outside home; else guarded.
      EXPECT_EQ(results[0].reason, spelledHome == c.home || c.home == base + "/ann"
                                       ? "Tovrin needs it to run"
                                       : "It's outside your home folder");
      EXPECT_EQ(results[1].outcome, Outcome::refused);
      EXPECT_EQ(results[2].outcome, Outcome::refused);
    }
    EXPECT_EQ(testing::fileBytes(base + "/real/ann/.local/share/Tovrin/history.sqlite"), "history");
  }
}

}  // namespace
}  // namespace pellwin
