// The panel a cleanup screen shows before it removes anything: what will happen, in words, an
// optional note beside the buttons, then Cancel and the confirming button (the default). Hidden
// until its owner shows it; the owner connects the buttons to its model.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QPushButton>

namespace pellwin::ui {

class ConfirmationBox : public QFrame {
 public:
  ConfirmationBox(const QString& cancelText, const QString& confirmText, const QString& note,
                  QWidget* parent);

  [[nodiscard]] QLabel* text() const { return text_; }
  [[nodiscard]] QPushButton* cancel() const { return cancel_; }
  [[nodiscard]] QPushButton* confirm() const { return confirm_; }

 private:
  QLabel* text_;
  QPushButton* cancel_;
  QPushButton* confirm_;
};

}  // namespace pellwin::ui
