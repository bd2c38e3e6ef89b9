#include "ui/quit_control.h"

#include "ui/post_to.h"
#include "ui/quit_dialog.h"

namespace pellwin::ui {

QuitControl::QuitControl(std::shared_ptr<ProcessSignals> processSignals, std::int32_t ownPID,
                         Confirm confirm, QObject* parent)
    : QObject(parent), confirm_(confirm ? std::move(confirm) : Confirm(askToQuit)) {
  quitter_ = std::make_unique<AppQuitter>(AppQuitter::Services{
      .processSignals = std::move(processSignals),
      .confirm = [this](const QuitConfirmation& c) { return confirm_(c, dialogParent_.data()); },
      .sleep = {},
      .post = postTo(this),
      .changed = [this] { emit changed(); },
      .ownPID = ownPID,
  });
}

QuitControl::~QuitControl() = default;

void QuitControl::confirmAndQuit(const AppUsage& app, bool force, QWidget* dialogParent) {
  dialogParent_ = dialogParent;
  quitter_->confirmAndQuit(app, force);
  dialogParent_ = nullptr;
}

void QuitControl::dismissResult() { quitter_->dismissResult(); }

bool QuitControl::isWorking(const std::string& appID) const {
  return quitter_->working().contains(appID);
}

const std::optional<AppQuitter::Result>& QuitControl::result() const { return quitter_->result(); }

}  // namespace pellwin::ui
