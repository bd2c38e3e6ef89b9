#include "probe/files/freedesktop_trash.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <sstream>

#include "probe/files/trash_info.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::fileBytes;
using testing::ScratchHome;
using testing::ScratchMount;

mode_t modeOf(const std::string& path) {
  struct stat info {};
  ::lstat(path.c_str(), &info);
  return info.st_mode & 07777;
}

// The number trash-restore offers for an original path, or -1.
int restoreIndex(const std::string& listing, const std::string& original) {
  std::istringstream lines(listing);
  std::string line;
  while (std::getline(lines, line)) {
    if (line.ends_with(" " + original)) return std::stoi(line);
  }
  return -1;
}

TEST(FreedesktopTrash, MovesIntoTheHomeTrashSoThatTrashCliListsAndRestoresIt) {
  ScratchHome scratch;
  const std::string folder = scratch.home + "/proj/build";
  const std::string file = scratch.home + "/docs/report 100%.pdf";
  scratch.scratch.write("home/proj/build/out/a.o", std::string(20000, 'x'));
  scratch.scratch.write("home/proj/build/b.o", "b");
  scratch.scratch.write("home/docs/report 100%.pdf", "pdf");
  const FreedesktopTrash trash(scratch.dataHome, ::getuid());

  const auto movedFolder = trash.moveToTrash(folder);
  const auto movedFile = trash.moveToTrash(file);
  ASSERT_TRUE(movedFolder.has_value()) << movedFolder.error();
  ASSERT_TRUE(movedFile.has_value()) << movedFile.error();

  EXPECT_FALSE(fs::exists(folder));
  EXPECT_FALSE(fs::exists(file));
  EXPECT_EQ(movedFolder->trashDirectory, scratch.trash());
  EXPECT_EQ(fileBytes(scratch.trash() + "/files/build/out/a.o").size(), 20000u);
  const std::string info = fileBytes(scratch.trash() + "/info/report 100%.pdf.trashinfo");
  EXPECT_TRUE(std::regex_match(
      info, std::regex("\\[Trash Info\\]\nPath=" + scratch.home +
                       "/docs/report%20100%25.pdf\n"
                       "DeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n")))
      << info;
  for (const char* made : {"", "/files", "/info"}) {
    EXPECT_EQ(modeOf(scratch.trash() + made), 0700u) << made;
  }

  // directorysizes holds the folder (not the file) with what du -B1 counts.
  const auto sizes = TrashInfo::parseDirectorySizes(fileBytes(scratch.trash() + "/directorysizes"));
  ASSERT_EQ(sizes.size(), 1u);
  EXPECT_EQ(sizes[0].name, "build");
  const std::string du = scratch.run("du -B1 -s '" + scratch.trash() + "/files/build'");
  EXPECT_EQ(std::to_string(sizes[0].bytes), du.substr(0, du.find('\t')));

  const std::string listing = scratch.run("trash-list");
  EXPECT_NE(listing.find(" " + folder + "\n"), std::string::npos) << listing;
  EXPECT_NE(listing.find(" " + file + "\n"), std::string::npos) << listing;

  const std::string offered = scratch.run("trash-restore '" + scratch.home + "/docs'", "\n");
  const int index = restoreIndex(offered, file);
  ASSERT_GE(index, 0) << offered;
  (void)scratch.run("trash-restore '" + scratch.home + "/docs'", std::to_string(index) + "\n");
  EXPECT_EQ(fileBytes(file), "pdf");
  EXPECT_FALSE(fs::exists(scratch.trash() + "/info/report 100%.pdf.trashinfo"));
}

