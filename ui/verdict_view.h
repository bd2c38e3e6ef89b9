// The Monitor screen's verdict: the headline with the worst health's dot, the reason, the apps
// behind it with their figures, what the user can do, and the tips. Filled in place.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QStringList>

#include "core/monitor/verdict.h"
#include "ui/health_dot.h"

namespace pellwin::ui {

class VerdictView : public QFrame {
  Q_OBJECT

 public:
  explicit VerdictView(QWidget* parent = nullptr);

  // No verdict yet: says the first reading is being taken.
  void set(const Verdict* verdict);
  // Every visible line, top to bottom; for tests.
  [[nodiscard]] QStringList texts() const;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void keepLinesWhole();

  HealthDot* dot_;
  QLabel* headline_;
  QLabel* reason_;
  QLabel* contributorsTitle_;
  QLabel* contributors_;
  QLabel* adviceTitle_;
  QLabel* advice_;
  QLabel* tipsTitle_;
  QLabel* tips_;
};

}  // namespace pellwin::ui
