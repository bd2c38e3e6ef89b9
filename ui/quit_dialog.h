// The alert that asks before an app is quit: the quitter's message and informative text, the
// quit button first (marked destructive for a force quit) and Cancel.
#pragma once

#include <QMessageBox>
#include <memory>

#include "app/models/app_quitter.h"

namespace pellwin::ui {

// The alert, not yet shown; its default button is Cancel, so Return never force quits.
[[nodiscard]] std::unique_ptr<QMessageBox> quitMessageBox(const QuitConfirmation& confirmation,
                                                          QWidget* parent);
// Shows the alert modally; true when the quit button was pressed.
[[nodiscard]] bool askToQuit(const QuitConfirmation& confirmation, QWidget* parent);

}  // namespace pellwin::ui
