#include "probe/files/freeable_size.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

std::uint64_t duBytes(const fs::path& path) {
  const std::string command = "du -s -x -B1 '" + path.string() + "'";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return 0;
  unsigned long long bytes = 0;
  if (std::fscanf(pipe, "%llu", &bytes) != 1) bytes = 0;
  ::pclose(pipe);
  return bytes;
}

std::uint64_t blocksOf(const fs::path& path) {
  struct stat info {};
  ::lstat(path.c_str(), &info);
  return static_cast<std::uint64_t>(info.st_blocks) * 512;
}

void setModified(const fs::path& path, double seconds) {
  const timespec times[2] = {{static_cast<time_t>(seconds), 0}, {static_cast<time_t>(seconds), 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

TEST(FreeableSize, AgreesWithDuOnATreeWithoutSharedFiles) {
  ScratchFolder scratch;
  scratch.write("cache/a.bin", std::string(300'000, 'a'));
  scratch.write("cache/sub/b.bin", std::string(70'000, 'b'));
  scratch.write("cache/sub/deeper/c.txt", "c");
  scratch.write("cache/empty.txt", "");
  fs::create_directories(scratch / "cache/sub/empty-folder");
  const auto size = FreeableSize::measure((scratch / "cache").string());
  ASSERT_TRUE(size);
  EXPECT_EQ(size->bytes, duBytes(scratch / "cache"));
  EXPECT_GT(size->bytes, 370'000u);
}

TEST(FreeableSize, FilesLinkedFromOutsideDoNotCountAndFilesLinkedWithinCountOnce) {
  ScratchFolder scratch;
  const fs::path shared = scratch.write("store/shared.bin", std::string(1'000'000, 's'));
  const fs::path own = scratch.write("store/own.bin", std::string(200'000, 'o'));
  fs::create_directories(scratch / "project");
  fs::create_hard_link(shared, scratch / "project/node_modules-shared.bin");
  fs::create_directories(scratch / "store/copies");
  fs::create_hard_link(own, scratch / "store/copies/own-again.bin");
  const auto store = FreeableSize::measure((scratch / "store").string());
  ASSERT_TRUE(store);
  EXPECT_EQ(store->bytes,
            blocksOf(scratch / "store") + blocksOf(scratch / "store/copies") + blocksOf(own))
      << "the shared file stays on disk while the project links it";
  const auto file = FreeableSize::measure(shared.string());
  ASSERT_TRUE(file);
  EXPECT_EQ(file->bytes, 0u) << "removing one of two links frees nothing";
}

TEST(FreeableSize, LinksAreMeasuredAsThemselvesAndMissingPathsAreNone) {
  ScratchFolder scratch;
  scratch.write("big/data.bin", std::string(2'000'000, 'd'));
  fs::create_directories(scratch / "cache");
  fs::create_directory_symlink(scratch / "big", scratch / "cache/link-to-big");
  const auto cache = FreeableSize::measure((scratch / "cache").string());
  ASSERT_TRUE(cache);
  EXPECT_LT(cache->bytes, 100'000u);
  const auto link = FreeableSize::measure((scratch / "cache/link-to-big").string());
  ASSERT_TRUE(link);
  EXPECT_LT(link->bytes, 100'000u);
  EXPECT_FALSE(FreeableSize::measure((scratch / "nothing-here").string()));
}

TEST(FreeableSize, NewestModificationComesFromAnywhereInside) {
  ScratchFolder scratch;
  const fs::path old = scratch.write("logs/session/old.log", "x");
  const fs::path fresh = scratch.write("logs/session/inner/fresh.log", "y");
  setModified(old, 1'000'000);
  setModified(fresh, 2'000'000);
  setModified(scratch / "logs/session/inner", 1'000'000);
  setModified(scratch / "logs/session", 1'000'000);
  setModified(scratch / "logs", 1'000'000);
  const auto size = FreeableSize::measure((scratch / "logs").string());
  ASSERT_TRUE(size);
  EXPECT_EQ(size->newestModified, 2'000'000);
}

TEST(FreeableSize, AMountedDiskInsideIsNeitherCountedNorWalked) {
  ScratchFolder scratch;
  fs::create_directories(scratch / "cache/doc");
  scratch.write("cache/real.bin", std::string(100'000, 'r'));
  if (::mount("tovrin-test", (scratch / "cache/doc").c_str(), "tmpfs", 0, "size=8m") != 0) {
    GTEST_SKIP() << "cannot mount a tmpfs here";
  }
  scratch.write("cache/doc/inside.bin", std::string(4'000'000, 'm'));
  const auto size = FreeableSize::measure((scratch / "cache").string());
  ::umount((scratch / "cache/doc").c_str());
  ASSERT_TRUE(size);
  EXPECT_EQ(size->bytes, blocksOf(scratch / "cache") + blocksOf(scratch / "cache/real.bin"));
}

// Deeper than PATH_MAX allows to spell, and deeper than the open-file limit set here, so
// neither a walk by path nor one descriptor per level gets to the bottom.
TEST(FreeableSize, ATreeTooDeepForPathsOrOneDescriptorPerLevelIsWalkedWhole) {
  ScratchFolder scratch;
  fs::create_directories(scratch / "deep");
  int fd = ::open((scratch / "deep").c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_GE(fd, 0);
  constexpr int depth = 1'000;
  constexpr const char* name = "folder-0123456789";
  for (int i = 0; i < depth; ++i) {
    ASSERT_EQ(::mkdirat(fd, name, 0755), 0);
    const int next = ::openat(fd, name, O_RDONLY | O_DIRECTORY);
    ::close(fd);
    ASSERT_GE(next, 0);
    fd = next;
  }
  const int file = ::openat(fd, "bottom.bin", O_WRONLY | O_CREAT, 0644);
  ASSERT_GE(file, 0);
  const std::string data(50'000, 'z');
  ASSERT_EQ(::write(file, data.data(), data.size()), static_cast<ssize_t>(data.size()));
  ::close(file);

  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit lowered{.rlim_cur = 200, .rlim_max = limit.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &lowered);
  const auto size = FreeableSize::measure((scratch / "deep").string());
  ::setrlimit(RLIMIT_NOFILE, &limit);
  ASSERT_TRUE(size);
  EXPECT_EQ(size->bytes, duBytes(scratch / "deep"));
  EXPECT_GE(size->bytes, depth * 4096u + 50'000);

  // Path-based removal of such a tree takes minutes; climbing back up by descriptor does not.
  ::unlinkat(fd, "bottom.bin", 0);
  for (int i = 0; i < depth; ++i) {
    const int parent = ::openat(fd, "..", O_RDONLY | O_DIRECTORY);
    ::close(fd);
    ASSERT_GE(parent, 0);
    ::unlinkat(parent, name, AT_REMOVEDIR);
    fd = parent;
  }
  ::close(fd);
}

TEST(FreeableSize, AFolderThatCannotBeReadCountsOnlyItself) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads every folder";
  ScratchFolder scratch;
  scratch.write("locked/inside.bin", std::string(500'000, 'l'));
  fs::permissions(scratch / "locked", fs::perms::none);
  const auto size = FreeableSize::measure((scratch / "locked").string());
  ASSERT_TRUE(size);
  EXPECT_EQ(size->bytes, blocksOf(scratch / "locked"));
}

}  // namespace
}  // namespace pellwin
