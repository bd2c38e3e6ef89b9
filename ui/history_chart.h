// One history chart: a metric's line over the chosen range, broken where nothing was recorded,
// the band between each point's low and high, and the amber and red moments marked. The only
// file that knows the chart library, so it can be swapped without touching the screens.
// Pointing at the chart reports the moment under the pointer. UI thread only.
#pragma once

#include <QWidget>
#include <optional>

#include "core/history/chart_series.h"

class QLabel;
class QLineSeries;

namespace pellwin::ui {

class HistoryChart : public QWidget {
  Q_OBJECT

 public:
  static constexpr const char* emptyText = "Nothing was recorded in this range.";

  explicit HistoryChart(QWidget* parent = nullptr);
  ~HistoryChart() override;

  // Draws `series` in place of what was drawn.
  void show(const ChartSeries& series);
  // Marks the moment a lookup answers for with a vertical line; nullopt removes the mark.
  void mark(std::optional<double> time);
  // Where a moment of the shown range sits on `surface()`, the widget that receives the
  // pointer's moves (for tests and screenshots, which point as a user would).
  [[nodiscard]] QPoint positionOf(double time) const;
  [[nodiscard]] QWidget* surface() const;
  // Whether `emptyText` is shown over the chart, as it is when the range holds no points.
  [[nodiscard]] bool showsEmpty() const;
  // The lines drawn: one per run of recorded points.
  [[nodiscard]] int lineCount() const;
  // The series drawn last.
  [[nodiscard]] const ChartSeries& shown() const { return shown_; }

 signals:
  // The pointer is over `time` (seconds since 1970) inside the shown range.
  void pointedAt(double time);

 private:
  class View;
  void drawMark();

  View* view_;
  QLabel* empty_;
  ChartSeries shown_;
  std::optional<double> marked_;
  QLineSeries* markLine_ = nullptr;  // owned by the chart; null when none is drawn
};

}  // namespace pellwin::ui
