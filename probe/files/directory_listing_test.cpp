#include "probe/files/directory_listing.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "probe/file_descriptor.h"
#include "testing/scratch_folder.h"
#include "testing/walk_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

// "complete a b", or "incomplete <operation> <path> <errno>" followed by the names that were
// read; names in the order of a sorted listing.
std::string listed(const std::string& folder) {
  const auto result = DirectoryListing::list(folder);
  const auto* entries = std::get_if<DirectoryListing::Entries>(&result);
  if (entries == nullptr) return "not listed";
  std::string text = entries->incomplete ? "incomplete " + entries->incomplete->operation + " " +
                                               entries->incomplete->path + " " +
                                               std::to_string(entries->incomplete->code)
                                         : "complete";
  std::vector<std::string> names;
  for (const auto& entry : entries->entries) names.push_back(entry.name);
  std::ranges::sort(names);
  for (const auto& name : names) text += " " + name;
  return text;
}

TEST(DirectoryListing, SaysWhenAnEntryCouldNotBeExamined) {
  ScratchFolder scratch;
  const std::string root = fs::canonical(scratch.path()).string();
  fs::permissions(root, fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
  scratch.write("whole/a", "1");
  scratch.write("whole/b", "2");
  scratch.write("unsearchable/c", "3");
  fs::permissions(root + "/whole",
                  fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
  // Read without search: the names can be listed, but none of them can be examined.
  fs::permissions(root + "/unsearchable", fs::perms::owner_read | fs::perms::others_read);

  const std::string outcome = testing::runUnprivileged(
      [&] { return listed(root + "/whole") + "\n" + listed(root + "/unsearchable"); });
  fs::permissions(root + "/unsearchable", fs::perms::owner_all);
  EXPECT_EQ(outcome,
            "complete a b\nincomplete lstat " + root + "/unsearchable/c " + std::to_string(EACCES));
}

TEST(DirectoryListing, SaysWhenReadingTheFolderFails) {
  ScratchFolder scratch;
  scratch.write("a", "1");
  const std::string folder = scratch.path().string();
  // A descriptor opened only for its path cannot be read: getdents64 fails with EBADF.
  const FileDescriptor pathOnly(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  ASSERT_TRUE(pathOnly.valid());
  std::vector<char> buffer;
  int seen = 0;
  const auto result = DirectoryListing::read(pathOnly.get(), folder, buffer,
                                             [&](std::string_view, const struct stat&) { ++seen; });
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error(), (SystemError{.operation = "read", .path = folder, .code = EBADF}));
  EXPECT_EQ(seen, 0);
}

}  // namespace
}  // namespace pellwin
