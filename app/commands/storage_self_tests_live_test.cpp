#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

// Every path under `root`, links not followed, with a file's size: enough to see that a run
// left nothing behind and changed nothing.
std::vector<std::string> inventory(const std::string& root) {
  std::vector<std::string> found;
  std::error_code error;
  if (!fs::exists(root, error)) return found;
  for (auto it = fs::recursive_directory_iterator(root, error);
       it != fs::recursive_directory_iterator(); it.increment(error)) {
    const auto status = it->symlink_status(error);
    found.push_back(it->path().string() + (fs::is_regular_file(status)
                                               ? " " + std::to_string(it->file_size(error))
                                               : ""));
  }
  std::ranges::sort(found);
  return found;
}

// The program itself, as a user runs it, on a home where nothing exists yet: not even the
// XDG data home, which the self-tests must not leave behind either.
TEST(StorageSelfTests, TheProgramPassesBothAndLeavesAFreshHomeEmpty) {
  testing::ScratchHome scratch;
  const std::string tovrin = std::string(PELLWIN_BINARY_DIR) + "/app/tovrin";
  EXPECT_EQ(scratch.run(tovrin + " --check-storage --trash-test; echo \"status $?\""),
            "trash-test ok\nstatus 0\n");
  EXPECT_EQ(scratch.run(tovrin + " --check-storage --flow-test; echo \"status $?\""),
            "flow-test ok\nstatus 0\n");
  EXPECT_TRUE(inventory(scratch.home).empty()) << inventory(scratch.home).front();
}

}  // namespace
}  // namespace pellwin
