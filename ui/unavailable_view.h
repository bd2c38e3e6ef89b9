// What a history screen shows in place of its contents while history is off: "History isn't
// available" and the screen's own explanation, centred. UI thread only.
#pragma once

#include <QLabel>
#include <QWidget>

#include "core/history/history_unavailable.h"

namespace pellwin::ui {

class UnavailableView : public QWidget {
  Q_OBJECT

 public:
  explicit UnavailableView(QWidget* parent = nullptr);

  void show(const HistoryUnavailable& texts);
  [[nodiscard]] QString title() const { return title_->text(); }
  [[nodiscard]] QString explanation() const { return explanation_->text(); }

 private:
  QLabel* title_;
  QLabel* explanation_;
};

}  // namespace pellwin::ui
