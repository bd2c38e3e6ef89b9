#include "ui/sunburst_view.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <cmath>
#include <numbers>

namespace pellwin::ui {
namespace {

SizeNode node(const std::string& path, std::uint64_t restBytes, std::vector<SizeNode> children,
              bool isDirectory = true) {
  SizeNode n{.name = path.substr(path.rfind('/') + 1),
             .path = path,
             .bytes = restBytes,
             .isDirectory = isDirectory,
             .restBytes = isDirectory ? restBytes : 0};
  for (const SizeNode& child : children) n.bytes += child.bytes;
  SizeNode::sortChildren(children);
  n.children = std::move(children);
  return n;
}

SizeNode file(const std::string& path, std::uint64_t bytes) { return node(path, bytes, {}, false); }

// Five levels deep, so that every ring the view draws holds arcs, with a locked folder whose
// fixed thin arc must still be found.
SizeNode deepTree() {
  SizeNode locked{.name = "private", .path = "/h/private", .isDirectory = true, .isLocked = true};
  return node("/h", 2'000'000,
              {node("/h/a", 1'000'000,
                    {node("/h/a/b", 1'000'000,
                          {node("/h/a/b/c", 1'000'000,
                                {node("/h/a/b/c/d", 0, {file("/h/a/b/c/d/e.bin", 9'000'000)})})}),
                     file("/h/a/x.bin", 5'000'000)}),
               file("/h/big.iso", 30'000'000), std::move(locked)});
}

QPointF pointAt(const SunburstGeometry& g, double radius, double degrees) {
  const double radians = degrees * std::numbers::pi / 180.0;
  return g.centre + QPointF(radius * std::sin(radians), -radius * std::cos(radians));
}

QPointF middleOf(const SunburstGeometry& g, const SunburstArc& arc) {
  return pointAt(g, g.innerRadius(arc.ring) + g.ringWidth / 2,
                 (arc.startDegrees + arc.endDegrees) / 2);
}

TEST(SunburstGeometry, FindsTheArcUnderThePointOnEveryRing) {
  const auto arcs = SunburstLayout::arcs(deepTree(), SunburstView::maxRings, 1.0);
  const auto g = SunburstGeometry::within(QRectF(0, 0, 500, 416), SunburstView::maxRings);
  std::set<int> rings;
  for (std::size_t i = 0; i < arcs.size(); ++i) {
    SCOPED_TRACE(arcs[i].id());
    rings.insert(arcs[i].ring);
    EXPECT_EQ(g.arcAt(arcs, middleOf(g, arcs[i]), SunburstView::maxRings), i);
    // Just inside both edges of the arc, and just inside both of its angles.
    const double inner = g.innerRadius(arcs[i].ring);
    const double mid = (arcs[i].startDegrees + arcs[i].endDegrees) / 2;
    EXPECT_EQ(g.arcAt(arcs, pointAt(g, inner + 0.5, mid), SunburstView::maxRings), i);
    EXPECT_EQ(g.arcAt(arcs, pointAt(g, inner + g.ringWidth - 0.5, mid), SunburstView::maxRings),
              i);
    EXPECT_EQ(g.arcAt(arcs, pointAt(g, inner + 2, arcs[i].startDegrees + 0.01),
                      SunburstView::maxRings),
              i);
    EXPECT_EQ(g.arcAt(arcs, pointAt(g, inner + 2, arcs[i].endDegrees - 0.01),
                      SunburstView::maxRings),
              i);
  }
  EXPECT_EQ(rings, (std::set<int>{1, 2, 3, 4})) << "the fixture reaches every ring";
}

TEST(SunburstGeometry, FindsNoArcInTheHoleBeyondTheRingsOrInAGap) {
  const SizeNode tree = deepTree();
  const auto arcs = SunburstLayout::arcs(tree, SunburstView::maxRings, 1.0);
  const auto g = SunburstGeometry::within(QRectF(0, 0, 416, 416), SunburstView::maxRings);
  EXPECT_EQ(g.centre, QPointF(208, 208));
  EXPECT_DOUBLE_EQ(g.innerRadius(SunburstView::maxRings + 1), 200.0) << "outer edge at the margin";
  const struct {
    const char* why;
    QPointF point;
  } cases[] = {
      {"the centre", g.centre},
      {"just inside the hole", pointAt(g, g.holeRadius - 0.5, 90)},
      {"beyond the last ring", pointAt(g, 201, 10)},
      {"the widget's corner", QPointF(1, 1)},
      // big.iso is a file: nothing of it on ring 2.
      {"above a file, one ring out", [&] {
         for (const SunburstArc& arc : arcs)
           if (arc.name == "big.iso")
             return pointAt(g, g.innerRadius(2) + 5, (arc.startDegrees + arc.endDegrees) / 2);
         return QPointF();
       }()},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(g.arcAt(arcs, c.point, SunburstView::maxRings), std::nullopt);
  }
  EXPECT_EQ(g.ringAt(g.centre, SunburstView::maxRings), 0);
}

TEST(SunburstGeometry, MeasuresAnglesClockwiseFromTwelve) {
  const auto g = SunburstGeometry::within(QRectF(0, 0, 100, 100), 4);
  const struct {
    const char* why;
    QPointF point;
    double degrees;
  } cases[] = {
      {"twelve o'clock", {50, 10}, 0},     {"three o'clock", {90, 50}, 90},
      {"six o'clock", {50, 90}, 180},      {"nine o'clock", {10, 50}, 270},
      {"just left of twelve", {49.99, 10}, 359.98},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_NEAR(g.degreesAt(c.point), c.degrees, 0.01);
  }
}

TEST(SunburstView, ClicksNameTheArcOrTheCentreAndHoverTellsNameSizeAndExplanation) {
  SunburstView view([](const SunburstArc& arc) -> std::optional<std::string> {
    if (arc.name == "a") return "Folder a, explained";
    return std::nullopt;
  });
  view.resize(416, 416);
  view.setArcs(SunburstLayout::arcs(deepTree(), SunburstView::maxRings, 1.0), "h", "48 MB");
  QSignalSpy arcs(&view, &SunburstView::arcClicked);
  QSignalSpy centre(&view, &SunburstView::centreClicked);
  const auto g = view.geometryNow();
  for (std::size_t i = 0; i < view.arcs().size(); ++i) {
    QTest::mouseClick(&view, Qt::LeftButton, {}, middleOf(g, view.arcs()[i]).toPoint());
  }
  ASSERT_EQ(arcs.size(), static_cast<qsizetype>(view.arcs().size()));
  for (qsizetype i = 0; i < arcs.size(); ++i) EXPECT_EQ(arcs[i][0].toInt(), i);
  QTest::mouseClick(&view, Qt::LeftButton, {}, g.centre.toPoint());
  EXPECT_EQ(centre.size(), 1);
  EXPECT_EQ(arcs.size(), static_cast<qsizetype>(view.arcs().size()));

  std::map<std::string, QString> hover;
  for (const SunburstArc& arc : view.arcs()) hover[arc.name] = view.hoverText(arc);
  EXPECT_EQ(hover["a"], "a\n17 MB\nFolder a, explained");
  EXPECT_EQ(hover["big.iso"], "big.iso\n30 MB");
  EXPECT_EQ(hover["private"], "private\nLocked");
}

TEST(SunburstView, PaintsEachArcInItsCategorysColour) {
  SunburstView view(nullptr);
  view.resize(416, 416);
  SizeNode tree = node("/h", 0, {file("/h/code", 10'000'000), file("/h/films", 10'000'000)});
  tree.children[0].category = StorageCategory::developer;
  tree.children[1].category = StorageCategory::yourFiles;
  view.setArcs(SunburstLayout::arcs(tree, SunburstView::maxRings, 1.0), "h", "20 MB");
  const QImage image = view.grab().toImage();
  const auto g = view.geometryNow();
  for (const SunburstArc& arc : view.arcs()) {
    SCOPED_TRACE(arc.name);
    EXPECT_EQ(image.pixelColor(middleOf(g, arc).toPoint()), categoryColor(arc.category));
  }
}

}  // namespace
}  // namespace pellwin::ui
