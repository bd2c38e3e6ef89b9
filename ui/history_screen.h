// The main window's History screen: the picked metric's chart over an hour, a day, a week or
// 30 days; beside it the busiest apps of the minute pointed at ("who was it, then?"); the daily
// strip of the last 30 days; the slow periods of the range; and Clear history after a
// confirmation. Reads go through the model, off the UI thread; while hidden nothing is read.
#pragma once

#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <functional>

#include "app/models/history_model.h"
#include "ui/day_strip_view.h"
#include "ui/history_chart.h"
#include "ui/unavailable_view.h"

namespace pellwin::ui {

class HistoryScreen : public QWidget {
  Q_OBJECT

 public:
  static constexpr const char* lookupHint =
      "Point at the chart to see which apps were busiest that minute.";
  static constexpr const char* notRecorded = "Nothing was recorded that minute.";
  static constexpr const char* noSlowPeriods = "No slow periods in this range.";

  // Asks the user to confirm clearing; true to clear. The default asks with a message box.
  using Confirm = std::function<bool(QWidget* parent)>;

  HistoryScreen(HistoryModel::Setup setup, Confirm confirm = {}, QWidget* parent = nullptr);

  // Reads again when history has changed; does nothing while hidden (showing refreshes).
  void refresh();
  void setRange(HistoryRange range);
  // Charts `metric`, read afresh off the UI thread.
  void setMetric(HistoryMetric metric);
  [[nodiscard]] HistoryMetric shownMetric() const {
    return model_.metric().value_or(HistoryMetric::memoryUsed);
  }

  [[nodiscard]] const HistoryModel& model() const { return model_; }
  [[nodiscard]] HistoryChart* chart() const { return chart_; }
  [[nodiscard]] DayStripView* strip() const { return strip_; }
  [[nodiscard]] QTreeWidget* slowPeriods() const { return slowPeriods_; }
  [[nodiscard]] QTreeWidget* lookupList() const { return lookupList_; }
  [[nodiscard]] QLabel* lookupHeading() const { return lookupHeading_; }
  [[nodiscard]] QPushButton* clearButton() const { return clear_; }
  [[nodiscard]] const UnavailableView& unavailable() const { return *pages_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* buildControls();
  QWidget* buildChartRow();
  QWidget* buildLower();
  void fill();
  void fillSlowPeriods(const HistoryView& view);
  void fillLookup();
  void pointed(double time);
  void clear();

  HistoryModel model_;
  Confirm confirm_;
  std::optional<double> pointedMinute_;
  UnavailableView* pages_ = nullptr;
  QButtonGroup* ranges_ = nullptr;
  QComboBox* metrics_ = nullptr;
  QLabel* status_ = nullptr;
  HistoryChart* chart_ = nullptr;
  QLabel* lookupHeading_ = nullptr;
  QTreeWidget* lookupList_ = nullptr;
  DayStripView* strip_ = nullptr;
  QTreeWidget* slowPeriods_ = nullptr;
  QPushButton* clear_ = nullptr;
};

// The name a metric goes by above its chart: "Memory used", "Disk read".
[[nodiscard]] QString metricTitle(HistoryMetric metric);

}  // namespace pellwin::ui
