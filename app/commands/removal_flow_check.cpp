// The removal flow end to end on the live disk: walk, delete list, changes behind its back,
// trash mover, rescan, reconcile.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "app/commands/self_test_scratch.h"
#include "app/commands/storage_self_tests.h"
#include "core/base/data_folder.h"
#include "core/space/removal_selection.h"
#include "probe/files/disk_scanner.h"
#include "probe/files/folder_size.h"
#include "probe/files/live_removal_disk.h"
#include "probe/files/trasher.h"

namespace pellwin {

namespace {

namespace fs = std::filesystem;
using Outcome = TrashResult::Outcome;
using Problem = std::optional<std::string>;

constexpr const char* shortcut = "It's a shortcut to somewhere else";

std::uint64_t ownBlocks(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0 || info.st_blocks <= 0) return 0;
  return static_cast<std::uint64_t>(info.st_blocks) * 512;
}

std::string said(const std::optional<RemovalRefusal>& refusal) {
  return refusal ? "\"" + refusal->reason + "\"" : "no refusal";
}

class Flow {
 public:
  Flow(SelfTestScratch& scratch, std::string home, std::string dataHome)
      : scratch_(scratch),
        home_(std::move(home)),
        dataHome_(std::move(dataHome)),
        root_(scratch.folder()),
        scanner_(home_),
        disk_(FreedesktopTrash(dataHome_, ::getuid())) {
    guards_.kept = DataFolder::protectedPaths(home_, dataHome_);
    for (const char* kept : {"/keep", "/holder/vault"}) guards_.kept.push_back(root_ + kept);
  }

  Problem run() {
    lay();
    auto first = scanner_.scan(root_, std::nullopt, {});
    if (!first) return "the scan failed: " + first.error().description();
    before_ = std::move(first->tree);
    rootBlocks_ = ownBlocks(root_);
    nestedBlocks_ = ownBlocks(root_ + "/nested");
    for (const char* name :
         {"/big", "/big/a.bin", "/extra.bin", "/single.bin", "/nested", "/nested/inner",
          "/gone.bin", "/keep", "/holder", "/holder/other.bin"}) {
      if (before_.find(root_ + name) == nullptr)
        return std::string("the scan did not find ") + (name + 1);
    }
    if (auto problem = pick()) return problem;
    changeBehindTheList();
    if (auto problem = remove()) return problem;
    return rescanAndReconcile();
  }

 private:
  const SizeNode& node(const SizeNode& tree, const char* name) const {
    return *tree.find(root_ + name);
  }

  void lay() const {
    for (const auto& [name, bytes] : std::initializer_list<std::pair<const char*, std::size_t>>{
             {"/big/a.bin", 2'000'000},
             {"/big/b.bin", 1'500'000},
             {"/extra.bin", 1'200'000},
             {"/single.bin", 3'000'000},
             {"/nested/inner/c.bin", 1'100'000},
             {"/gone.bin", 1'100'000},
             {"/keep/k.bin", 1'100'000},
             {"/holder/vault/v.bin", 1'100'000},
             {"/holder/other.bin", 1'100'000}}) {
      writeScratchFile(root_ + name, bytes);
    }
    std::error_code ignored;
    fs::create_directory_symlink(root_ + "/holder", root_ + "/link", ignored);
  }

  // Picks in an order that exercises covering and replacing, and the two refusals.
  Problem pick() {
    const struct {
      const char* name;
      std::optional<std::string> refusal;
    } picks[] = {
        {"/nested/inner", std::nullopt},
        {"/nested", std::nullopt},  // replaces nested/inner
        {"/big", std::nullopt},
        {"/big/a.bin", std::nullopt},  // already covered
        {"/extra.bin", std::nullopt},
        {"/single.bin", std::nullopt},
        {"/gone.bin", std::nullopt},
        {"/keep", "Tovrin needs it to run"},
        {"/holder", "It holds vault, which Tovrin keeps safe"},
    };
    for (const auto& p : picks) {
      const auto got = selection_.add(node(before_, p.name), home_, guards_);
      const auto wanted =
          p.refusal ? std::optional(RemovalRefusal{.reason = *p.refusal}) : std::nullopt;
      if (got != wanted)
        return "picking " + std::string(p.name + 1) + " gave " + said(got) + ", not " +
               said(wanted);
    }
    std::vector<std::string> picked;
    for (const SizeNode& item : selection_.items()) picked.push_back(item.path);
    const std::vector<std::string> wanted = {root_ + "/nested", root_ + "/big",
                                             root_ + "/extra.bin", root_ + "/single.bin",
                                             root_ + "/gone.bin"};
    if (picked != wanted)
      return std::string("the delete list does not hold what was picked, once each");
    std::uint64_t sum = 0;
    for (const char* name : {"/nested", "/big", "/extra.bin", "/single.bin", "/gone.bin"}) {
      sum += node(before_, name).bytes;
    }
    if (selection_.totalBytes() != sum)
      return std::string("the delete list's total counts something twice");
    for (const char* name : {"/nested/inner", "/holder/other.bin"}) {
      if (auto refused = later_.add(node(before_, name), home_, guards_))
        return "picking " + std::string(name + 1) + " gave " + said(refused);
    }
    return std::nullopt;
  }

  // What can happen between picking and confirming: a file swapped for a link, a protected
  // folder (a disk's trash, as a mount would bring) appearing inside a picked one, a picked
  // file deleted by someone else.
  void changeBehindTheList() const {
    std::error_code ignored;
    fs::remove(root_ + "/single.bin", ignored);
    fs::create_directory_symlink(root_ + "/keep", root_ + "/single.bin", ignored);
    writeScratchFile(root_ + "/nested/" + lateTrash_ + "/files/x.bin", 1'100'000);
    fs::remove(root_ + "/gone.bin", ignored);
  }

