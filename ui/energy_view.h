// "Most energy since …": on a machine with a battery, the apps that used the most energy since
// it last changed between battery and mains, with their shares. Hidden without a battery.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QStringList>

#include "core/monitor/battery_session.h"

namespace pellwin::ui {

class EnergyView : public QFrame {
  Q_OBJECT

 public:
  static constexpr std::size_t maxApps = 5;

  explicit EnergyView(QWidget* parent = nullptr);

  // `now` is the snapshot's time, to tell today's start from an earlier one.
  void set(const BatterySession& battery, double now);
  [[nodiscard]] QStringList texts() const;

 private:
  QLabel* title_;
  QLabel* source_;
  QLabel* names_;
  QLabel* shares_;
};

}  // namespace pellwin::ui
