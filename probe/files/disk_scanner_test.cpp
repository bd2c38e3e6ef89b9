#include "probe/files/disk_scanner.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "probe/files/folder_size.h"
#include "testing/scratch_folder.h"
#include "testing/trash_test_support.h"
#include "testing/walk_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::allocatedOf;
using testing::allocateFile;
using testing::duBytes;
using testing::ScratchFolder;

std::string canonicalRoot(const ScratchFolder& scratch) {
  return fs::canonical(scratch.path()).string();
}

WalkResult scanned(const std::string& root, const std::string& home = "/nonexistent-home") {
  auto result = DiskScanner(home).scan(root, std::nullopt, {});
  EXPECT_TRUE(result.has_value());
  return result ? std::move(*result) : WalkResult{};
}

TEST(DiskScanner, KeepsItemsFromAMillionBytesAndFoldsTheRest) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  // Allocated sizes come in whole blocks, so pick the largest below the floor and the smallest
  // at or above it for this file system.
  const std::uint64_t block = [&] {
    allocateFile(root + "/probe", 1);
    const auto b = allocatedOf(root + "/probe");
    fs::remove(root + "/probe");
    return b;
  }();
  ASSERT_GT(block, 0u);
  const std::uint64_t below = (DiskScanner::keepBytes - 1) / block * block;
  const std::uint64_t atFloor = (DiskScanner::keepBytes + block - 1) / block * block;
  for (int i = 0; i < 20; ++i) allocateFile(root + "/small/f" + std::to_string(i), below);
  allocateFile(root + "/small/keep", atFloor);
  ASSERT_EQ(allocatedOf(root + "/small/keep"), atFloor);

  WalkResult result = scanned(root);
  const SizeNode* small = result.tree.find(root + "/small");
  ASSERT_NE(small, nullptr);
  ASSERT_EQ(small->children.size(), 1u);
  EXPECT_EQ(small->children[0].name, "keep");
  EXPECT_EQ(small->children[0].bytes, atFloor);
  EXPECT_FALSE(small->children[0].isDirectory);
  EXPECT_EQ(small->restCount, 20);
  EXPECT_EQ(small->restBytes, 20 * below);
  EXPECT_EQ(small->bytes, allocatedOf(root + "/small") + 20 * below + atFloor);
  EXPECT_EQ(result.tree.bytes, duBytes(root));
}

TEST(DiskScanner, CountsHardLinksOnceAndSaysWhenLinksLeadOutside) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  allocateFile(root + "/tree/a/shared", 5'000'000);
  fs::create_directories(root + "/tree/b");
  fs::create_hard_link(root + "/tree/a/shared", root + "/tree/b/again");
  const std::uint64_t file = allocatedOf(root + "/tree/a/shared");

  WalkResult both = scanned(root + "/tree");
  EXPECT_FALSE(both.sharesLinksOutside);
  EXPECT_EQ(both.tree.bytes, duBytes(root + "/tree"));
  std::uint64_t counted = 0;
  both.tree.forEach([&](const SizeNode& node) {
    if (!node.isDirectory) counted += node.bytes;
  });
  EXPECT_EQ(counted, file);

  fs::create_directories(root + "/outside");
  fs::rename(root + "/tree/b", root + "/outside/b");
  WalkResult one = scanned(root + "/tree");
  EXPECT_TRUE(one.sharesLinksOutside);
  EXPECT_EQ(one.tree.bytes, duBytes(root + "/tree"));
}

TEST(DiskScanner, CountsALinkByItselfAndNeverFollowsIt) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  allocateFile(root + "/big/data", 8'000'000);
  fs::create_directories(root + "/scan");
  fs::create_directory_symlink(root + "/big", root + "/scan/link");
  fs::create_symlink(root + "/big/data", root + "/scan/file-link");

  WalkResult result = scanned(root + "/scan");
  EXPECT_EQ(result.tree.bytes, allocatedOf(root + "/scan") + allocatedOf(root + "/scan/link") +
                                   allocatedOf(root + "/scan/file-link"));
  EXPECT_TRUE(result.tree.children.empty());
}

