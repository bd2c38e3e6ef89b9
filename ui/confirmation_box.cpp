#include "ui/confirmation_box.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/ui_text.h"

namespace pellwin::ui {

ConfirmationBox::ConfirmationBox(const QString& cancelText, const QString& confirmText,
                                 const QString& note, QWidget* parent)
    : QFrame(parent),
      text_(wrapping(this)),
      cancel_(new QPushButton(cancelText, this)),
      confirm_(new QPushButton(confirmText, this)) {
  setFrameShape(QFrame::StyledPanel);
  setBackgroundRole(QPalette::AlternateBase);
  setAutoFillBackground(true);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(text_);
  auto* buttons = new QHBoxLayout;
  if (note.isEmpty()) {
    buttons->addStretch(1);
  } else {
    QLabel* aside = makeLabel(this);
    aside->setText(note);
    makeSecondary(aside);
    buttons->addWidget(aside, 1);
  }
  confirm_->setDefault(true);
  buttons->addWidget(cancel_);
  buttons->addWidget(confirm_);
  layout->addLayout(buttons);
}

}  // namespace pellwin::ui
