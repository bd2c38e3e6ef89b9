// A history screen's two pages: its contents, or "History isn't available" with the screen's
// own explanation, centred, while history is off. UI thread only.
#pragma once

#include <QLabel>
#include <QStackedWidget>
#include <optional>

#include "core/history/history_unavailable.h"

namespace pellwin::ui {

class UnavailableView : public QStackedWidget {
  Q_OBJECT

 public:
  // Takes ownership of `contents`, shown until `showUnavailable` is given texts.
  explicit UnavailableView(QWidget* contents, QWidget* parent = nullptr);

  // Shows the texts when there are some, else the contents; true when the texts are shown.
  bool showUnavailable(const std::optional<HistoryUnavailable>& texts);
  [[nodiscard]] bool showsUnavailable() const { return currentWidget() == message_; }
  [[nodiscard]] QString title() const { return title_->text(); }
  [[nodiscard]] QString explanation() const { return explanation_->text(); }

 private:
  QWidget* contents_;
  QWidget* message_;
  QLabel* title_;
  QLabel* explanation_;
};

// `page` in a scroll area without a frame that scrolls only up and down, so a small window
// scrolls the whole page rather than squeezing its parts into each other.
[[nodiscard]] QWidget* verticallyScrolled(QWidget* page);

}  // namespace pellwin::ui
