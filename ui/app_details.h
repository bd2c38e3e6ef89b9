// The app picked in the Monitor list: its name, what it is doing to the machine, what it is,
// its command line, working directory, start, processes and their ids, with Quit and Force
// quit. Fields the app does not have are left out. Filled in place.
#pragma once

#include <QFormLayout>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QStringList>

#include "core/monitor/app_usage.h"
#include "core/monitor/verdict.h"
#include "ui/health_dot.h"

namespace pellwin::ui {

class AppDetails : public QFrame {
  Q_OBJECT

 public:
  static constexpr int maxPidsShown = 12;

  explicit AppDetails(QWidget* parent = nullptr);

  // `app` null: nothing is picked. `now` is the snapshot's time, for how long it has run.
  void set(const AppUsage* app, const Verdict* verdict, double now, bool quitting);
  // Every visible line, "Label: value" for the fields; for tests.
  [[nodiscard]] QStringList texts() const;
  [[nodiscard]] QPushButton* quitButton(bool force) const { return force ? forceQuit_ : quit_; }

 signals:
  void quitClicked(bool force);

 private:
  void setField(int row, const QString& value);

  QLabel* placeholder_;
  QWidget* body_;
  QLabel* name_;
  HealthDot* roleDot_;
  QLabel* role_;
  QLabel* explanation_;
  QLabel* help_;
  QFormLayout* fields_;
  std::vector<QLabel*> values_;
  QLabel* busy_;
  QPushButton* quit_;
  QPushButton* forceQuit_;
};

}  // namespace pellwin::ui
