#include "core/space/node_path.h"

#include <gtest/gtest.h>

#include <string>

#include "core/space/size_node.h"

namespace pellwin {
namespace {

TEST(NodePath, ReadsAsTheTextJoinedPathWouldMake) {
  const NodePath root("/");
  const NodePath home("/home/ann");
  const NodePath slashed("/data/");
  const struct {
    const char* why;
    NodePath path;
    std::string expected;
  } cases[] = {
      {"below the root", NodePath::inFolder(root, "etc"), "/etc"},
      {"below a folder", NodePath::inFolder(home, "Music"), "/home/ann/Music"},
      {"two levels", NodePath::inFolder(NodePath::inFolder(home, "a b"), "c"), "/home/ann/a b/c"},
      {"a folder ending in a slash", NodePath::inFolder(slashed, "x"), "/data/x"},
      {"an empty folder stands for the root", NodePath::inFolder(NodePath(), "x"), "/x"},
      {"bytes that are not text", NodePath::inFolder(home, "caf\xe9\n"), "/home/ann/caf\xe9\n"},
      {"empty", NodePath(), ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.path.str(), c.expected);
    EXPECT_EQ(c.path.size(), c.expected.size());
    EXPECT_TRUE(c.path == c.expected);
    EXPECT_EQ(c.path.endsWithSlash(), c.expected.ends_with('/'));
  }
}

TEST(NodePath, ComparesByTextHoweverEachWasBuilt) {
  const NodePath chained = NodePath::inFolder(NodePath::inFolder(NodePath("/a"), "bc"), "d");
  const NodePath otherChain = NodePath::inFolder(NodePath::inFolder(NodePath("/a"), "bc"), "d");
  const NodePath splitElsewhere = NodePath::inFolder(NodePath("/a"), "bc/d");
  const NodePath whole("/a/bc/d");
  const NodePath longer("/a/bc/de");
  const NodePath sameSizeOtherText =
      NodePath::inFolder(NodePath::inFolder(NodePath("/a"), "bx"), "d");
  EXPECT_EQ(chained, otherChain);
  EXPECT_EQ(chained, splitElsewhere);
  EXPECT_EQ(chained, whole);
  EXPECT_EQ(whole, chained);
  EXPECT_NE(chained, longer);
  EXPECT_NE(chained, sameSizeOtherText);
  EXPECT_FALSE(chained == "/a/bc/x");
  EXPECT_LT(chained, longer);
  EXPECT_GT(sameSizeOtherText, chained);
  EXPECT_EQ(chained <=> whole, std::strong_ordering::equal);
}

TEST(NodePath, ContainsAPathByComponentsAsPathIsWithinDoes) {
  const NodePath folder = NodePath::inFolder(NodePath("/home"), "ann");
  const NodePath root("/");
  for (const char* path :
       {"/home/ann", "/home/ann/x", "/home/anna", "/home/an", "/home", "/", "/home/ann/", "/x"}) {
    SCOPED_TRACE(path);
    EXPECT_EQ(folder.contains(path), pathIsWithin(path, "/home/ann"));
    EXPECT_EQ(root.contains(path), pathIsWithin(path, "/"));
    EXPECT_EQ(folder.startsWith(path), std::string("/home/ann").starts_with(path));
  }
}

TEST(NodePath, SaysWhetherItWasMadeInAFolderAndWhatItAdded) {
  const NodePath folder("/home/ann");
  const NodePath child = NodePath::inFolder(folder, "Music");
  EXPECT_TRUE(child.isInFolder(folder));
  EXPECT_TRUE(child.isInFolder(NodePath(folder)));
  // The same text made another way is not the same folder path.
  EXPECT_FALSE(child.isInFolder(NodePath("/home/ann")));
  EXPECT_FALSE(folder.isInFolder(folder));
  EXPECT_EQ(child.lastAdded(), "Music");
}

TEST(NodePath, AChainAMillionDeepGoesAwayWithoutRecursing) {
  NodePath path("/");
  for (int i = 0; i < 1'000'000; ++i) path = NodePath::inFolder(path, "d");
  EXPECT_EQ(path.size(), 2 * 1'000'000u);
  const NodePath copy = path;
  path = NodePath();
  EXPECT_EQ(copy.size(), 2 * 1'000'000u);
}

}  // namespace
}  // namespace pellwin
