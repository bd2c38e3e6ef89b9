#include "probe/files/scan_task.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "testing/scratch_folder.h"
#include "testing/walk_test_support.h"

namespace pellwin {
namespace {

TEST(ScanTask, WalksOnALowPriorityThreadAndGivesTheSameTree) {
  testing::ScratchFolder scratch;
  const std::string root = std::filesystem::canonical(scratch.path()).string();
  testing::allocateFile(root + "/a/big", 3'000'000);
  const int callerNiceness = ::getpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)));
  std::atomic<int> niceness = -100;
  std::atomic<bool> otherThread = false;
  const auto caller = std::this_thread::get_id();
  ScanTask task(DiskScanner("/h"), root, std::nullopt, [&](const ScanProgress&) {
    niceness = ::getpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)));
    otherThread = std::this_thread::get_id() != caller;
  });
  auto result = task.result();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->tree, DiskScanner("/h").scan(root, std::nullopt, {})->tree);
  EXPECT_GE(niceness.load(), 10);
  EXPECT_TRUE(otherThread.load());
  EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid))),
            callerNiceness);  // the caller's own thread is untouched
}

TEST(ScanTask, StopsWhenCancelled) {
  testing::ScratchFolder scratch;
  const std::string root = std::filesystem::canonical(scratch.path()).string();
  std::filesystem::create_directories(root + "/a/b");
  std::atomic<bool> cancelled = false;
  ScanTask task(DiskScanner("/h"), root, std::nullopt, [&](const ScanProgress&) {
    while (!cancelled) std::this_thread::yield();
  });
  task.cancel();
  cancelled = true;
  auto result = task.result();
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error().kind, ScanErrorKind::cancelled);
}

TEST(ScanTask, RescansOneFolder) {
  testing::ScratchFolder scratch;
  const std::string root = std::filesystem::canonical(scratch.path()).string();
  testing::allocateFile(root + "/a/big", 3'000'000);
  ScanTask task(DiskScanner("/h"), SizeNode{.path = "/a"}, root, {});
  auto result = task.result();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(result->tree.path, "/a");
  EXPECT_EQ(result->tree.children.at(0).name, "big");
}

}  // namespace
}  // namespace pellwin