TEST(DiskScanner, LeavesOutAVolumeMountedInside) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  allocateFile(root + "/scan/kept", 2'000'000);
  testing::ScratchMount mount(root + "/scan/mnt");
  if (!mount.mounted()) GTEST_SKIP() << "needs root to mount a tmpfs";
  testing::allocateFile(root + "/scan/mnt/Cargo.toml", 0);
  testing::allocateFile(root + "/scan/mnt/huge", 8'000'000);

  WalkResult result = scanned(root + "/scan");
  EXPECT_EQ(result.tree.bytes, duBytes(root + "/scan"));
  EXPECT_EQ(result.tree.find(root + "/scan/mnt"), nullptr);
  EXPECT_EQ(result.tree.restCount, 0);  // not even in the remainder
  ASSERT_EQ(result.tree.children.size(), 1u);
  EXPECT_EQ(result.tree.children[0].name, "kept");
}

TEST(DiskScanner, ShowsAFolderItMayNotExamineAsLockedRatherThanEmpty) {
  const struct {
    const char* why;
    fs::perms perms;
  } cases[] = {
      {"no permissions at all", fs::perms::none},
      // Read without search: the names can be listed, but none of them can be examined.
      {"listable but not searchable", fs::perms::owner_read | fs::perms::others_read},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    ScratchFolder scratch;
    const std::string root = canonicalRoot(scratch);
    fs::permissions(root, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                              fs::perms::others_read | fs::perms::others_exec);
    allocateFile(root + "/scan/private/secret", 3'000'000);
    allocateFile(root + "/scan/open", 2'000'000);
    fs::permissions(root + "/scan", fs::perms::all);
    fs::permissions(root + "/scan/private", c.perms);

    const std::string outcome = testing::runUnprivileged([&] {
      auto result = DiskScanner("/nonexistent").scan(root + "/scan", std::nullopt, {});
      if (!result) return std::string("scan failed");
      const SizeNode* locked = result->tree.find(root + "/scan/private");
      if (locked == nullptr) return std::string("no node");
      return std::string(locked->isLocked ? "locked" : "open") + " " +
             std::to_string(locked->bytes) + " " + std::string(rawValue(locked->category)) + " " +
             std::to_string(locked->children.size()) + " " + std::to_string(result->tree.bytes);
    });
    fs::permissions(root + "/scan/private", fs::perms::owner_all);
    // A locked folder's own blocks are not in its node, so they are not in the total either.
    const std::uint64_t visible = allocatedOf(root + "/scan") + allocatedOf(root + "/scan/open");
    EXPECT_EQ(outcome, "locked 0 system 0 " + std::to_string(visible));
  }
}

TEST(DiskScanner, ShowsAFolderThatVanishesDuringTheWalkAsLocked) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  fs::create_directories(root + "/scan/gone");
  allocateFile(root + "/scan/stays/x", 2'000'000);
  // Without reading threads, progress is reported as each folder is entered, before it is
  // opened; sleeping past the throttle makes every folder report. (Threads that read ahead may
  // list a folder before it goes; then it is shown as it was.)
  const ScanProgressHandler progress = [&](const ScanProgress& at) {
    std::this_thread::sleep_for(std::chrono::milliseconds(110));
    if (at.currentPath == root + "/scan/gone") fs::remove(root + "/scan/gone");
  };
  auto result = walkTree(root + "/scan", std::nullopt, progress, {}, 0);
  ASSERT_TRUE(result.has_value());
  const SizeNode* gone = result->tree.find(root + "/scan/gone");
  ASSERT_NE(gone, nullptr);
  EXPECT_TRUE(gone->isLocked);
  EXPECT_EQ(gone->bytes, 0u);
  EXPECT_EQ(gone->category, StorageCategory::system);
}

