#include "probe/files/folder_prefetch.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "testing/scratch_folder.h"
#include "testing/walk_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

// What a listing says, names in listing order with their kinds, for comparing listings.
std::string summary(const WalkListing& listing) {
  if (!listing.complete) return "incomplete";
  std::string text;
  for (const WalkEntry& entry : listing.entries) {
    text += std::string(listing.name(entry)) + ":" + std::to_string(static_cast<int>(entry.kind)) +
            ":" + std::to_string(entry.bytes) + " ";
  }
  return text;
}

std::shared_ptr<const FileDescriptor> openFolder(const std::string& path) {
  return std::make_shared<const FileDescriptor>(
      ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

TEST(FolderPrefetch, GivesEachFolderTheListingItWouldHaveReadItselfWhoeverReadIt) {
  testing::ScratchFolder scratch;
  const std::string root = scratch.path().string();
  for (int i = 0; i < 40; ++i) {
    testing::allocateFile(root + "/d" + std::to_string(i) + "/f" + std::to_string(i), 8192);
    fs::create_directories(root + "/d" + std::to_string(i) + "/sub");
  }
  struct stat info {};
  ASSERT_EQ(::stat(root.c_str(), &info), 0);
  const auto device = static_cast<std::uint64_t>(info.st_dev);
  const auto parent = openFolder(root);
  std::vector<char> buffer;

  for (std::size_t threads : {0, 1, 4}) {
    SCOPED_TRACE(std::to_string(threads) + " threads");
    FolderPrefetch prefetch(threads, device, 1000);
    std::vector<FolderPrefetch::Request> requests;
    for (std::size_t i = 0; i < 40; ++i) {
      requests.push_back(
          {.parent = parent, .name = "d" + std::to_string(i), .rank = {.depth = 1, .index = i}});
    }
    requests.push_back({.parent = parent, .name = "missing", .rank = {.depth = 1, .index = 40}});
    const auto tickets = prefetch.request(std::move(requests));
    ASSERT_EQ(tickets.size(), 41u);
    // Taken in the walk's order, whether read already, being read, or not begun.
    for (std::size_t i = 0; i < 40; ++i) {
      const std::string name = "d" + std::to_string(i);
      EXPECT_EQ(summary(prefetch.take(*tickets[i], buffer).listing),
                summary(listForWalk(parent->get(), name, device, buffer)));
    }
    EXPECT_EQ(summary(prefetch.take(*tickets[40], buffer).listing), "incomplete");
  }
}

TEST(FolderPrefetch, AsksAheadForEveryFolderInsideWhatAThreadReadWithinTheLimit) {
  testing::ScratchFolder scratch;
  const std::string root = scratch.path().string();
  for (int i = 0; i < 5; ++i) fs::create_directories(root + "/top/d" + std::to_string(i) + "/x");
  testing::allocateFile(root + "/top/file", 4096);
  struct stat info {};
  ASSERT_EQ(::stat(root.c_str(), &info), 0);
  const auto device = static_cast<std::uint64_t>(info.st_dev);
  const auto parent = openFolder(root);
  std::vector<char> buffer;
  const struct {
    const char* why;
    std::size_t limit;
    std::size_t ahead;
  } cases[] = {{"room for all five", 6, 5}, {"no room for all five: none", 5, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    FolderPrefetch prefetch(1, device, c.limit);
    auto tickets = prefetch.request({{.parent = parent, .name = "top", .rank = {}}});
    // Wait for the thread to have read it rather than read it here.
    while (prefetch.outstanding() == 1 && c.ahead > 0) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    FolderPrefetch::Taken taken = prefetch.take(*tickets[0], buffer);
    ASSERT_EQ(taken.ahead.size(), c.ahead);
    for (const auto& [index, ticket] : taken.ahead) {
      const WalkEntry& entry = taken.listing.entries[index];
      EXPECT_EQ(entry.kind, WalkEntry::Kind::folder);
      const std::string name(taken.listing.name(entry));
      EXPECT_EQ(summary(prefetch.take(*ticket, buffer).listing),
                summary(listForWalk(taken.listing.folder->get(), name, device, buffer)));
    }
    EXPECT_EQ(prefetch.outstanding(), 0u);
  }
}

TEST(FolderPrefetch, EndsWithRequestsStillQueuedAndLetsTheirFoldersGo) {
  testing::ScratchFolder scratch;
  const std::string root = scratch.path().string();
  for (int i = 0; i < 200; ++i) fs::create_directories(root + "/d" + std::to_string(i));
  struct stat info {};
  ASSERT_EQ(::stat(root.c_str(), &info), 0);
  std::weak_ptr<const FileDescriptor> watched;
  {
    auto parent = openFolder(root);
    watched = parent;
    FolderPrefetch prefetch(2, static_cast<std::uint64_t>(info.st_dev), 1000);
    std::vector<FolderPrefetch::Request> requests;
    for (std::size_t i = 0; i < 200; ++i) {
      requests.push_back({.parent = parent, .name = "d" + std::to_string(i), .rank = {.index = i}});
    }
    // Dropped at once: only the prefetch's queue and its threads still hold them.
    (void)prefetch.request(std::move(requests));
  }
  EXPECT_TRUE(watched.expired());
}

TEST(WalkListing, LeavesOutWhatLiesOnAnotherDeviceButStillNotesMarkers) {
  testing::ScratchFolder scratch;
  const std::string root = scratch.path().string();
  testing::allocateFile(root + "/code/package.json", 0);
  testing::allocateFile(root + "/code/index.js", 0);
  struct stat info {};
  ASSERT_EQ(::stat(root.c_str(), &info), 0);
  std::vector<char> buffer;
  // Seen from a walk rooted on another device, everything here is left out.
  const WalkListing listing =
      listForWalk(AT_FDCWD, root + "/code", static_cast<std::uint64_t>(info.st_dev) + 1, buffer);
  ASSERT_TRUE(listing.complete);
  ASSERT_EQ(listing.entries.size(), 2u);
  for (const WalkEntry& entry : listing.entries) EXPECT_EQ(entry.kind, WalkEntry::Kind::leftOut);
  EXPECT_EQ(listing.markers, std::optional<std::vector<std::string>>({"package.json"}));
}

}  // namespace
}  // namespace pellwin
