// The walk with threads reading ahead builds exactly the tree that the walk alone builds, and
// both match a plain recursive walk written from the rules: on real trees with hard links
// across folders, links, a mounted volume, a bind mount, folders it may not read, thousands of
// folders, a chain deeper than the walk keeps open, and many items of equal size.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <unordered_map>

#include "core/base/path_text.h"
#include "core/space/project_rules.h"
#include "probe/files/directory_listing.h"
#include "probe/files/disk_scanner.h"
#include "probe/files/mount_point.h"
#include "probe/files/size_node_json.h"
#include "testing/bind_mount.h"
#include "testing/scratch_folder.h"
#include "testing/trash_test_support.h"
#include "testing/walk_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::allocateFile;
using testing::ScratchFolder;

// The rules, one folder at a time by recursion: slow and simple, for test trees only.
class ReferenceWalk {
 public:
  WalkResult run(const std::string& root) {
    struct stat info {};
    if (::stat(root.c_str(), &info) != 0) return {};
    device_ = static_cast<std::uint64_t>(info.st_dev);
    WalkResult result{
        .tree = visit(root, allocatedBytes(info), static_cast<double>(info.st_mtim.tv_sec)),
        .sharesLinksOutside = false};
    for (const auto& [inode, left] : linksLeft_) result.sharesLinksOutside |= left > 0;
    return result;
  }

 private:
  SizeNode visit(const std::string& path, std::uint64_t ownBytes, double lastUsed) {
    SizeNode node{.name = std::string(lastPathComponent(path)),
                  .path = path,
                  .bytes = ownBytes,
                  .isDirectory = true,
                  .lastUsed = lastUsed};
    const auto listed = DirectoryListing::list(path);
    const auto* entries = std::get_if<DirectoryListing::Entries>(&listed);
    if (entries == nullptr || entries->incomplete) {
      return {.name = node.name,
              .path = node.path,
              .isDirectory = true,
              .isLocked = true,
              .lastUsed = lastUsed,
              .category = StorageCategory::system};
    }
    for (const DirectoryEntry& entry : entries->entries) {
      if (ProjectRules::isMarker(entry.name, entry.isDirectory)) {
        if (!node.markers) node.markers.emplace();
        node.markers->push_back(entry.name);
      }
      if (entry.device != device_) continue;
      if (entry.isDirectory && isMountPoint(joinedPath(path, entry.name))) continue;
      const std::string childPath = joinedPath(path, entry.name);
      SizeNode child;
      if (entry.isDirectory) {
        child = visit(childPath, entry.allocatedBytes, entry.modified);
      } else {
        if (entry.linkCount >= 2) {
          auto [it, first] = linksLeft_.try_emplace(entry.inode, entry.linkCount - 1);
          if (!first) {
            if (it->second > 0) --it->second;
            continue;
          }
        }
        child = {.name = entry.name,
                 .path = childPath,
                 .bytes = entry.allocatedBytes,
                 .lastUsed = std::max(entry.modified, entry.accessed)};
      }
      node.bytes += child.bytes;
      if (child.isLocked || child.bytes >= DiskScanner::keepBytes) {
        node.children.push_back(std::move(child));
      } else {
        node.restBytes += child.bytes;
        node.restCount += 1;
      }
    }
    SizeNode::sortChildren(node.children);
    return node;
  }

  std::uint64_t device_ = 0;
  std::unordered_map<std::uint64_t, std::uint32_t> linksLeft_;
};

// The same tree whatever the number of reading threads, and the same as the rules give;
// empty when so, else what differs.
std::string differences(const std::string& root) {
  const WalkResult expected = ReferenceWalk().run(root);
  std::string found;
  for (std::size_t readers : {0, 1, 3, 16}) {
    const auto walked = walkTree(root, std::nullopt, {}, {}, readers);
    const std::string label = std::to_string(readers) + " readers: ";
    if (!walked) {
      found += label + "failed; ";
    } else if (walked->tree != expected.tree) {
      found += label + SizeNodeJSON::encode(walked->tree) +
               " != " + SizeNodeJSON::encode(expected.tree) + "; ";
    } else if (walked->sharesLinksOutside != expected.sharesLinksOutside) {
      found += label + "links outside differ; ";
    }
  }
  return found;
}

