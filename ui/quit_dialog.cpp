#include "ui/quit_dialog.h"

#include <QPushButton>

#include "ui/ui_text.h"

namespace pellwin::ui {

std::unique_ptr<QMessageBox> quitMessageBox(const QuitConfirmation& c, QWidget* parent) {
  auto box = std::make_unique<QMessageBox>(parent);
  box->setWindowTitle("Tovrin");
  box->setIcon(c.destructive ? QMessageBox::Warning : QMessageBox::Question);
  box->setTextFormat(Qt::PlainText);
  box->setText(qs(c.message));
  box->setInformativeText(qs(c.informativeText));
  QPushButton* confirm = box->addButton(
      qs(c.confirmButton), c.destructive ? QMessageBox::DestructiveRole : QMessageBox::AcceptRole);
  QPushButton* cancel = box->addButton(qs(c.cancelButton), QMessageBox::RejectRole);
  confirm->setObjectName("confirm");
  box->setDefaultButton(cancel);
  box->setEscapeButton(cancel);
  return box;
}

bool askToQuit(const QuitConfirmation& confirmation, QWidget* parent) {
  const auto box = quitMessageBox(confirmation, parent);
  box->exec();
  return box->clickedButton() != nullptr && box->clickedButton()->objectName() == "confirm";
}

}  // namespace pellwin::ui