TEST(DiskScanner, KeepsNamesThatAreNotTextByteForByte) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  const std::string odd = std::string("caf\xe9\n\x01name\xff.bin");
  allocateFile(root + "/scan/" + odd, 2'000'000);
  WalkResult result = scanned(root + "/scan");
  ASSERT_EQ(result.tree.children.size(), 1u);
  EXPECT_EQ(result.tree.children[0].name, odd);
  EXPECT_EQ(result.tree.children[0].path, root + "/scan/" + odd);
}

TEST(DiskScanner, NotesProjectMarkersAndSetsCategoriesAfterTheWalk) {
  ScratchFolder scratch;
  const std::string home = canonicalRoot(scratch);
  allocateFile(home + "/code/app/node_modules/pkg/index.js", 2'000'000);
  allocateFile(home + "/code/app/package.json", 0);
  allocateFile(home + "/code/app/yarn.lock", 0);
  fs::create_directories(home + "/code/app/ios");
  allocateFile(home + "/Documents/report.pdf", 3'000'000);

  auto result = DiskScanner(home).scan(home, std::nullopt, {});
  ASSERT_TRUE(result.has_value());
  const SizeNode* app = result->tree.find(home + "/code/app");
  ASSERT_NE(app, nullptr);
  ASSERT_TRUE(app->markers.has_value());
  std::vector<std::string> markers = *app->markers;
  std::sort(markers.begin(), markers.end());
  EXPECT_EQ(markers, (std::vector<std::string>{"ios", "package.json", "yarn.lock"}));
  EXPECT_EQ(result->tree.find(home + "/code/app/node_modules")->category,
            StorageCategory::developer);
  EXPECT_EQ(result->tree.find(home + "/Documents")->category, StorageCategory::yourFiles);
  EXPECT_EQ(result->tree.find(home + "/code")->category, StorageCategory::other);
  EXPECT_FALSE(result->tree.find(home + "/code")->markers.has_value());
}

TEST(DiskScanner, SortsChildrenBySizeThenName) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  allocateFile(root + "/b", 2'000'000);
  allocateFile(root + "/a", 2'000'000);
  allocateFile(root + "/c", 4'000'000);
  WalkResult result = scanned(root);
  std::vector<std::string> names;
  for (const SizeNode& child : result.tree.children) names.push_back(child.name);
  EXPECT_EQ(names, (std::vector<std::string>{"c", "a", "b"}));
}

TEST(DiskScanner, ReportsProgressThrottledWithTheFirstFolderAlways) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  for (int i = 0; i < 200; ++i) allocateFile(root + "/d" + std::to_string(i) + "/f", 4096);
  std::vector<ScanProgress> reports;
  const auto started = std::chrono::steady_clock::now();
  auto result = DiskScanner("/h").scan(root, std::nullopt,
                                       [&](const ScanProgress& p) { reports.push_back(p); });
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  ASSERT_TRUE(result.has_value());
  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports[0].currentPath, root);
  EXPECT_EQ(reports[0].items, 0);
  EXPECT_LE(reports.size(), static_cast<std::size_t>(seconds / 0.1) + 1);
}

TEST(DiskScanner, StopsWhenCancelledAndKeepsNothing) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  for (int i = 0; i < 5; ++i) fs::create_directories(root + "/d" + std::to_string(i) + "/e");
  std::stop_source stop;
  stop.request_stop();
  auto before = DiskScanner("/h").scan(root, std::nullopt, {}, stop.get_token());
  ASSERT_FALSE(before.has_value());
  EXPECT_EQ(before.error().kind, ScanErrorKind::cancelled);

  std::stop_source during;
  auto midway = DiskScanner("/h").scan(
      root, std::nullopt, [&](const ScanProgress&) { during.request_stop(); }, during.get_token());
  ASSERT_FALSE(midway.has_value());
  EXPECT_EQ(midway.error().kind, ScanErrorKind::cancelled);
}

