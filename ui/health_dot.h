// A small round dot in a health colour, beside a resource's name or a headline. Painted, so it
// keeps its colour in light and dark themes alike.
#pragma once

#include <QWidget>

#include "core/monitor/resource.h"

namespace pellwin::ui {

class HealthDot : public QWidget {
  Q_OBJECT

 public:
  explicit HealthDot(int diameter = 10, QWidget* parent = nullptr);

  void setHealth(Health health);
  [[nodiscard]] Health health() const { return health_; }
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int diameter_;
  Health health_ = Health::ok;
};

}  // namespace pellwin::ui
