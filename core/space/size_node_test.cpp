#include "core/space/size_node.h"

#include <gtest/gtest.h>

#include <functional>

namespace pellwin {
namespace {

SizeNode file(std::string path, std::uint64_t bytes) {
  std::string name = path.substr(path.rfind('/') + 1);
  return {.name = name, .path = path, .bytes = bytes};
}

SizeNode folder(std::string path, std::uint64_t bytes, std::vector<SizeNode> children,
                std::uint64_t restBytes = 0) {
  std::string name = path == "/" ? "/" : path.substr(path.rfind('/') + 1);
  return {.name = name,
          .path = path,
          .bytes = bytes,
          .isDirectory = true,
          .children = std::move(children),
          .restBytes = restBytes};
}

// /a (30 MB): /a/big (20 MB: b1 12 MB file, b2 folder 8 MB holding x 8 MB), /a/f 6 MB,
// /a/g 4 MB; plus the root's own remainder of 0.
SizeNode sample() {
  return folder("/a", 30'000'000,
                {folder("/a/big", 20'000'000,
                        {file("/a/big/b1", 12'000'000),
                         folder("/a/big/b2", 8'000'000, {file("/a/big/b2/x", 8'000'000)})}),
                 file("/a/f", 6'000'000), file("/a/g", 4'000'000)});
}

TEST(SizeNode, FindAndChainFollowComponentsNotStringPrefixes) {
  SizeNode tree = folder(
      "/a", 10'000'000,
      {folder("/a/bc", 5'000'000, {}), folder("/a/b", 5'000'000, {file("/a/b/c", 5'000'000)})});
  ASSERT_NE(tree.find("/a/b/c"), nullptr);  // not led astray into /a/bc
  EXPECT_EQ(tree.find("/a/b/c")->bytes, 5'000'000u);
  EXPECT_EQ(tree.find("/a/bc/x"), nullptr);
  EXPECT_EQ(tree.find("/a/b/"), nullptr);

  auto chain = tree.chain("/a/b/c");
  ASSERT_EQ(chain.size(), 3u);
  EXPECT_EQ(chain[0]->path, "/a");
  EXPECT_EQ(chain[1]->path, "/a/b");
  EXPECT_EQ(chain[2]->path, "/a/b/c");
  ASSERT_EQ(tree.chain("/a").size(), 1u);
  EXPECT_TRUE(tree.chain("/elsewhere").empty());
}

TEST(SizeNode, FindsUnderTheDiskRootWhosePathEndsInASlash) {
  SizeNode tree =
      folder("/", 3'000'000, {folder("/home", 3'000'000, {file("/home/ann", 3'000'000)})});
  ASSERT_NE(tree.find("/home/ann"), nullptr);
  EXPECT_EQ(tree.chain("/home/ann").size(), 3u);
}

TEST(SizeNode, RemainderOnlyTreeHasNoFilesAndFindsOnlyItself) {
  SizeNode tree = folder("/r", 900'000, {}, 900'000);
  EXPECT_TRUE(tree.biggestFiles(10).empty());
  EXPECT_EQ(tree.find("/r/anything"), nullptr);
  EXPECT_EQ(tree.find("/r"), &tree);
}

TEST(SizeNode, BiggestFilesLooksThroughEveryFolderAndBreaksTiesByPath) {
  SizeNode tree = sample();
  tree.children.push_back(file("/a/h", 12'000'000));  // ties with /a/big/b1
  tree.children.push_back(
      {.name = "locked", .path = "/a/locked", .isDirectory = true, .isLocked = true});
  auto files = tree.biggestFiles(3);
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files[0].path, "/a/big/b1");
  EXPECT_EQ(files[1].path, "/a/h");
  EXPECT_EQ(files[2].path, "/a/big/b2/x");
  EXPECT_EQ(tree.biggestFiles(100).size(), 5u);
}

TEST(SizeNode, RemovingLowersEveryAncestorAndKeepsOrderAndRemainders) {
  SizeNode tree = sample();
  tree.restBytes = 0;
  tree.children[0].restBytes = 0;
  SizeNode after = tree.removing({"/a/big/b2/x", "/a/f"});
  EXPECT_EQ(after.bytes, 16'000'000u);
  EXPECT_EQ(after.find("/a/big")->bytes, 12'000'000u);
  EXPECT_EQ(after.find("/a/big/b2")->bytes, 0u);
  EXPECT_EQ(after.find("/a/f"), nullptr);
  ASSERT_EQ(after.children.size(), 2u);
  EXPECT_EQ(after.children[1].path, "/a/g");  // not sorted again

  EXPECT_EQ(tree.removing({"/nowhere", "/a/big/b2/y"}), tree);
  EXPECT_EQ(tree.removing({}), tree);
}

TEST(SizeNode, RemovingFromDriftedTotalsSaturatesAtZero) {
  SizeNode tree = folder("/a", 3'000'000, {file("/a/x", 5'000'000)});
  EXPECT_EQ(tree.removing({"/a/x"}).bytes, 0u);
  SizeNode deep = folder("/a", 1'000'000, {folder("/a/b", 9'000'000, {file("/a/b/x", 9'000'000)})});
  EXPECT_EQ(deep.removing({"/a/b/x"}).bytes, 0u);
}

TEST(SizeNode, ReplacingAdjustsAncestorsAndResorts) {
  SizeNode tree = sample();
  SizeNode rescanned = folder("/a/big/b2", 14'000'000, {file("/a/big/b2/x", 14'000'000)});
  SizeNode after = tree.replacing("/a/big/b2", rescanned);
  EXPECT_EQ(after.bytes, 36'000'000u);
  const SizeNode* big = after.find("/a/big");
  EXPECT_EQ(big->bytes, 26'000'000u);
  EXPECT_EQ(big->children[0].path, "/a/big/b2");  // now ahead of the 12 MB file
  EXPECT_EQ(*after.find("/a/big/b2"), rescanned);

  // Shrinking moves a node behind siblings that are now larger.
  SizeNode shrunk = tree.replacing("/a/big", folder("/a/big", 1'000'000, {}));
  EXPECT_EQ(shrunk.bytes, 11'000'000u);
  EXPECT_EQ(shrunk.children.back().path, "/a/big");

  EXPECT_EQ(tree.replacing("/a/none", rescanned), tree);
  EXPECT_EQ(tree.replacing("/a", rescanned), rescanned);
}

TEST(SizeNode, SizeLabelSaysLockedForLockedFolders) {
  EXPECT_EQ((SizeNode{.isLocked = true}).sizeLabel(), "Locked");
  EXPECT_EQ((SizeNode{.bytes = 2'500'000'000}).sizeLabel(), "2.5 GB");
}

// A walk of a deeply nested folder yields a chain as deep as the disk; copying, comparing,
// destroying and the whole-tree operations must cope without running out of stack. At this
// depth a recursive copy overflows the 8 MB main stack. Paths are kept short
// (they need not nest for these operations) so the test stays small.
TEST(SizeNode, OperationsOnAVeryDeepChainDoNotRecurse) {
  constexpr int kDepth = 60'000;
  SizeNode root = folder("/0", 2'000'000, {});
  SizeNode* at = &root;
  for (int i = 1; i <= kDepth; ++i) {
    at->children.push_back(folder("/" + std::to_string(i), 2'000'000, {}));
    at = &at->children.back();
  }
  at->children.push_back(file("/leaf", 2'000'000));

  SizeNode copy = root;
  EXPECT_EQ(copy, root);
  EXPECT_EQ(root.biggestFiles(1).at(0).path, "/leaf");
  SizeNode removed = root.removing({"/leaf"});
  EXPECT_EQ(removed.bytes, 0u);
  EXPECT_NE(removed, root);
  copy = removed;
  EXPECT_EQ(copy, removed);
}

TEST(SizeNode, EqualityLooksAtEveryFieldOfEveryNode) {
  const SizeNode base =
      folder("/a", 5'000'000, {folder("/a/b", 5'000'000, {file("/a/b/c", 5'000'000)})});
  const struct {
    const char* why;
    std::function<void(SizeNode&)> change;
  } cases[] = {
      {"name", [](SizeNode& n) { n.name = "x"; }},
      {"path", [](SizeNode& n) { n.path = "/x"; }},
      {"bytes", [](SizeNode& n) { n.bytes = 1; }},
      {"isDirectory", [](SizeNode& n) { n.isDirectory = true; }},
      {"children", [](SizeNode& n) { n.children.push_back(SizeNode{}); }},
      {"restBytes", [](SizeNode& n) { n.restBytes = 1; }},
      {"restCount", [](SizeNode& n) { n.restCount = 1; }},
      {"isLocked", [](SizeNode& n) { n.isLocked = true; }},
      {"lastUsed", [](SizeNode& n) { n.lastUsed = 1.0; }},
      {"category", [](SizeNode& n) { n.category = StorageCategory::system; }},
      {"markers", [](SizeNode& n) { n.markers = std::vector<std::string>{"go.mod"}; }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    SizeNode changed = base;
    c.change(changed.children[0].children[0]);  // two levels down
    EXPECT_NE(changed, base);
    SizeNode copy = changed;  // a copy carries the field along
    EXPECT_EQ(copy, changed);
  }
}

}  // namespace
}  // namespace pellwin
