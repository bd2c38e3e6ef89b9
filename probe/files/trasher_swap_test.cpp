// The trasher against a second program that swaps things under it: a parent folder or the item
// itself replaced by a link to a same-named item elsewhere, and protected folders moved into
// the picked item and back. Whatever the timing, only the picked item may ever reach the Trash,
// and everything else stays where it was. TOVRIN_SWAP_RUNS sets how many concurrent runs the
// property test makes (a modest number by default, to keep the suite quick).
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>

#include "core/base/data_folder.h"
#include "probe/files/freedesktop_trash.h"
#include "probe/files/live_removal_disk.h"
#include "probe/files/trasher.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using Outcome = TrashResult::Outcome;

// A home with the picked item, a decoy of the same name behind where a link would lead, and
// folders that must stay: the data folder, the keys and a main folder.
struct SwapHome {
  testing::ScratchHome scratch;
  std::string home = scratch.home;
  std::string parent = home + "/area/parent";
  std::string item = parent + "/item";
  std::string decoyParent = home + "/decoy/parent";
  std::vector<std::string> guarded = {home + "/.local/share/Tovrin", home + "/.ssh",
                                      home + "/Documents"};

  SwapHome() {
    scratch.scratch.write("home/decoy/parent/item/precious.txt", "decoy");
    scratch.scratch.write("home/.local/share/Tovrin/history.sqlite", "history");
    scratch.scratch.write("home/.ssh/id_rsa", "key");
    scratch.scratch.write("home/Documents/thesis.tex", "thesis");
    makeItem();
  }

  void makeItem() const {
    scratch.scratch.write("home/area/parent/item/a.txt", "picked");
    scratch.scratch.write("home/area/parent/item/sub/b.txt", "picked");
  }

  [[nodiscard]] Trasher trasher(RemovalDisk& disk) const {
    return Trasher(home,
                   {.kept = DataFolder::protectedPaths(home, scratch.dataHome),
                    .mainFolders = {home + "/Documents"}},
                   disk);
  }

  // Everything under home but the Trash and the picked item: what no run may change.
  [[nodiscard]] std::vector<std::string> untouchable() const {
    std::vector<std::string> all = testing::inventory(home);
    std::erase_if(all, [&](const std::string& path) {
      return path.starts_with(scratch.trash()) || path.starts_with(item);
    });
    return all;
  }

  // What the Trash holds, item files and all, spelled from inside each entry.
  [[nodiscard]] std::vector<std::string> trashed() const {
    std::vector<std::string> found;
    for (const auto& entry : FreedesktopTrash::entries(scratch.trash())) {
      const std::string files = entry.trashDirectory + "/files/" + entry.name;
      found.push_back("entry " + entry.originalPath);
      if (fs::is_symlink(files)) {
        found.push_back("a link");
        continue;
      }
      for (std::string path : testing::inventory(files)) {
        found.push_back(path.substr(files.size()));
      }
    }
    return found;
  }

  void emptyTrash() const {
    for (const auto& entry : FreedesktopTrash::entries(scratch.trash())) {
      ASSERT_TRUE(FreedesktopTrash::erase(entry).has_value());
    }
  }
};

// rename(2) that keeps trying while the other side holds the name: the swapper must always be
// able to put back what it took. A link at the name is the swapper's own: one the trasher
// caught in the item's place and then put back where it found it, as it should. The swapper
// removes it, as it would have had the trasher not moved it.
void renameBack(const std::string& from, const std::string& to) {
  for (int tries = 0; tries < 100000; ++tries) {
    if (::rename(from.c_str(), to.c_str()) == 0) return;
    if (fs::is_symlink(to)) ::unlink(to.c_str());
    std::this_thread::yield();
  }
  std::abort();
}

// One swap and its undo. Returns at once when the thing to swap is not there (already moved).
void swapParentForLink(const SwapHome& h) {
  if (::rename(h.parent.c_str(), (h.parent + ".away").c_str()) != 0) return;
  ::symlink(h.decoyParent.c_str(), h.parent.c_str());
  std::this_thread::yield();
  ::unlink(h.parent.c_str());
  renameBack(h.parent + ".away", h.parent);
}

