#include "ui/resource_tile.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include "ui/palette.h"
#include "ui/ui_text.h"

namespace pellwin::ui {

ResourceTile::ResourceTile(Resource resource, QWidget* parent)
    : QFrame(parent),
      dot_(new HealthDot(10, this)),
      title_(makeLabel(this, 0, true)),
      value_(makeLabel(this, 6, true)),
      detail_(makeLabel(this, -1)),
      status_(makeLabel(this)) {
  setObjectName("tile");
  setAttribute(Qt::WA_StyledBackground, true);
  setStyleSheet(
      "#tile { background: palette(base); border: 1px solid palette(midlight);"
      " border-radius: 8px; }");
  setMinimumWidth(130);
  title_->setText(qs(title(resource)));
  makeSecondary(detail_);
  detail_->setWordWrap(true);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(14, 10, 10, 8);
  layout->setSpacing(2);
  auto* top = new QHBoxLayout;
  top->setSpacing(6);
  top->addWidget(dot_);
  top->addWidget(title_, 1);
  layout->addLayout(top);
  layout->addSpacing(4);
  layout->addWidget(value_);
  layout->addWidget(detail_);
  layout->addStretch(1);
  layout->addSpacing(4);
  layout->addWidget(status_);
}

void ResourceTile::set(Health health, const ResourceFigure& figure, const QString& status) {
  dot_->setHealth(health);
  value_->setText(qs(figure.value));
  detail_->setText(qs(figure.detail));
  status_->setText(status);
  update();
}

QString ResourceTile::text() const {
  QString out = title_->text() + ": " + value_->text();
  if (!detail_->text().isEmpty()) out += " " + detail_->text();
  return out + ", " + status_->text();
}

// A strip in the health colour along the tile's left edge, so the five read at a glance.
void ResourceTile::paintEvent(QPaintEvent* event) {
  QFrame::paintEvent(event);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(healthColor(dot_->health()));
  painter.drawRoundedRect(QRectF(1, 10, 4, height() - 20), 2, 2);
}

}  // namespace pellwin::ui
