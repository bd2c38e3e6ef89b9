// A checkable push button that is one segment of a row of choices (the History screen's
// ranges): checked, it is drawn in the selection's colours, so the chosen segment stands out in
// light and dark palettes alike. UI thread only.
#pragma once

#include <QPushButton>

namespace pellwin::ui {

class SegmentButton : public QPushButton {
 public:
  explicit SegmentButton(const QString& text, QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace pellwin::ui
