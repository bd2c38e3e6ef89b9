// A one-line label that shortens its text with "…" to the width it is given, and shows the
// whole text as its tooltip when shortened.
#pragma once

#include <QLabel>

namespace pellwin::ui {

class ElidingLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidingLabel(QWidget* parent = nullptr);

  void setFullText(const QString& text);
  [[nodiscard]] const QString& fullText() const { return full_; }
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void elide();

  QString full_;
};

}  // namespace pellwin::ui
