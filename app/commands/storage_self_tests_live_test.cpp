#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/scratch_folder.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

using testing::inventory;

// The program itself, as a user runs it, on a home where nothing exists yet: not even the
// XDG data home, which the self-tests must not leave behind either.
TEST(StorageSelfTests, TheProgramPassesBothAndLeavesAFreshHomeEmpty) {
  testing::ScratchHome scratch;
  const std::string tovrin = std::string(PELLWIN_BINARY_DIR) + "/tovrin";
  EXPECT_EQ(scratch.run(tovrin + " --check-storage --trash-test; echo \"status $?\""),
            "trash-test ok\nstatus 0\n");
  EXPECT_EQ(scratch.run(tovrin + " --check-storage --flow-test; echo \"status $?\""),
            "flow-test ok\nstatus 0\n");
  EXPECT_TRUE(inventory(scratch.home).empty()) << inventory(scratch.home).front();
}

}  // namespace
}  // namespace pellwin
