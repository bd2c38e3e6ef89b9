// One resource on the Monitor screen: its name with a dot in its health colour, the figure in
// large type with its units below, and the short status. Filled in place on every update.
#pragma once

#include <QFrame>
#include <QLabel>

#include "core/monitor/resource.h"
#include "core/monitor/resource_figure.h"
#include "ui/health_dot.h"

namespace pellwin::ui {

class ResourceTile : public QFrame {
  Q_OBJECT

 public:
  explicit ResourceTile(Resource resource, QWidget* parent = nullptr);

  void set(Health health, const ResourceFigure& figure, const QString& status);
  // "Memory: 13.4 GB of 16 GB, Memory tight"; for tests.
  [[nodiscard]] QString text() const;
  [[nodiscard]] Health health() const { return dot_->health(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  HealthDot* dot_;
  QLabel* title_;
  QLabel* value_;
  QLabel* detail_;
  QLabel* status_;
};

}  // namespace pellwin::ui