void makeMixedTree(const std::string& root) {
  allocateFile(root + "/a/big.bin", 3'000'000);
  allocateFile(root + "/a/small.txt", 5'000);
  allocateFile(root + "/a/b/c/deep.bin", 1'500'000);
  allocateFile(root + "/a/b/package.json", 0);
  fs::create_directories(root + "/a/b/node_modules/x");
  allocateFile(root + "/z/shared.bin", 2'000'000);
  // Hard links in other folders and subtrees: counted once, where the walk meets them first.
  fs::create_hard_link(root + "/z/shared.bin", root + "/a/b/shared-link");
  allocateFile(root + "/m/only-here.bin", 1'200'000);
  fs::create_hard_link(root + "/z/shared.bin", root + "/m/shared-link");
  fs::create_directory_symlink(root + "/a", root + "/m/to-a");
  fs::create_symlink("/nowhere", root + "/m/dangling");
  fs::create_directories(root + "/empty/inside");
}

TEST(WalkEquivalence, ReadersBuildTheTreeTheRulesGiveOnAMixedTree) {
  ScratchFolder scratch;
  const std::string root = fs::canonical(scratch.path()).string() + "/tree";
  makeMixedTree(root);
  EXPECT_EQ(differences(root), "");
}

TEST(WalkEquivalence, ReadersBuildTheSameTreeWithLinksLeadingOutside) {
  ScratchFolder scratch;
  const std::string base = fs::canonical(scratch.path()).string();
  makeMixedTree(base + "/tree");
  allocateFile(base + "/outside.bin", 4'000'000);
  fs::create_hard_link(base + "/outside.bin", base + "/tree/a/b/c/in.bin");
  EXPECT_EQ(differences(base + "/tree"), "");
}

TEST(WalkEquivalence, ReadersBuildTheSameTreeOverThousandsOfFolders) {
  ScratchFolder scratch;
  const std::string root = fs::canonical(scratch.path()).string() + "/wide";
  // More folders in one place than the readers may ask for ahead, several levels of them, and
  // files of equal sizes so that the order of equal sizes by name shows.
  for (int a = 0; a < 30; ++a) {
    for (int b = 0; b < 40; ++b) {
      const std::string folder = root + "/f" + std::to_string(a) + "/g" + std::to_string(b);
      fs::create_directories(folder);
      if ((a + b) % 7 == 0) allocateFile(folder + "/same.bin", 1'000'000 + 4096);
      if (b % 5 == 0) allocateFile(folder + "/h/x", 40'000 * static_cast<std::uint64_t>(a));
    }
  }
  EXPECT_EQ(differences(root), "");
}

TEST(WalkEquivalence, ReadersBuildTheSameTreeDeeperThanTheFoldersKeptOpen) {
  ScratchFolder scratch;
  const std::string root = fs::canonical(scratch.path()).string() + "/deep";
  std::string path = root;
  for (int level = 0; level < 150; ++level) {
    path += "/level" + std::to_string(level);
    if (level % 10 == 0) allocateFile(path + "/side/file.bin", 1'100'000);
  }
  fs::create_directories(path);
  EXPECT_EQ(differences(root), "");
}

TEST(WalkEquivalence, ReadersLeaveOutAVolumeMountedInside) {
  ScratchFolder scratch;
  const std::string root = fs::canonical(scratch.path()).string() + "/scan";
  makeMixedTree(root);
  testing::ScratchMount mount(root + "/a/mnt");
  if (!mount.mounted()) GTEST_SKIP() << "needs root to mount a tmpfs";
  allocateFile(root + "/a/mnt/inside.bin", 5'000'000);
  EXPECT_EQ(differences(root), "");
}

TEST(WalkEquivalence, ReadersLeaveOutAFolderBoundOnTheSameDisk) {
  ScratchFolder scratch;
  const std::string root = fs::canonical(scratch.path()).string() + "/scan";
  makeMixedTree(root);
  testing::BindMount bound(root + "/a", root + "/m/bound", root);
  if (!bound.mounted()) GTEST_SKIP() << bound.failure();
  const WalkResult reference = ReferenceWalk().run(root);
  const SizeNode* m = reference.tree.find(root + "/m");
  ASSERT_NE(m, nullptr);
  EXPECT_EQ(m->find(root + "/m/bound"), nullptr);
  EXPECT_EQ(differences(root), "");
}

TEST(WalkEquivalence, ReadersShowFoldersTheyMayNotReadAsLockedLikeTheWalkAlone) {
  ScratchFolder scratch;
  const std::string base = fs::canonical(scratch.path()).string();
  fs::permissions(base, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                            fs::perms::others_read | fs::perms::others_exec);
  const std::string root = base + "/tree";
  makeMixedTree(root);
  allocateFile(root + "/a/private/secret.bin", 2'000'000);
  allocateFile(root + "/a/listed/hidden.bin", 2'000'000);
  fs::permissions(root + "/a/private", fs::perms::none);
  // Read without search: the names can be listed, but none of them can be examined.
  fs::permissions(root + "/a/listed", fs::perms::owner_read | fs::perms::others_read);
  const std::string outcome = testing::runUnprivileged([&] {
    const WalkResult reference = ReferenceWalk().run(root);
    for (const char* folder : {"/a/private", "/a/listed"}) {
      const SizeNode* node = reference.tree.find(root + folder);
      if (node == nullptr || !node->isLocked) return std::string(folder) + " is not locked";
    }
    return differences(root);
  });
  fs::permissions(root + "/a/private", fs::perms::owner_all);
  fs::permissions(root + "/a/listed", fs::perms::owner_all);
  EXPECT_EQ(outcome, "");
}

}  // namespace
}  // namespace pellwin
