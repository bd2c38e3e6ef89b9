// Painting the space map's rings: about 10,000 arcs (four rings of a tree ten folders wide,
// laid out with no minimum angle, so nothing merges), drawn off screen into an 800 by 800
// image, as one repaint of the Disk cleanup screen's rings does.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

#include "ui/sunburst_view.h"

namespace pellwin {
namespace {

QApplication& application() {
  static int argc = 1;
  static char name[] = "ui_sunburst_bench";
  static char* argv[] = {name, nullptr};
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static QApplication app(argc, argv);
  return app;
}

SizeNode wideTree(const std::string& path, int depth, std::uint64_t& seed) {
  SizeNode node{.name = path.substr(path.rfind('/') + 1), .path = path, .isDirectory = depth > 0};
  if (depth == 0) {
    seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
    node.bytes = 1'000'000 + (seed >> 40);
    node.category = static_cast<StorageCategory>((seed >> 33) % 5);
    return node;
  }
  std::vector<SizeNode> children;
  for (int i = 0; i < 10; ++i) {
    children.push_back(wideTree(path + "/" + std::to_string(i), depth - 1, seed));
    node.bytes += children.back().bytes;
  }
  SizeNode::sortChildren(children);
  node.children = std::move(children);
  return node;
}

void PaintTenThousandArcs(benchmark::State& state) {
  application();
  std::uint64_t seed = 1;
  const SizeNode tree = wideTree("/home/ann", 4, seed);
  ui::SunburstView view(nullptr);
  view.resize(800, 800);
  auto arcs = SunburstLayout::arcs(tree, ui::SunburstView::maxRings, 0.0);
  state.counters["arcs"] = static_cast<double>(arcs.size());
  view.setArcs(std::move(arcs), "ann", "11 GB");
  QImage image(800, 800, QImage::Format_ARGB32_Premultiplied);
  for (auto _ : state) {
    QPainter painter(&image);
    view.render(&painter);
    painter.end();
    benchmark::DoNotOptimize(image.bits());
  }
}
BENCHMARK(PaintTenThousandArcs)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pellwin
