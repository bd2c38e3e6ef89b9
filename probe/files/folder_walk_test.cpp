#include "probe/files/folder_walk.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

FileDescriptor openFolder(const fs::path& path) {
  return FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

TEST(RemoveTree, RemovesEverythingButNeverFollowsALink) {
  ScratchFolder scratch;
  scratch.write("outside/precious/a", "a");
  scratch.write("victim/sub/file", "f");
  scratch.write("victim/sub/deeper/file", "f");
  fs::create_directory_symlink(scratch / "outside/precious", scratch / "victim/sub/to-precious");
  fs::create_symlink(scratch / "outside/precious/a", scratch / "victim/to-a");
  fs::create_directory_symlink(scratch / "outside", scratch / "top-link");
  const FileDescriptor parent = openFolder(scratch.path());

  EXPECT_TRUE(removeTree(parent.get(), "victim").has_value());
  EXPECT_TRUE(removeTree(parent.get(), "top-link").has_value());
  EXPECT_TRUE(removeTree(parent.get(), "never-was").has_value());
  EXPECT_FALSE(fs::exists(scratch / "victim"));
  EXPECT_FALSE(fs::is_symlink(scratch / "top-link"));
  EXPECT_TRUE(fs::exists(scratch / "outside/precious/a"));
}

TEST(RemoveTree, HandlesNestingDeeperThanAPathCanSpell) {
  ScratchFolder scratch;
  fs::create_directory(scratch / "deep");
  FileDescriptor current = openFolder(scratch / "deep");
  for (int depth = 0; depth < 1200; ++depth) {  // 1200 × "level/" is past PATH_MAX
    ASSERT_EQ(::mkdirat(current.get(), "level", 0700), 0);
    current = FileDescriptor(::openat(current.get(), "level", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_TRUE(current.valid());
  }
  ASSERT_EQ(::close(::openat(current.get(), "leaf", O_CREAT | O_WRONLY | O_CLOEXEC, 0600)), 0);
  const FileDescriptor parent = openFolder(scratch.path());
  const auto removed = removeTree(parent.get(), "deep");
  EXPECT_TRUE(removed.has_value()) << removed.error();
  EXPECT_FALSE(fs::exists(scratch / "deep"));
}

TEST(RemoveTree, LeavesAMountedDiskAndEverythingAroundItAndSaysSo) {
  ScratchFolder scratch;
  scratch.write("cache/a/file", "f");
  testing::ScratchMount mount((scratch / "cache/a/mounted").string());
  if (!mount.mounted()) GTEST_SKIP() << "mounting a scratch tmpfs needs root";
  scratch.write("cache/a/mounted/theirs", "t");
  scratch.write("cache/b/file", "f");
  const FileDescriptor parent = openFolder(scratch.path());
  const auto removed = removeTree(parent.get(), "cache");
  ASSERT_FALSE(removed.has_value());
  EXPECT_EQ(removed.error(), "Another disk or folder is mounted inside it, at cache/a/mounted");
  EXPECT_TRUE(fs::exists(scratch / "cache/a/mounted/theirs"));
  EXPECT_FALSE(fs::exists(scratch / "cache/a/file"));
  EXPECT_FALSE(fs::exists(scratch / "cache/b"));
}

TEST(RemoveTree, OpensUpReadOnlyFoldersTheUserOwns) {
  if (::geteuid() == 0) GTEST_SKIP() << "root ignores folder permissions";
  ScratchFolder scratch;
  scratch.write("gomod/pkg@v1/go.mod", "module x");
  ::chmod((scratch / "gomod/pkg@v1/go.mod").c_str(), 0444);
  ::chmod((scratch / "gomod/pkg@v1").c_str(), 0555);
  ::chmod((scratch / "gomod").c_str(), 0555);
  const FileDescriptor parent = openFolder(scratch.path());
  const auto removed = removeTree(parent.get(), "gomod");
  EXPECT_TRUE(removed.has_value()) << removed.error();
  EXPECT_FALSE(fs::exists(scratch / "gomod"));
}

TEST(OpenFolderWithoutLinks, FailsOnALinkAnywhereInThePath) {
  ScratchFolder scratch;
  scratch.write("real/inner/file", "x");
  fs::create_directory_symlink(scratch / "real", scratch / "link");
  const std::string base = fs::canonical(scratch.path()).string();
  EXPECT_TRUE(openFolderWithoutLinks(base + "/real/inner", O_PATH).has_value());
  EXPECT_TRUE(openFolderWithoutLinks(base + "//real/./inner/", O_RDONLY).has_value());
  EXPECT_FALSE(openFolderWithoutLinks(base + "/link/inner", O_PATH).has_value());
  EXPECT_FALSE(openFolderWithoutLinks(base + "/link", O_PATH).has_value());
  EXPECT_FALSE(openFolderWithoutLinks("relative/path", O_PATH).has_value());
}

}  // namespace
}  // namespace pellwin
