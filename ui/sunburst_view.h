// The space map's rings: the arcs of a `SunburstLayout` painted around a centre that names the
// focused folder, each coloured by its storage category. Pointing at an arc shows its name,
// size and explanation; a click on a folder's arc asks to go into it, a click on the centre to
// go back up, and a right-click on an item's arc asks for its menu. The geometry (`SunburstGeometry`) is apart from the widget so that the arc under
// a point can be found without painting. UI thread only.
#pragma once

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/space/sunburst_layout.h"

namespace pellwin::ui {

// Rings laid out in a square: a hole in the middle for the centre, then `rings` rings of equal
// width. Angles run clockwise from twelve o'clock, as the layout's degrees are drawn.
struct SunburstGeometry {
  QPointF centre{};
  double holeRadius = 0;
  double ringWidth = 0;

  // Fills `bounds` (the largest square in it, less a margin) with `rings` rings.
  [[nodiscard]] static SunburstGeometry within(const QRectF& bounds, int rings);
  // The ring a point lies on (1 next to the hole), 0 inside the hole, or none beyond the last
  // ring drawn of `rings`.
  [[nodiscard]] std::optional<int> ringAt(QPointF point, int rings) const;
  // The point's angle in degrees, 0 to below 360.
  [[nodiscard]] double degreesAt(QPointF point) const;
  // The index in `arcs` of the arc under the point, or none (the hole, a gap, outside).
  [[nodiscard]] std::optional<std::size_t> arcAt(const std::vector<SunburstArc>& arcs,
                                                 QPointF point, int rings) const;
  [[nodiscard]] double innerRadius(int ring) const { return holeRadius + (ring - 1) * ringWidth; }
};

// The colour of a category's arcs on the first ring; outer rings are a little lighter.
[[nodiscard]] QColor categoryColor(StorageCategory category);
// The category's name as the list beside the rings shows it.
[[nodiscard]] QString categoryName(StorageCategory category);

class SunburstView : public QWidget {
  Q_OBJECT

 public:
  static constexpr int maxRings = 4;
  static constexpr double minDegrees = 1.0;

  // Gives the explanation shown under an arc's name and size when the pointer rests on it.
  using Explain = std::function<std::optional<std::string>(const SunburstArc&)>;

  explicit SunburstView(Explain explain, QWidget* parent = nullptr);

  void setArcs(std::vector<SunburstArc> arcs, const QString& centreName, const QString& centreSize);
  [[nodiscard]] const std::vector<SunburstArc>& arcs() const { return arcs_; }
  [[nodiscard]] SunburstGeometry geometryNow() const;
  // The arc under a point of the widget, if any.
  [[nodiscard]] const SunburstArc* arcAt(QPointF point) const;
  // What pointing at the arc shows: name, size, and the explanation when there is one.
  [[nodiscard]] QString hoverText(const SunburstArc& arc) const;

  [[nodiscard]] QSize sizeHint() const override { return {440, 440}; }

 signals:
  // The arc at that index of `arcs` was clicked.
  void arcClicked(int index);
  void centreClicked();
  // The context menu was asked for on the arc at that index of `arcs`, an item of the tree (not
  // a remainder), at `globalPos` on the screen.
  void arcMenuRequested(int index, QPoint globalPos);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  Explain explain_;
  std::vector<SunburstArc> arcs_;
  QString centreName_;
  QString centreSize_;
  std::optional<std::size_t> hovered_;
};

}  // namespace pellwin::ui