void swapItemForLink(const SwapHome& h) {
  if (::rename(h.item.c_str(), (h.item + ".away").c_str()) != 0) return;
  ::symlink((h.decoyParent + "/item").c_str(), h.item.c_str());
  std::this_thread::yield();
  ::unlink(h.item.c_str());
  renameBack(h.item + ".away", h.item);
}

void moveGuardedIn(const SwapHome& h, const std::string& guarded) {
  const std::string inside = h.item + "/" + fs::path(guarded).filename().string();
  if (::rename(guarded.c_str(), inside.c_str()) != 0) return;
  std::this_thread::yield();
  // While the item is in the Trash the trasher is about to put it back: wait for that.
  renameBack(inside, guarded);
}

std::vector<std::string> expectedTrash(const SwapHome& h) {
  return {"entry " + h.item, "/a.txt 6", "/sub", "/sub/b.txt 6"};
}

int swapRuns() {
  const char* text = std::getenv("TOVRIN_SWAP_RUNS");
  int runs = 40;
  if (text != nullptr) {
    const std::string_view view(text);
    int parsed = 0;
    const auto [end, error] = std::from_chars(view.data(), view.data() + view.size(), parsed);
    if (error == std::errc{} && end == view.data() + view.size() && parsed > 0) runs = parsed;
  }
  return runs;
}

TEST(TrasherUnderSwaps, OnlyThePickedItemEverReachesTheTrash) {
  const SwapHome h;
  const std::vector<std::string> untouchable = h.untouchable();
  LiveRemovalDisk disk(FreedesktopTrash(h.scratch.dataHome, ::getuid()));
  const Trasher trasher = h.trasher(disk);
  const int runs = swapRuns();
  int moved = 0;
  int linksCaught = 0;
  for (int run = 0; run < runs; ++run) {
    SCOPED_TRACE("run " + std::to_string(run));
    std::atomic<bool> stop = false;
    std::thread swapper([&, seed = static_cast<unsigned>(run)] {
      std::mt19937 random(seed);
      while (!stop.load()) {
        switch (random() % 5) {
          case 0: swapParentForLink(h); break;
          case 1: swapItemForLink(h); break;
          default: moveGuardedIn(h, h.guarded[random() % h.guarded.size()]); break;
        }
      }
    });
    // Let the swapper get going, by a different amount each run, so the trasher meets it at
    // every step of its work.
    for (int spin = 0; spin < run % 50; ++spin) std::this_thread::yield();
    const TrashResult result = trasher.trash({{.path = h.item}}).at(0);
    stop = true;
    swapper.join();

    ASSERT_EQ(h.untouchable(), untouchable) << "something besides the item moved";
    // The swapper's own link, caught at the picked path at the instant of the move and not
    // put back because the swapper had already taken its place: nothing of the user's.
    const std::vector<std::string> linkOnly = {"entry " + h.item, "a link"};
    if (result.outcome != Outcome::moved && h.trashed() == linkOnly) {
      ++linksCaught;
      h.emptyTrash();
    }
    if (result.outcome == Outcome::moved) {
      ++moved;
      ASSERT_EQ(h.trashed(), expectedTrash(h));
      ASSERT_FALSE(fs::exists(h.item));
      h.emptyTrash();
      h.makeItem();
    } else {
      // Gone for an instant (renamed away by the swapper) is a fair answer too.
      ASSERT_NE(result.outcome, Outcome::deleted);
      ASSERT_EQ(h.trashed(), std::vector<std::string>{}) << result.reason;
      ASSERT_EQ(testing::fileBytes(h.item + "/a.txt"), "picked") << result.reason;
    }
  }
  std::cout << "swap runs: " << runs << ", moved: " << moved
            << ", swapper's links caught: " << linksCaught << "\n";
}

// The same swaps made at one exact step of the trasher's work, through a disk that runs them
// just before the step it names.
class SwappingDisk final : public RemovalDisk {
 public:
  SwappingDisk(RemovalDisk& live, std::string step, std::function<void()> swap)
      : live_(live), step_(std::move(step)), swap_(std::move(swap)) {}

