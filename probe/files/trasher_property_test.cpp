// Throws many generated spellings of paths at the trasher on the live disk of a scratch home
// laid out with real links (out of home, back into protected folders, to home itself, a loop,
// a dangling one) and, when root may mount, another volume inside home. After every round
// nothing outside the allowed set may have moved.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "core/base/data_folder.h"
#include "probe/files/live_removal_disk.h"
#include "probe/files/trasher.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using Outcome = TrashResult::Outcome;

struct Layout {
  std::string root{};  // the scratch folder: home and the outside world live here
  std::string home{};
  std::vector<std::string> precious{};  // must still be there after any round
  std::vector<std::string> links{};     // at the top of home: never removed
};

void write(const std::string& path, const std::string& text) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path) << text;
}

Layout build(const testing::ScratchHome& scratch) {
  Layout layout{.root = fs::canonical(scratch.scratch.path()).string(), .home = scratch.home};
  const std::string& h = layout.home;
  const std::string& r = layout.root;
  for (const char* file : {"/outside/secret.txt", "/outside/dir/inner.txt"}) {
    write(r + file, "outside");
    layout.precious.push_back(r + file);
  }
  // Siblings of home that differ only in case, or that home's name is a prefix of, holding what
  // home holds: a path spelled into them must never count as inside home.
  for (const char* sibling : {"/HOME", "/home2", "/Home"}) {
    for (const char* file :
         {"/junk/a.txt", "/junk/b/c.txt", "/.cache/tool/blob", "/projects/free/main.c"}) {
      write(r + sibling + file, "outside");
      layout.precious.push_back(r + sibling + file);
    }
  }
  for (const char* file : {"/.ssh/id_rsa", "/.local/share/Tovrin/history.sqlite",
                           "/.local/share/keyrings/login.keyring", "/projects/keep/data",
                           "/.gnupg/pubring.kbx", "/.password-store/mail.gpg"}) {
    write(h + file, "protected");
    layout.precious.push_back(h + file);
  }
  for (const char* folder : {"/Documents", "/Music", "/Videos", "/.config", "/.local/share"}) {
    fs::create_directories(h + folder);
    layout.precious.push_back(h + folder);
  }
  for (const char* file :
       {"/junk/a.txt", "/junk/b/c.txt", "/Documents/old.txt", "/Videos/clip.mp4",
        "/.config/app/settings.ini", "/.cache/tool/blob", "/projects/free/main.c"}) {
    write(h + file, "ordinary");
  }
  const std::pair<const char*, std::string> links[] = {
      {"/out-link", r + "/outside"},
      {"/out-file", r + "/outside/secret.txt"},
      {"/in-link", h + "/junk"},
      {"/docs-link", h + "/Documents"},
      {"/ssh-link", h + "/.ssh"},
      {"/dangling", h + "/nowhere"},
      {"/home-link", h},
      {"/up-link", r},
      {"/keep-link", h + "/projects/keep"},
      {"/data-link", h + "/.local/share/Tovrin"},
  };
  for (const auto& [name, target] : links) {
    fs::create_symlink(target, h + name);
    layout.links.push_back(h + name);
  }
  fs::create_directory_symlink(h + "/junk", h + "/junk/loop");
  return layout;
}

