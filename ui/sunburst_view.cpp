#include "ui/sunburst_view.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/base/format.h"
#include "ui/ui_text.h"

namespace pellwin::ui {

namespace {

constexpr double margin = 8;
constexpr double holeShare = 0.24;  // of the outer radius
// Narrower arcs are drawn without an edge, which would hide their colour.
constexpr double minEdgedPixels = 4;

// Qt counts degrees anticlockwise from three o'clock; the layout's run clockwise from twelve.
double qtDegrees(double layoutDegrees) { return 90.0 - layoutDegrees; }

QPainterPath sector(const SunburstGeometry& g, const SunburstArc& arc) {
  const double inner = g.innerRadius(arc.ring);
  const double outer = inner + g.ringWidth;
  const QRectF outerBox(g.centre.x() - outer, g.centre.y() - outer, 2 * outer, 2 * outer);
  const QRectF innerBox(g.centre.x() - inner, g.centre.y() - inner, 2 * inner, 2 * inner);
  QPainterPath path;
  path.arcMoveTo(outerBox, qtDegrees(arc.startDegrees));
  path.arcTo(outerBox, qtDegrees(arc.startDegrees), -arc.sweepDegrees());
  path.arcTo(innerBox, qtDegrees(arc.endDegrees), arc.sweepDegrees());
  path.closeSubpath();
  return path;
}

// An arc too thin for its curve to show, as the four corners of its sector.
QPolygonF thinSector(const SunburstGeometry& g, const SunburstArc& arc) {
  const double inner = g.innerRadius(arc.ring);
  const double outer = inner + g.ringWidth;
  auto at = [&](double radius, double degrees) {
    const double radians = degrees * std::numbers::pi / 180;
    return g.centre + QPointF(radius * std::sin(radians), -radius * std::cos(radians));
  };
  return QPolygonF({at(inner, arc.startDegrees), at(outer, arc.startDegrees),
                    at(outer, arc.endDegrees), at(inner, arc.endDegrees)});
}

QColor fillFor(const SunburstArc& arc, bool hovered) {
  QColor colour =
      arc.kind == SunburstKind::node ? categoryColor(arc.category) : QColor(0x9A, 0x9D, 0xA3);
  if (arc.isLocked) colour = QColor(0x7A, 0x7D, 0x83);
  colour = colour.lighter(100 + 12 * (arc.ring - 1));
  return hovered ? colour.lighter(125) : colour;
}

}  // namespace

SunburstGeometry SunburstGeometry::within(const QRectF& bounds, int rings) {
  const double side = std::max(0.0, std::min(bounds.width(), bounds.height()) - 2 * margin);
  const double outer = side / 2;
  const double hole = outer * holeShare;
  return {.centre = bounds.center(),
          .holeRadius = hole,
          .ringWidth = rings > 0 ? (outer - hole) / rings : 0};
}

std::optional<int> SunburstGeometry::ringAt(QPointF point, int rings) const {
  const QPointF d = point - centre;
  const double distance = std::hypot(d.x(), d.y());
  if (distance < holeRadius) return 0;
  if (ringWidth <= 0) return std::nullopt;
  const int ring = static_cast<int>(std::floor((distance - holeRadius) / ringWidth)) + 1;
  if (ring > rings) return std::nullopt;
  return ring;
}

double SunburstGeometry::degreesAt(QPointF point) const {
  const QPointF d = point - centre;
  // Screen y grows downwards: twelve o'clock is -y, three o'clock +x.
  double degrees = std::atan2(d.x(), -d.y()) * 180.0 / std::numbers::pi;
  if (degrees < 0) degrees += 360.0;
  return degrees >= 360.0 ? 0.0 : degrees;
}

std::optional<std::size_t> SunburstGeometry::arcAt(const std::vector<SunburstArc>& arcs,
                                                   QPointF point, int rings) const {
  const std::optional<int> ring = ringAt(point, rings);
  if (!ring || *ring == 0) return std::nullopt;
  const double degrees = degreesAt(point);
  for (std::size_t i = 0; i < arcs.size(); ++i) {
    const SunburstArc& arc = arcs[i];
    if (arc.ring == *ring && arc.startDegrees <= degrees && degrees < arc.endDegrees) return i;
  }
  return std::nullopt;
}

QColor categoryColor(StorageCategory category) {
  switch (category) {
    case StorageCategory::appData: return {0x4A, 0x8F, 0xE0};
    case StorageCategory::developer: return {0x9B, 0x6B, 0xD6};
    case StorageCategory::yourFiles: return {0x2E, 0xA8, 0x8F};
    case StorageCategory::system: return {0x8C, 0x8F, 0x96};
    case StorageCategory::other: return {0xE0, 0x9A, 0x3E};
  }
  return {0x8C, 0x8F, 0x96};
}

QString categoryName(StorageCategory category) {
  switch (category) {
    case StorageCategory::appData: return "App data";
    case StorageCategory::developer: return "Developer";
    case StorageCategory::yourFiles: return "Your files";
    case StorageCategory::system: return "System";
    case StorageCategory::other: return "Other";
  }
  return "Other";
}

SunburstView::SunburstView(Explain explain, QWidget* parent)
    : QWidget(parent), explain_(std::move(explain)) {
  setMouseTracking(true);
  setMinimumSize(260, 260);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void SunburstView::setArcs(std::vector<SunburstArc> arcs, const QString& centreName,
                           const QString& centreSize) {
  arcs_ = std::move(arcs);
  centreName_ = centreName;
  centreSize_ = centreSize;
  hovered_.reset();
  update();
}

SunburstGeometry SunburstView::geometryNow() const {
  return SunburstGeometry::within(QRectF(rect()), maxRings);
}

const SunburstArc* SunburstView::arcAt(QPointF point) const {
  const auto index = geometryNow().arcAt(arcs_, point, maxRings);
  return index ? &arcs_[*index] : nullptr;
}

QString SunburstView::hoverText(const SunburstArc& arc) const {
  QString text =
      qs(arc.name) + "\n" + (arc.isLocked ? QString("Locked") : qs(Format::disk(arc.bytes)));
  if (explain_) {
    if (const auto explanation = explain_(arc)) text += "\n" + qs(*explanation);
  }
  return text;
}

// Only arcs wide enough to show an edge get one, and a hairline arc is a plain quadrilateral:
// thousands of them then cost a small fill each instead of a curved, stroked path.
void SunburstView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SunburstGeometry g = geometryNow();
  const QPen edge(palette().color(QPalette::Window), 1);
  for (std::size_t i = 0; i < arcs_.size(); ++i) {
    const SunburstArc& arc = arcs_[i];
    const double outer = g.innerRadius(arc.ring) + g.ringWidth;
    const double outerLength = outer * arc.sweepDegrees() * std::numbers::pi / 180;
    painter.setBrush(fillFor(arc, hovered_ == i));
    const bool edged = outerLength >= minEdgedPixels;
    painter.setRenderHint(QPainter::Antialiasing, edged);
    painter.setPen(edged ? edge : QPen(Qt::NoPen));
    if (edged) {
      painter.drawPath(sector(g, arc));
    } else {
      painter.drawPolygon(thinSector(g, arc));
    }
  }
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(edge);
  const double hole = g.holeRadius;
  painter.setBrush(palette().color(QPalette::Base));
  painter.drawEllipse(g.centre, hole - 2, hole - 2);
  painter.setPen(palette().color(QPalette::Text));
  QFont bold = font();
  bold.setBold(true);
  painter.setFont(bold);
  const QFontMetrics metrics(bold);
  const QRectF nameBox(g.centre.x() - hole * 0.85, g.centre.y() - metrics.height(), hole * 1.7,
                       metrics.height());
  painter.drawText(nameBox, Qt::AlignCenter,
                   metrics.elidedText(centreName_, Qt::ElideMiddle, int(nameBox.width())));
  painter.setFont(font());
  painter.drawText(nameBox.translated(0, metrics.height()), Qt::AlignCenter, centreSize_);
}

void SunburstView::mouseMoveEvent(QMouseEvent* event) {
  const auto index = geometryNow().arcAt(arcs_, event->position(), maxRings);
  if (index != hovered_) {
    hovered_ = index;
    update();
  }
  if (index) {
    QToolTip::showText(event->globalPosition().toPoint(), hoverText(arcs_[*index]), this);
  } else {
    QToolTip::hideText();
  }
}

void SunburstView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const SunburstGeometry g = geometryNow();
  if (g.ringAt(event->position(), maxRings) == 0) {
    emit centreClicked();
    return;
  }
  if (const auto index = g.arcAt(arcs_, event->position(), maxRings)) {
    emit arcClicked(static_cast<int>(*index));
  }
}

void SunburstView::contextMenuEvent(QContextMenuEvent* event) {
  const auto index = geometryNow().arcAt(arcs_, event->pos(), maxRings);
  if (!index || arcs_[*index].kind != SunburstKind::node) {
    event->ignore();
    return;
  }
  emit arcMenuRequested(static_cast<int>(*index), event->globalPos());
}

void SunburstView::leaveEvent(QEvent*) {
  hovered_.reset();
  update();
}

}  // namespace pellwin::ui