  std::expected<Entry, SystemError> inspect(const std::string& path) override {
    before("inspect");
    return live_.inspect(path);
  }
  std::optional<std::string> resolve(const std::string& path) override {
    before("resolve");
    return live_.resolve(path);
  }
  std::expected<std::optional<Subfolder>, SystemError> findSubfolder(
      const std::string& folder,
      const std::function<bool(const Subfolder&)>& isProtected) override {
    before("search");
    return live_.findSubfolder(folder, isProtected);
  }
  std::expected<std::string, std::string> moveToTrash(const std::string& path,
                                                      const Identity& expected) override {
    before("move");
    return live_.moveToTrash(path, expected);
  }
  std::expected<void, std::string> putBack(const std::string& trashed,
                                           const std::string& path) override {
    return live_.putBack(trashed, path);
  }
  std::expected<void, std::string> removeForGood(const std::string& path, const Identity& expected,
                                                 const std::vector<Identity>& kept) override {
    before("move");
    return live_.removeForGood(path, expected, kept);
  }

 private:
  // Only the calls made for the item count: the trasher also resolves its guarded folders.
  void before(const std::string& step) {
    if (step == step_ && !done_ && armed_) {
      done_ = true;
      swap_();
    }
  }

 public:
  void arm() { armed_ = true; }

 private:
  RemovalDisk& live_;
  std::string step_;
  std::function<void()> swap_;
  bool armed_ = false;
  bool done_ = false;
};

TEST(TrasherUnderSwaps, ASwapJustBeforeAnyStepIsRefusedAndTheDecoyStays) {
  for (const char* step : {"inspect", "resolve", "search", "move"}) {
    for (const char* what : {"parent", "item", "guarded"}) {
      for (const CleanAction action : {CleanAction::trash, CleanAction::delete_}) {
        SCOPED_TRACE(std::string(step) + " " + what + " " + std::string(rawValue(action)));
        const SwapHome h;
        const std::vector<std::string> untouchable = h.untouchable();
        const std::string target = h.home + "/.cache/item";
        LiveRemovalDisk live(FreedesktopTrash(h.scratch.dataHome, ::getuid()));
        // The swap is made and left in place: the trasher must see through it.
        const std::string picked = action == CleanAction::trash ? h.item : target;
        std::function<void()> swap = [&, what = std::string(what), picked] {
          const std::string folder = fs::path(picked).parent_path().string();
          if (what == "parent") {
            fs::rename(folder, folder + ".away");
            fs::create_directory_symlink(h.decoyParent, folder);
          } else if (what == "item") {
            fs::rename(picked, picked + ".away");
            fs::create_directory_symlink(h.decoyParent + "/item", picked);
          } else {
            fs::rename(h.home + "/.ssh", picked + "/.ssh");
          }
        };
        if (action == CleanAction::delete_) {
          h.scratch.scratch.write("home/.cache/item/a.txt", "picked");
        }
        SwappingDisk disk(live, step, swap);
        const Trasher trasher = h.trasher(disk);
        disk.arm();
        const TrashResult result = trasher.perform({{.path = picked}}, action).at(0);

        EXPECT_EQ(testing::fileBytes(h.decoyParent + "/item/precious.txt"), "decoy");
        EXPECT_EQ(h.trashed(), std::vector<std::string>{});
        if (std::string(what) == "guarded") {
          // Moved in before the search, it is found; moved in at the last moment, the move is
          // undone (to the Trash) or the removal stops at the changed folder.
          EXPECT_TRUE(fs::exists(picked + "/.ssh/id_rsa") || fs::exists(h.home + "/.ssh/id_rsa"))
              << result.reason;
        } else {
          EXPECT_NE(result.outcome, Outcome::deleted) << "the decoy was deleted";
          EXPECT_NE(result.outcome, Outcome::moved) << "the decoy was trashed";
        }
      }
    }
  }
}

}  // namespace
}  // namespace pellwin
