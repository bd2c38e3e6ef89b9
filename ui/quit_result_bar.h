// The sentence of the last quit or refusal, with a button that dismisses it; hidden while
// there is none. Reads the QuitControl it is given on every `refresh`.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>

#include "ui/quit_control.h"

namespace pellwin::ui {

class QuitResultBar : public QFrame {
  Q_OBJECT

 public:
  explicit QuitResultBar(QuitControl& quit, QWidget* parent = nullptr);

  void refresh();
  [[nodiscard]] QString text() const { return text_->text(); }

 private:
  QuitControl& quit_;
  QLabel* text_;
  QPushButton* dismiss_;
};

}  // namespace pellwin::ui
