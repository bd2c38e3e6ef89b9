#include "probe/exclusive_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::fileBytes;
using testing::ScratchFolder;

TEST(ReplaceFileAt, PassesOverPlantedNamesAndNeverWritesThroughALink) {
  ScratchFolder scratch;
  const auto victim = scratch.write("victim.txt", "precious");
  const auto hardVictim = scratch.write("hard-victim.txt", "also precious");
  fs::create_symlink(victim, scratch / temporaryName("sizes", 1));
  fs::create_hard_link(hardVictim, scratch / temporaryName("sizes", 2));
  fs::create_symlink(victim, scratch / "sizes");
  const FileDescriptor folder(::open(scratch.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));

  const auto replaced = replaceFileAt(folder.get(), "sizes", "new text", 0600, "trash");
  ASSERT_TRUE(replaced.has_value()) << sentence(replaced.error(), ErrorWording::reasonAndPath);
  EXPECT_EQ(fileBytes(victim), "precious");
  EXPECT_EQ(fileBytes(hardVictim), "also precious");
  EXPECT_FALSE(fs::is_symlink(scratch / "sizes")) << "the link is replaced, not followed";
  EXPECT_EQ(fileBytes(scratch / "sizes"), "new text");
  EXPECT_TRUE(fs::is_symlink(scratch / temporaryName("sizes", 1)));
  EXPECT_FALSE(fs::exists(scratch / temporaryName("sizes", 3)));
}

TEST(CreateExclusive, RefusesAnythingAlreadyThereALinkIncluded) {
  ScratchFolder scratch;
  const auto victim = scratch.write("victim.txt", "precious");
  fs::create_symlink(victim, scratch / "link");
  fs::create_symlink(scratch / "nowhere", scratch / "dangling");
  for (const char* name : {"victim.txt", "link", "dangling"}) {
    SCOPED_TRACE(name);
    const auto created = createExclusive(AT_FDCWD, (scratch / name).string(), 0600, name);
    ASSERT_FALSE(created.has_value());
    EXPECT_EQ(created.error().code, EEXIST);
  }
  EXPECT_FALSE(fs::exists(scratch / "nowhere"));
  EXPECT_EQ(fileBytes(victim), "precious");
  EXPECT_TRUE(createExclusive(AT_FDCWD, (scratch / "new").string(), 0600, "new").has_value());
}

}  // namespace
}  // namespace pellwin
