// The panel the tray dot opens: the verdict's headline and reason, the five resources with
// their health, the busiest apps with Quit and Force quit, the advice, and "Open Tovrin" and
// "Quit Tovrin"; while there are unread alerts, a line that says how many and opens them. A popup:
// Escape or a click outside closes it. Its widgets are made once and filled in place; it reads the
// live state only while it is shown.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/models/live_model.h"
#include "ui/eliding_label.h"
#include "ui/health_dot.h"
#include "ui/quit_control.h"
#include "ui/quit_result_bar.h"

namespace pellwin::ui {

class Panel : public QFrame {
  Q_OBJECT

 public:
  static constexpr int maxApps = 5;

  // `state` gives the live model's latest state; it is read on the UI thread.
  Panel(std::function<const LiveState&()> state, QuitControl& quit, QWidget* parent = nullptr);

  // Opens the panel beside `cursor`, kept inside that screen's free area.
  void popUpAt(const QPoint& cursor);
  // Shows the latest state; does nothing while hidden (showing refreshes).
  void refresh();
  // The recorder's unread alert count: "3 new alerts" under the headline, hidden at zero.
  void setUnreadAlerts(std::int64_t count);

  // What the panel says, top to bottom, one entry per visible line; for tests.
  [[nodiscard]] QStringList texts() const;
  // The Quit (or, with `force`, Force quit) button of the app listed in `row`.
  [[nodiscard]] QPushButton* quitButton(int row, bool force) const;
  // The unread alerts' line, which asks for the Alerts screen.
  [[nodiscard]] QPushButton* alertsButton() const { return alerts_; }

 signals:
  void openRequested();
  // The user asked for the alerts; the panel has closed.
  void alertsRequested();
  void quitRequested();
  // Shown or hidden: the live model reads faster while the panel is seen.
  void visibilityChanged();

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  struct ResourceRow {
    HealthDot* dot;
    QLabel* name;
    QLabel* status;
  };
  struct AppRow {
    QWidget* box;
    ElidingLabel* name;
    QLabel* memory;
    QLabel* cpu;
    QLabel* busy;
    QPushButton* quit;
    QPushButton* forceQuit;
    std::string appID;
  };

  void buildHeader(QVBoxLayout* layout);
  void buildResources(QVBoxLayout* layout);
  void buildApps(QVBoxLayout* layout);
  void buildFooter(QVBoxLayout* layout);
  void fill();
  void fillApps(const Snapshot& snapshot);
  void quitApp(int row, bool force);

  std::function<const LiveState&()> state_;
  QuitControl& quit_;
  HealthDot* headlineDot_;
  QLabel* headline_;
  QLabel* reason_;
  QuitResultBar* result_;
  QPushButton* alerts_;
  std::array<ResourceRow, 5> resources_{};
  QLabel* appsTitle_;
  std::array<AppRow, maxApps> apps_{};
  QLabel* adviceTitle_;
  QLabel* advice_;
};

// "1 new alert", "3 new alerts".
[[nodiscard]] QString newAlertsText(std::int64_t count);

}  // namespace pellwin::ui