// A path from a small vocabulary, or an existing path spelled differently.
std::string generate(std::mt19937& random, const Layout& layout,
                     const std::vector<std::string>& existing) {
  static const std::vector<std::string> words = {
      "junk",       "a.txt",     "b",         "c.txt",    "Documents", "documents", "old.txt",
      "Music",      "Videos",    ".ssh",      "id_rsa",   ".config",   "app",       ".local",
      "share",      "Tovrin",    "TOVRIN",    "keyrings", "Trash",     "files",     ".cache",
      "tool",       "projects",  "keep",      "free",     "usb",       "stuff",     "out-link",
      "out-file",   "in-link",   "docs-link", "ssh-link", "dangling",  "home-link", "up-link",
      "keep-link",  "data-link", "loop",      "..",       ".",         "",          "outside",
      "secret.txt", "home",      "HOME",      "home2",    ".Trash-0",  ".gnupg"};
  const auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  std::string path;
  if (!existing.empty() && pick(2) == 0) {
    path = existing[pick(existing.size())];
    static const char* const siblings[] = {"/HOME", "/home2", "/Home"};
    switch (pick(8)) {
      case 0: path += "/"; break;
      case 1: path.insert(layout.home.size(), "/."); break;
      case 2: path.insert(layout.home.size(), "//"); break;
      case 3: path.insert(layout.home.size(), "/junk/.."); break;
      case 4: path[pick(path.size())] ^= 0x20; break;  // flips the case of a letter
      case 5:
      case 6: path.replace(0, layout.home.size(), layout.root + siblings[pick(3)]); break;
      default: break;
    }
    return path;
  }
  const std::string bases[] = {
      layout.home, layout.root, layout.root + "/outside", layout.root + "/HOME", "/",
      "",          "home/junk", layout.home + "2"};
  path = bases[pick(std::size(bases))];
  const std::size_t parts = pick(5);
  for (std::size_t i = 0; i < parts; ++i) {
    path += pick(8) == 0 ? "//" : "/";
    path += words[pick(words.size())];
  }
  if (pick(6) == 0) path += "/";
  return path;
}

std::vector<std::string> everything(const std::string& root) {
  std::vector<std::string> paths;
  std::error_code ignored;
  for (auto it = fs::recursive_directory_iterator(root, ignored);
       it != fs::recursive_directory_iterator(); it.increment(ignored)) {
    paths.push_back(it->path().string());
  }
  return paths;
}

bool isInside(const std::string& path, const std::string& folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

TEST(TrasherProperty, NothingOutsideTheAllowedSetIsEverRemovedWhateverThePathSpelling) {
  int acted = 0;
  int refused = 0;
  for (unsigned round = 0; round < 16; ++round) {
    testing::ScratchHome scratch;
    const Layout layout = build(scratch);
    testing::ScratchMount mount(layout.home + "/usb");
    if (mount.mounted()) write(layout.home + "/usb/stuff/file", "on another volume");
    const std::vector<std::string> existing = everything(layout.home);
    LiveRemovalDisk disk(FreedesktopTrash(scratch.dataHome, ::getuid()));
    RemovalGuards guards{.kept = DataFolder::protectedPaths(layout.home, scratch.dataHome)};
    guards.kept.push_back(layout.home + "/projects/keep");
    const Trasher trasher(layout.home, guards, disk);
    std::mt19937 random(20261121 + round);

    for (int i = 0; i < 60; ++i) {
      const std::string path = generate(random, layout, existing);
      const CleanAction action = random() % 4 == 0 ? CleanAction::delete_ : CleanAction::trash;
      SCOPED_TRACE("round " + std::to_string(round) + ": " + std::string(rawValue(action)) + " " +
                   path);
      struct stat before {};
      const bool wasLink = ::lstat(path.c_str(), &before) == 0 && S_ISLNK(before.st_mode);
      std::error_code error;
      const std::string real = fs::canonical(path, error).string();

      const TrashResult result = trasher.perform({{.path = path, .bytes = 1}}, action).at(0);
      if (result.outcome == Outcome::refused) ++refused;
      if (result.outcome != Outcome::moved && result.outcome != Outcome::deleted) continue;
      ++acted;
      ASSERT_FALSE(wasLink) << "a link was removed";
      ASSERT_FALSE(error) << "something went that could not be resolved";
      ASSERT_TRUE(isInside(real, layout.home)) << real;
      ASSERT_FALSE(fs::exists(real, error)) << real;
      for (const std::string& kept : layout.precious) {
        ASSERT_FALSE(kept == real || isInside(kept, real)) << kept << " was inside " << real;
      }
    }
    for (const std::string& kept : layout.precious) EXPECT_TRUE(fs::exists(kept)) << kept;
    for (const std::string& link : layout.links) EXPECT_TRUE(fs::is_symlink(link)) << link;
  }
  // The generator must reach both sides, or the checks above prove nothing.
  EXPECT_GT(acted, 30);
  EXPECT_GT(refused, 200);
}

}  // namespace
}  // namespace pellwin
