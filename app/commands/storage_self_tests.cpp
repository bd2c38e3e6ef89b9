#include "app/commands/storage_self_tests.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>

#include "app/commands/self_test_scratch.h"
#include "core/base/data_folder.h"
#include "probe/files/live_removal_disk.h"
#include "probe/files/trasher.h"

namespace pellwin {

namespace {

namespace fs = std::filesystem;

// The scratch folder's "sub" is in the Trash whole: its nested folder inside, its link still a
// link.
bool folderIsInTrash(const SelfTestScratch& scratch, const std::string& original) {
  const auto entries = scratch.newEntries();
  return std::ranges::any_of(entries, [&](const auto& entry) {
    const std::string moved = entry.trashDirectory + "/files/" + entry.name;
    std::error_code error;
    return entry.originalPath == original && fs::is_directory(moved + "/deeper", error) &&
           fs::is_symlink(fs::symlink_status(moved + "/link", error));
  });
}

int check(SelfTestScratch& scratch, const std::string& home, const std::string& dataHome,
          std::ostream& out) {
  const std::string& folder = scratch.folder();
  auto outside = scratch.outsideFolder();
  if (!outside) {
    out << "trash-test failed: " << outside.error() << "\n";
    return 1;
  }
  std::error_code error;
  writeScratchFile(folder + "/file.bin", 4096);
  writeScratchFile(folder + "/sub/deeper/inner.bin", 8192);
  writeScratchFile(folder + "/kept.txt", 10);
  writeScratchFile(*outside + "/outside.txt", 10);
  fs::create_symlink("../file.bin", folder + "/sub/link", error);

  LiveRemovalDisk disk(FreedesktopTrash(dataHome, ::getuid()));
  const Trasher trasher(home, {.kept = DataFolder::protectedPaths(home, dataHome)}, disk);
  const auto results = trasher.trash({{.path = folder + "/file.bin", .bytes = 4096},
                                      {.path = folder + "/sub", .bytes = 8192},
                                      {.path = *outside + "/outside.txt", .bytes = 10}});
  if (results[2].outcome != TrashResult::Outcome::refused) {
    out << "trash-test failed: a path outside the home folder was not refused\n";
    return 1;
  }
  if (results[1].outcome != TrashResult::Outcome::moved) {
    out << "trash-test failed: the folder was not moved, " << describe(results[1]) << "\n";
    return 1;
  }
  if (!folderIsInTrash(scratch, folder + "/sub")) {
    out << "trash-test failed: the folder did not end up in the Trash\n";
    return 1;
  }
  return 0;
}

}  // namespace

int runTrashSelfTest(const std::string& home, const std::string& dataHome, std::ostream& out) {
  auto scratch = SelfTestScratch::create(home, dataHome, "trash-test");
  if (!scratch) {
    out << "trash-test failed: " << scratch.error() << "\n";
    return 1;
  }
  const int status = check(*scratch, home, dataHome, out);
  if (auto problem = scratch->cleanUp()) {
    out << "trash-test failed: couldn't remove what it made: " << *problem << "\n";
    return 1;
  }
  if (status == 0) out << "trash-test ok\n";
  return status;
}

}  // namespace pellwin