TEST(FreedesktopTrash, NeverOverwritesAnEarlierEntryOrAnOrphanAndKeepsOddNamesExact) {
  ScratchHome scratch;
  const FreedesktopTrash trash(scratch.dataHome, ::getuid());
  const std::string dup = scratch.home + "/dup";
  for (int round = 1; round <= 3; ++round) {
    scratch.scratch.write("home/dup", std::to_string(round));
    ASSERT_TRUE(trash.moveToTrash(dup).has_value());
  }
  // An item left without its info file and an info file left without its item both keep
  // their names.
  scratch.scratch.write("home/.local/share/Trash/files/dup.4", "orphan");
  scratch.scratch.write("home/.local/share/Trash/info/dup.5.trashinfo", "[Trash Info]\n");
  scratch.scratch.write("home/dup", "4");
  const auto fourth = trash.moveToTrash(dup);
  ASSERT_TRUE(fourth.has_value());
  EXPECT_EQ(fourth->name, "dup.6");
  EXPECT_EQ(fileBytes(scratch.trash() + "/files/dup"), "1");
  EXPECT_EQ(fileBytes(scratch.trash() + "/files/dup.3"), "3");
  EXPECT_EQ(fileBytes(scratch.trash() + "/files/dup.4"), "orphan");
  EXPECT_EQ(fileBytes(scratch.trash() + "/files/dup.6"), "4");

  const std::string names[] = {"line\nbreak", "caf\xc3\xa9 \xe2\x82\xac", "not utf8 \xff\xfe",
                               std::string(250, 'n')};
  for (const std::string& name : names) {
    SCOPED_TRACE(TrashInfo::percentEncode(name));
    scratch.scratch.write("home/odd/" + name, "odd");
    const auto moved = trash.moveToTrash(scratch.home + "/odd/" + name);
    ASSERT_TRUE(moved.has_value()) << moved.error();
    EXPECT_LE(moved->name.size() + std::string(".trashinfo").size(), 255u);
    const auto entries = FreedesktopTrash::entries(scratch.trash());
    const auto it = std::find_if(entries.begin(), entries.end(),
                                 [&](const auto& e) { return e.name == moved->name; });
    ASSERT_NE(it, entries.end());
    EXPECT_EQ(it->originalPath, scratch.home + "/odd/" + name);
  }
  // trash-restore puts a non-UTF-8 name back byte for byte.
  const std::string offered = scratch.run("trash-restore '" + scratch.home + "/odd'", "\n");
  const int index = restoreIndex(offered, scratch.home + "/odd/caf\xc3\xa9 \xe2\x82\xac");
  ASSERT_GE(index, 0) << offered;
  (void)scratch.run("trash-restore '" + scratch.home + "/odd'", std::to_string(index) + "\n");
  EXPECT_EQ(fileBytes(scratch.home + "/odd/caf\xc3\xa9 \xe2\x82\xac"), "odd");
}

TEST(FreedesktopTrash, RefusesTheTrashItselfAndLinksAndFolderPathsThroughLinks) {
  ScratchHome scratch;
  const FreedesktopTrash trash(scratch.dataHome, ::getuid());
  scratch.scratch.write("home/a/file", "x");
  ASSERT_TRUE(trash.moveToTrash(scratch.home + "/a/file").has_value());
  fs::create_directory_symlink(scratch.home + "/a", scratch.home + "/via");
  scratch.scratch.write("home/a/kept", "kept");
  fs::create_symlink(scratch.home + "/a/kept", scratch.home + "/a/link");

  const struct {
    const char* why;
    std::string path;
  } cases[] = {
      {"the trash", scratch.trash()},
      {"inside the trash", scratch.trash() + "/files/file"},
      {"around the trash", scratch.dataHome},
      {"a link", scratch.home + "/a/link"},
      {"a link in the middle", scratch.home + "/via/kept"},
      {"relative", "home/a/kept"},
      {"the root", "/"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_FALSE(trash.moveToTrash(c.path).has_value());
  }
  EXPECT_TRUE(fs::exists(scratch.trash() + "/files/file"));
  EXPECT_EQ(fileBytes(scratch.home + "/a/kept"), "kept");
  EXPECT_TRUE(fs::is_symlink(scratch.home + "/a/link"));
}

TEST(FreedesktopTrash, AnItemOnAnotherVolumeGoesToThatVolumesTrashAndIsNeverCopied) {
  ScratchHome scratch;
  const std::string volume = scratch.home + "/usb";
  ScratchMount mount(volume);
  if (!mount.mounted()) GTEST_SKIP() << "mounting a scratch tmpfs needs root";
  const FreedesktopTrash trash(scratch.dataHome, ::getuid());
  const std::string uid = std::to_string(::getuid());

  const struct {
    const char* why;
    std::function<void()> prepare;
    std::string expectedTrash;
  } cases[] = {
      {"no .Trash: the user's own .Trash-uid", [] {}, volume + "/.Trash-" + uid},
      {"a sticky .Trash: its uid folder",
       [&] {
         fs::create_directory(volume + "/.Trash");
         ::chmod((volume + "/.Trash").c_str(), 01777);
       },
       volume + "/.Trash/" + uid},
      {".Trash without the sticky bit is not trusted",
       [&] { ::chmod((volume + "/.Trash").c_str(), 0777); }, volume + "/.Trash-" + uid},
      {"a .Trash that is a link is not trusted",
       [&] {
         fs::rename(volume + "/.Trash", volume + "/real");
         ::chmod((volume + "/real").c_str(), 01777);
         fs::create_directory_symlink(volume + "/real", volume + "/.Trash");
       },
       volume + "/.Trash-" + uid},
  };
  int round = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    c.prepare();
    const std::string name = "item" + std::to_string(++round);
    scratch.scratch.write("home/usb/dir/" + name, name);
    const auto moved = trash.moveToTrash(volume + "/dir/" + name);
    ASSERT_TRUE(moved.has_value()) << moved.error();
    EXPECT_EQ(moved->trashDirectory, c.expectedTrash);
    EXPECT_EQ(fileBytes(c.expectedTrash + "/files/" + name), name);
    // Relative to the volume's top folder, as the specification asks of volume trashes.
    EXPECT_NE(fileBytes(c.expectedTrash + "/info/" + name + ".trashinfo")
                  .find("\nPath=dir/" + name + "\n"),
              std::string::npos);
    EXPECT_EQ(FreedesktopTrash::entries(c.expectedTrash).front().originalPath,
              volume + "/dir/" + name);
  }
  EXPECT_FALSE(fs::exists(scratch.trash())) << "nothing went through the home trash";
  const std::string listing = scratch.run("trash-list");
  EXPECT_NE(listing.find(" " + volume + "/dir/item1\n"), std::string::npos) << listing;

  // No trash can be made on the volume: the item stays where it is.
  fs::remove_all(volume + "/.Trash");
  fs::remove_all(volume + "/.Trash-" + uid);
  scratch.scratch.write("home/usb/.Trash-" + uid, "a file where the trash would go");
  scratch.scratch.write("home/usb/dir/stays", "stays");
  const auto refused = trash.moveToTrash(volume + "/dir/stays");
  ASSERT_FALSE(refused.has_value());
  EXPECT_EQ(refused.error(),
            "It's on a disk whose Trash Tovrin can't use, so it was left in place");
  EXPECT_EQ(fileBytes(volume + "/dir/stays"), "stays");
  EXPECT_FALSE(fs::exists(scratch.trash()));
  EXPECT_EQ(FreedesktopTrash::mountTop(volume + "/dir"), volume);
}

