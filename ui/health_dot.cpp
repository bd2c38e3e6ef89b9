#include "ui/health_dot.h"

#include <QPainter>

#include "ui/palette.h"

namespace pellwin::ui {

HealthDot::HealthDot(int diameter, QWidget* parent) : QWidget(parent), diameter_(diameter) {
  setFixedSize(sizeHint());
}

void HealthDot::setHealth(Health health) {
  if (health == health_) return;
  health_ = health;
  update();
}

QSize HealthDot::sizeHint() const { return {diameter_ + 2, diameter_ + 2}; }

void HealthDot::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(healthEdge(health_), 1.0));
  painter.setBrush(healthColor(health_));
  const QRectF box = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
  const qreal side = std::min(box.width(), box.height());
  painter.drawEllipse(QRectF(box.center().x() - side / 2, box.center().y() - side / 2, side, side));
}

}  // namespace pellwin::ui
