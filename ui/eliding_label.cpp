#include "ui/eliding_label.h"

namespace pellwin::ui {

ElidingLabel::ElidingLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidingLabel::setFullText(const QString& text) {
  if (text == full_) return;
  full_ = text;
  elide();
}

QSize ElidingLabel::minimumSizeHint() const { return {0, QLabel::minimumSizeHint().height()}; }

void ElidingLabel::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  elide();
}

void ElidingLabel::elide() {
  const QString shown = fontMetrics().elidedText(full_, Qt::ElideRight, std::max(width(), 1));
  setText(shown);
  setToolTip(shown == full_ ? QString() : full_);
}

}  // namespace pellwin::ui
