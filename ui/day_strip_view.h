// The History screen's daily strip: a column per day, a row per resource, each cell coloured
// teal, amber or coral by the day's red and amber time (hollow when nothing was recorded), the
// cell's text shown when it is pointed at. UI thread only.
#pragma once

#include <QWidget>
#include <vector>

#include "core/history/day_strip.h"

namespace pellwin::ui {

class DayStripView : public QWidget {
  Q_OBJECT

 public:
  explicit DayStripView(QWidget* parent = nullptr);

  void show(std::vector<StripDay> days);
  // The text of the cell at `position`, with its day's label; empty outside the cells.
  [[nodiscard]] QString textAt(QPoint position) const;
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

 private:
  [[nodiscard]] QRect cellRect(int day, int row) const;
  [[nodiscard]] int labelWidth() const;

  std::vector<StripDay> days_;
};

}  // namespace pellwin::ui