  Problem remove() {
    std::vector<TrashItem> items;
    for (const SizeNode& item : selection_.items())
      items.push_back({.path = item.path, .bytes = item.bytes});
    items.push_back({.path = root_ + "/link", .bytes = 0});
    const Trasher trasher(home_, guards_, disk_);
    const auto results = trasher.trash(items);

    const std::pair<Outcome, std::string> wanted[] = {
        {Outcome::refused, "It holds " + lateTrash_ + ", which Tovrin keeps safe"},
        {Outcome::moved, ""},
        {Outcome::moved, ""},
        {Outcome::refused, shortcut},
        {Outcome::alreadyGone, ""},
        {Outcome::refused, shortcut}};
    std::uint64_t freed = 0;
    for (std::size_t i = 0; i < results.size(); ++i) {
      const TrashResult expected{.path = items[i].path,
                                 .bytes = items[i].bytes,
                                 .outcome = wanted[i].first,
                                 .reason = wanted[i].second};
      if (results[i] != expected) {
        return fs::path(items[i].path).filename().string() + " was " + describe(results[i]) +
               ", not " + describe(expected);
      }
      if (results[i].freedSpace()) freed += results[i].bytes;
    }
    if (freed != node(before_, "/big").bytes + node(before_, "/extra.bin").bytes) {
      return std::string("the space freed is not the size of what was moved");
    }
    for (const char* name : {"/big", "/extra.bin"}) {
      const auto entries = scratch_.newEntries();
      const auto entry = std::ranges::find_if(
          entries, [&](const auto& e) { return e.originalPath == root_ + name; });
      if (entry == entries.end()) return std::string(name + 1) + " did not end up in the Trash";
      const auto inTrash =
          FolderSize::allocatedBytes(entry->trashDirectory + "/files/" + entry->name);
      if (inTrash != node(before_, name).bytes) {
        return "the Trash holds " + std::to_string(inTrash) + " bytes of " + (name + 1) +
               ", the scan counted " + std::to_string(node(before_, name).bytes);
      }
    }
    return std::nullopt;
  }

  Problem rescanAndReconcile() {
    auto second = scanner_.rescan(before_, std::nullopt, {});
    if (!second) return "the rescan failed: " + second.error().description();
    const SizeNode& after = second->tree;
    for (const char* name : {"/big", "/extra.bin", "/gone.bin"}) {
      if (after.find(root_ + name) != nullptr)
        return std::string("the rescan still shows ") + (name + 1);
    }
    for (const char* name : {"/keep", "/holder", "/nested/inner"}) {
      if (after.find(root_ + name) == nullptr ||
          node(after, name).bytes != node(before_, name).bytes) {
        return std::string("the rescan changed the size of ") + (name + 1);
      }
    }
    // What went, less what the changes added: the new link, the new trash folder, and the
    // folders' own blocks as their entries changed.
    const SizeNode expected = before_.removing(
        {root_ + "/big", root_ + "/extra.bin", root_ + "/single.bin", root_ + "/gone.bin"});
    const std::uint64_t added = ownBlocks(root_ + "/single.bin") +
                                FolderSize::allocatedBytes(root_ + "/nested/" + lateTrash_) +
                                ownBlocks(root_) + ownBlocks(root_ + "/nested");
    if (after.bytes + rootBlocks_ + nestedBlocks_ != expected.bytes + added) {
      return "the rescan counts " + std::to_string(after.bytes) + " bytes, the flow expects " +
             std::to_string(expected.bytes + added - rootBlocks_ - nestedBlocks_);
    }
    selection_.reconcile(after, home_, guards_);
    if (!selection_.isEmpty())
      return "the delete list still holds " + selection_.items().front().name + " after the rescan";
    later_.reconcile(after, home_, guards_);
    if (later_.count() != 2 || later_.totalBytes() != node(after, "/nested/inner").bytes +
                                                          node(after, "/holder/other.bin").bytes) {
      return std::string("reconciling dropped or mis-sized items that are still there");
    }
    return std::nullopt;
  }

  SelfTestScratch& scratch_;
  std::string home_;
  std::string dataHome_;
  std::string root_;
  RemovalGuards guards_;
  DiskScanner scanner_;
  LiveRemovalDisk disk_;
  SizeNode before_;
  std::uint64_t rootBlocks_ = 0;
  std::uint64_t nestedBlocks_ = 0;
  RemovalSelection selection_;
  RemovalSelection later_;  // items that stay, to see reconcile keep them
  std::string lateTrash_ = ".Trash-" + std::to_string(::getuid());
};

}  // namespace

int runFlowSelfTest(const std::string& home, const std::string& dataHome, std::ostream& out) {
  auto scratch = SelfTestScratch::create(home, dataHome, "flow-test");
  if (!scratch) {
    out << "flow-test failed: " << scratch.error() << "\n";
    return 1;
  }
  // The scratch folder is scanned where it really is, so the selection's rules get home and the
  // data home in that same spelling: HOME may go through a link that XDG_DATA_HOME does not.
  const auto real = [](const std::string& path) {
    std::error_code error;
    const auto resolved = std::filesystem::weakly_canonical(path, error);
    return error ? path : resolved.string();
  };
  const Problem problem = Flow(*scratch, real(home), real(dataHome)).run();
  if (auto left = scratch->cleanUp()) {
    out << "flow-test failed: couldn't remove what it made: " << *left << "\n";
    return 1;
  }
  if (problem) {
    out << "flow-test failed: " << *problem << "\n";
    return 1;
  }
  out << "flow-test ok\n";
  return 0;
}

}  // namespace pellwin