TEST(DiskScanner, FailsWithThePathWhenTheRootIsMissing) {
  auto result = DiskScanner("/h").scan("/nonexistent/tovrin-root", std::nullopt, {});
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error().kind, ScanErrorKind::rootNotFound);
  EXPECT_EQ(result.error().description(), "No such file or directory: /nonexistent/tovrin-root");
}

TEST(DiskScanner, ShowsPathsWithoutTheStripPrefixAndRescansThroughIt) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  allocateFile(root + "/Users/ann/big", 2'000'000);
  auto result = DiskScanner("/Users/ann").scan(root + "/", root, {});
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->tree.path, "/");
  EXPECT_EQ(result->tree.name, "/");
  const SizeNode* users = result->tree.find("/Users");
  ASSERT_NE(users, nullptr);
  EXPECT_EQ(users->name, "Users");
  ASSERT_NE(result->tree.find("/Users/ann/big"), nullptr);
  EXPECT_EQ(result->tree.find("/Users/ann")->category, StorageCategory::other);

  allocateFile(root + "/Users/ann/more", 3'000'000);
  auto again = DiskScanner("/Users/ann").rescan(*users, root, {});
  ASSERT_TRUE(again.has_value());
  EXPECT_EQ(again->tree.path, "/Users");
  SizeNode spliced = result->tree.replacing("/Users", again->tree);
  EXPECT_EQ(spliced.bytes, duBytes(root));
}

TEST(DiskScanner, WalksATenThousandDeepTreeWithoutRunningOutOfStackOrDescriptors) {
  ScratchFolder scratch;
  // On a tmpfs when this process may mount one: ext4 takes tens of seconds to remove a chain
  // this deep, a tmpfs goes at once.
  testing::ScratchMount mount(canonicalRoot(scratch) + "/deep");
  const std::string root = canonicalRoot(scratch) + "/deep";
  constexpr int kDepth = 10'000;
  {
    FileDescriptor deepest = testing::makeChain(root, kDepth, "d");
    ASSERT_TRUE(deepest.valid());
    const int fd = ::openat(deepest.get(), "model.gguf", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::posix_fallocate(fd, 0, 2'000'000), 0);
    ::close(fd);
  }
  auto result = DiskScanner("/h").scan(root, std::nullopt, {});
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->tree.bytes, duBytes(root));
  int depth = 0;
  const SizeNode* at = &result->tree;
  while (!at->children.empty()) {
    at = &at->children[0];
    ++depth;
  }
  EXPECT_EQ(depth, kDepth + 1);
  EXPECT_EQ(at->name, "model.gguf");
  EXPECT_EQ(FolderSize::allocatedBytes(root), result->tree.bytes);

  if (!mount.mounted()) {
    FileDescriptor top(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_TRUE(removeTree(top.get(), "d").has_value());
  }
}

TEST(FolderSize, AddsUpAFolderLikeTheWalkAndAFileByItself) {
  ScratchFolder scratch;
  const std::string root = canonicalRoot(scratch);
  allocateFile(root + "/t/a/x", 3'000'000);
  allocateFile(root + "/t/b", 500'000);
  fs::create_hard_link(root + "/t/a/x", root + "/t/x2");
  EXPECT_EQ(FolderSize::allocatedBytes(root + "/t"), duBytes(root + "/t"));
  EXPECT_EQ(FolderSize::allocatedBytes(root + "/t/b"), allocatedOf(root + "/t/b"));
  EXPECT_EQ(FolderSize::allocatedBytes(root + "/missing"), 0u);
  fs::create_directory_symlink(root + "/t", root + "/link");
  EXPECT_EQ(FolderSize::allocatedBytes(root + "/link"), allocatedOf(root + "/link"));
}

}  // namespace
}  // namespace pellwin
