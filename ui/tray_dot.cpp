#include "ui/tray_dot.h"

#include <QPainter>

#include "ui/palette.h"

namespace pellwin::ui {

QPixmap dotPixmap(Health health, int size) {
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const qreal diameter = size * 0.66;
  const qreal edge = std::max<qreal>(1.0, size / 16.0);
  const QRectF circle((size - diameter) / 2, (size - diameter) / 2, diameter, diameter);
  painter.setPen(QPen(healthEdge(health), edge));
  painter.setBrush(healthColor(health));
  painter.drawEllipse(circle.adjusted(edge / 2, edge / 2, -edge / 2, -edge / 2));
  return pixmap;
}

QIcon dotIcon(Health health) {
  QIcon drawn;
  for (const int size : {16, 22, 24, 32, 48, 64}) drawn.addPixmap(dotPixmap(health, size));
  // The package installs the three dots into the icon theme, so a theme may restyle them; the
  // drawn dot stands in wherever they are not installed.
  return QIcon::fromTheme(themeIconName(health), drawn);
}

QString themeIconName(Health health) {
  switch (health) {
    case Health::ok: return "tovrin-dot-ok";
    case Health::strain: return "tovrin-dot-strain";
    case Health::problem: return "tovrin-dot-problem";
  }
  return {};
}

}  // namespace pellwin::ui