TEST(FreedesktopTrash, EraseRemovesTheItemItsInfoAndItsSizeLine) {
  ScratchHome scratch;
  const FreedesktopTrash trash(scratch.dataHome, ::getuid());
  scratch.scratch.write("home/one/deep/file", "1");
  scratch.scratch.write("home/two/file", "2");
  const auto one = trash.moveToTrash(scratch.home + "/one");
  const auto two = trash.moveToTrash(scratch.home + "/two");
  ASSERT_TRUE(one && two);
  ASSERT_TRUE(FreedesktopTrash::erase(*one).has_value());
  EXPECT_FALSE(fs::exists(scratch.trash() + "/files/one"));
  EXPECT_FALSE(fs::exists(scratch.trash() + "/info/one.trashinfo"));
  const auto sizes = TrashInfo::parseDirectorySizes(fileBytes(scratch.trash() + "/directorysizes"));
  ASSERT_EQ(sizes.size(), 1u);
  EXPECT_EQ(sizes[0].name, "two");
  ASSERT_TRUE(FreedesktopTrash::erase(*two).has_value());
  EXPECT_FALSE(fs::exists(scratch.trash() + "/directorysizes"));
  EXPECT_TRUE(fs::is_empty(scratch.trash() + "/files"));
  EXPECT_FALSE(
      FreedesktopTrash::erase({.trashDirectory = scratch.trash(), .name = ".."}).has_value());
}

TEST(FreedesktopTrash, MovesAFolderWithoutWritePermissionAndGivesItsModeBack) {
  if (::geteuid() == 0) GTEST_SKIP() << "root ignores folder permissions";
  ScratchHome scratch;
  const FreedesktopTrash trash(scratch.dataHome, ::getuid());
  scratch.scratch.write("home/readonly/file", "x");
  ::chmod((scratch.home + "/readonly").c_str(), 0555);
  const auto moved = trash.moveToTrash(scratch.home + "/readonly");
  ASSERT_TRUE(moved.has_value()) << moved.error();
  EXPECT_EQ(modeOf(scratch.trash() + "/files/readonly"), 0555u);
}

}  // namespace
}  // namespace pellwin
