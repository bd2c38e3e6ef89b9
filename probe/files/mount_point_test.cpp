#include "probe/files/mount_point.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "core/clean/clean_plan.h"
#include "core/clean/running_set.h"
#include "probe/file_descriptor.h"
#include "probe/files/cleaner_scanner.h"
#include "probe/files/disk_scanner.h"
#include "probe/files/folder_walk.h"
#include "probe/files/freeable_size.h"
#include "probe/files/freedesktop_trash.h"
#include "probe/files/live_removal_disk.h"
#include "probe/files/trasher.h"
#include "testing/bind_mount.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using Outcome = TrashResult::Outcome;

// A home whose ~/.cache/bound shows ~/Documents/photos again, on the same device: what a user's
// `mount --bind ~/Documents/photos ~/.cache/bound` makes.
struct BoundHome {
  testing::ScratchHome scratch;
  std::string photos = scratch.home + "/Documents/photos";
  std::string cache = scratch.home + "/.cache";
  std::string bound = cache + "/bound";
  std::string photo = photos + "/holiday.jpg";
  // Declared last: unmounted before the scratch folder is removed.
  testing::BindMount mount;

  BoundHome() : mount(prepare(*this), bound, scratch.home) {}

  static std::string prepare(BoundHome& self) {
    self.scratch.scratch.write("home/Documents/photos/holiday.jpg", std::string(4096, 'p'));
    self.scratch.scratch.write("home/.cache/app/blob", std::string(4096, 'c'));
    return self.photos;
  }
};

TEST(IsMountPoint, TellsABindMountOnTheSameDeviceFromAnOrdinaryFolder) {
  BoundHome home;
  if (!home.mount.mounted()) GTEST_SKIP() << home.mount.failure();
  fs::create_directory_symlink(home.bound, home.cache + "/link-to-bound");
  const FileDescriptor cache(::open(home.cache.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  ASSERT_TRUE(cache.valid());
  const struct {
    const char* why;
    const char* name;
    bool expected;
  } cases[] = {
      {"a bind mount", "bound", true},
      {"an ordinary folder", "app", false},
      {"a link to a mount point is a link", "link-to-bound", false},
      {"nothing there", "missing", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(isMountPoint(cache.get(), c.name), c.expected);
    EXPECT_EQ(isMountPoint(home.cache + "/" + c.name), c.expected);
  }
  EXPECT_TRUE(isMountPoint(std::string("/")));
}

TEST(IsMountPoint, KeepsEveryReaderOutOfABindMount) {
  BoundHome home;
  if (!home.mount.mounted()) GTEST_SKIP() << home.mount.failure();

  const auto walked = DiskScanner(home.scratch.home).scan(home.cache, std::nullopt, {});
  ASSERT_TRUE(walked.has_value());
  const std::uint64_t appBytes = FreeableSize::measure(home.cache + "/app")->bytes;
  const std::uint64_t cacheOwn = FreeableSize::measure(home.cache)->bytes;
  // The bound folder's files are not in the total, and it is no child of its own.
  EXPECT_LT(walked->tree.bytes, appBytes + 8192);
  walked->tree.forEach([&](const SizeNode& node) { EXPECT_NE(node.name, "bound") << node.path; });
  EXPECT_LT(cacheOwn, appBytes + 8192);

  const CleanGroup caches{.id = "appCaches",
                          .title = "App caches",
                          .action = CleanAction::delete_,
                          .sources = {{.path = ".cache", .eachChild = true}}};
  const CleanGroup whole{.id = "bound",
                         .title = "Bound",
                         .action = CleanAction::delete_,
                         .sources = {{.path = ".cache/bound", .title = "Bound"},
                                     {.path = ".cache/b*", .title = "Pattern *"}}};
  const CleanPlan plan = CleanerScanner(home.scratch.home, {caches, whole}).plan(RunningSet{}, 0);
  ASSERT_EQ(plan.groups.size(), 2u);
  ASSERT_EQ(plan.groups[0].items.size(), 1u);
  EXPECT_EQ(plan.groups[0].items[0].name, "app");
  EXPECT_TRUE(plan.groups[1].items.empty());
}

TEST(IsMountPoint, KeepsEveryRemoverOutOfABindMount) {
  BoundHome home;
  if (!home.mount.mounted()) GTEST_SKIP() << home.mount.failure();

  LiveRemovalDisk disk(FreedesktopTrash(home.scratch.dataHome, ::getuid()));
  const Trasher trasher(home.scratch.home, {}, disk);
  const auto deleted =
      trasher.perform({{.path = home.cache}, {.path = home.bound}}, CleanAction::delete_);
  const auto trashed = trasher.trash({{.path = home.cache}, {.path = home.bound}});
  ASSERT_EQ(deleted.size(), 2u);
  ASSERT_EQ(trashed.size(), 2u);
  EXPECT_EQ(deleted[0].reason, "Another disk or folder is mounted inside it, at bound");
  EXPECT_EQ(deleted[1].reason, "It's where another disk or folder is mounted");
  EXPECT_EQ(trashed[0].reason, "Another disk or folder is mounted inside it, at bound");
  EXPECT_EQ(trashed[1].reason, "It's where another disk or folder is mounted");

  // Below the trasher's checks, removal and the Trash stop at the mount point themselves.
  const FileDescriptor home_(::open(home.scratch.home.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  const FileDescriptor cache(::open(home.cache.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  EXPECT_EQ(removeTree(cache.get(), "bound").error(),
            "It's where another disk or folder is mounted");
  EXPECT_EQ(removeTree(home_.get(), ".cache").error(),
            "Another disk or folder is mounted inside it, at .cache/bound");
  const FreedesktopTrash trash(home.scratch.dataHome, ::getuid());
  EXPECT_EQ(trash.moveToTrash(home.bound).error(), "It's where another disk or folder is mounted");

  EXPECT_EQ(testing::fileBytes(home.photo), std::string(4096, 'p'));
  EXPECT_TRUE(fs::exists(home.bound + "/holiday.jpg"));
}

// A folder holding a bind mount that reached the Trash anyway (moved there by another program)
// is emptied around it, never through it.
TEST(IsMountPoint, EmptyingTheTrashLeavesWhatIsBoundInside) {
  testing::ScratchHome scratch;
  scratch.scratch.write("home/Documents/photos/holiday.jpg", "photo");
  const std::string item = scratch.home + "/.local/share/Trash/files/old";
  scratch.scratch.write("home/.local/share/Trash/files/old/junk", "junk");
  scratch.scratch.write(
      "home/.local/share/Trash/info/old.trashinfo",
      "[Trash Info]\nPath=" + scratch.home + "/old\nDeletionDate=2024-01-01T00:00:00\n");
  testing::BindMount mount(scratch.home + "/Documents/photos", item + "/bound", scratch.home);
  if (!mount.mounted()) GTEST_SKIP() << mount.failure();
  const auto entries = FreedesktopTrash::entries(scratch.trash());
  ASSERT_EQ(entries.size(), 1u);
  const auto erased = FreedesktopTrash::erase(entries[0]);
  ASSERT_FALSE(erased.has_value());
  EXPECT_EQ(erased.error(), "Another disk or folder is mounted inside it, at old/bound");
  EXPECT_EQ(testing::fileBytes(scratch.home + "/Documents/photos/holiday.jpg"), "photo");
  EXPECT_FALSE(fs::exists(item + "/junk"));
}

}  // namespace
}  // namespace pellwin
