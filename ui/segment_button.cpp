#include "ui/segment_button.h"

#include <QStyleOptionButton>
#include <QStylePainter>

#include "ui/palette.h"

namespace pellwin::ui {

SegmentButton::SegmentButton(const QString& text, QWidget* parent) : QPushButton(text, parent) {
  setCheckable(true);
}

// The colours are swapped in the style option at each paint rather than set on the widget, so a
// change of theme reaches the button like any other.
void SegmentButton::paintEvent(QPaintEvent*) {
  QStylePainter painter(this);
  QStyleOptionButton option;
  initStyleOption(&option);
  if (isChecked()) option.palette = checkedPalette(option.palette);
  painter.drawControl(QStyle::CE_PushButton, option);
}

}  // namespace pellwin::ui
