#include "core/space/sunburst_layout.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

SizeNode item(std::string path, std::uint64_t bytes, std::vector<SizeNode> children = {},
              std::uint64_t restBytes = 0) {
  std::string name = path.substr(path.rfind('/') + 1);
  const bool folder = !children.empty() || restBytes > 0;
  return {.name = name,
          .path = path,
          .bytes = bytes,
          .isDirectory = folder,
          .children = std::move(children),
          .restBytes = restBytes,
          .restCount = restBytes > 0 ? 4 : 0};
}

SizeNode locked(std::string path) {
  return {.name = path.substr(path.rfind('/') + 1),
          .path = path,
          .isDirectory = true,
          .isLocked = true,
          .category = StorageCategory::system};
}

TEST(SunburstLayout, OneChildWithEveryByteFillsTheFirstRing) {
  const auto arcs = SunburstLayout::arcs(item("/f", 10, {item("/f/a", 10)}), 4, 1.0);
  ASSERT_EQ(arcs.size(), 1u);
  EXPECT_EQ(arcs[0].ring, 1);
  EXPECT_EQ(arcs[0].startDegrees, 0.0);
  EXPECT_EQ(arcs[0].endDegrees, 360.0);
  EXPECT_EQ(arcs[0].kind, SunburstKind::node);
}

TEST(SunburstLayout, LockedFoldersGetAFixedAngleButNeverMoreThanHalf) {
  for (const auto& [count, each] : {std::pair{10, 2.0}, std::pair{200, 0.9}}) {
    SCOPED_TRACE(count);
    std::vector<SizeNode> children{item("/f/data", 100)};
    for (int i = 0; i < count; ++i) children.push_back(locked("/f/l" + std::to_string(i)));
    const auto arcs = SunburstLayout::arcs(item("/f", 100, children), 1, 0.5);
    ASSERT_EQ(arcs.size(), static_cast<std::size_t>(count) + 1);
    EXPECT_NEAR(arcs[0].sweepDegrees(), 360.0 - each * count, 1e-9);
    for (std::size_t i = 1; i < arcs.size(); ++i) {
      EXPECT_TRUE(arcs[i].isLocked);
      EXPECT_NEAR(arcs[i].sweepDegrees(), each, 1e-9);
    }
    EXPECT_NEAR(arcs.back().endDegrees, 360.0, 1e-9);
  }
}

TEST(SunburstLayout, SharesTheCircleByBytesAndMergesThinChildren) {
  const SizeNode focus = item(
      "/f", 1000,
      {item("/f/a", 500), item("/f/b", 247), item("/f/t1", 1), item("/f/t2", 1), item("/f/t3", 1)},
      250);
  const auto arcs = SunburstLayout::arcs(focus, 3, 1.0);
  ASSERT_EQ(arcs.size(), 4u);
  EXPECT_EQ(arcs[0].name, "a");
  EXPECT_NEAR(arcs[0].sweepDegrees(), 180.0, 1e-9);
  EXPECT_EQ(arcs[1].name, "b");
  EXPECT_EQ(arcs[2].kind, SunburstKind::other);
  EXPECT_EQ(arcs[2].name, "3 small items");
  EXPECT_EQ(arcs[2].bytes, 3u);
  EXPECT_NEAR(arcs[2].sweepDegrees(), 3 * 0.36, 1e-9);
  EXPECT_EQ(arcs[3].kind, SunburstKind::rest);
  EXPECT_EQ(arcs[3].path, "/f");
  EXPECT_NEAR(arcs[3].sweepDegrees(), 90.0, 1e-9);
  EXPECT_NEAR(arcs[3].endDegrees, 360.0, 1e-9);
  EXPECT_NE(arcs[2].id(), arcs[3].id());

  const auto single =
      SunburstLayout::arcs(item("/f", 10, {item("/f/a", 9), item("/f/t", 0)}), 1, 1.0);
  EXPECT_EQ(single.back().name, "Other");
}

TEST(SunburstLayout, PlacesGrandchildrenInsideTheirParentUpToMaxRings) {
  const SizeNode focus =
      item("/f", 400,
           {item("/f/a", 300, {item("/f/a/x", 200, {item("/f/a/x/y", 200)}), item("/f/a/z", 100)}),
            item("/f/b", 100)});
  const auto arcs = SunburstLayout::arcs(focus, 2, 0.1);
  ASSERT_EQ(arcs.size(), 4u);
  EXPECT_EQ(arcs[0].path, "/f/a");
  EXPECT_EQ(arcs[1].path, "/f/b");
  EXPECT_EQ(arcs[2].path, "/f/a/x");
  EXPECT_EQ(arcs[2].ring, 2);
  EXPECT_NEAR(arcs[2].startDegrees, 0.0, 1e-9);
  EXPECT_NEAR(arcs[2].endDegrees, 180.0, 1e-9);  // two thirds of a's 270 degrees
  EXPECT_NEAR(arcs[3].endDegrees, 270.0, 1e-9);
  for (const auto& arc : SunburstLayout::arcs(focus, 1, 0.1)) EXPECT_EQ(arc.ring, 1);
  EXPECT_EQ(SunburstLayout::arcs(focus, 3, 0.1).back().path, "/f/a/x/y");
}

}  // namespace
}  // namespace pellwin
