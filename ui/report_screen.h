// The main window's Report screen, the weekly report: the week's dates, "What slowed your Mac
// most" with each cause's red time and what it was blamed for, how the week compares with the
// one before and what changed, amber and red time per resource against last week, and the
// week's cleanups with the space they freed. Reads go through the model, off the UI thread;
// while hidden nothing is read.
#pragma once

#include <QLabel>
#include <QTreeWidget>

#include "app/models/report_model.h"
#include "ui/unavailable_view.h"

namespace pellwin::ui {

class ReportScreen : public QWidget {
  Q_OBJECT

 public:
  explicit ReportScreen(ReportModel::Setup setup, QWidget* parent = nullptr);

  // Reads again when history or the day has changed; does nothing while hidden.
  void refresh();

  [[nodiscard]] const ReportModel& model() const { return model_; }
  // Every text the report shows, top to bottom, for tests.
  [[nodiscard]] QStringList texts() const;
  [[nodiscard]] QTreeWidget* causes() const { return causes_; }
  [[nodiscard]] QTreeWidget* resources() const { return resources_; }
  [[nodiscard]] QTreeWidget* cleanups() const { return cleanups_; }
  [[nodiscard]] const UnavailableView& unavailable() const { return *pages_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* buildPage();
  void fill();
  void fillCauses(const WeeklyReport& report);
  void fillResources(const WeeklyReport& report);
  void fillCleanups(const WeeklyReport& report);

  ReportModel model_;
  UnavailableView* pages_ = nullptr;
  QLabel* period_ = nullptr;
  QLabel* causesHeading_ = nullptr;
  QTreeWidget* causes_ = nullptr;
  QLabel* trend_ = nullptr;
  QLabel* changes_ = nullptr;
  QTreeWidget* resources_ = nullptr;
  QLabel* cleanupsText_ = nullptr;
  QTreeWidget* cleanups_ = nullptr;
};

}  // namespace pellwin::ui
