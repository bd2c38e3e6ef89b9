// Quit and Force quit for the panel and the Monitor screen: one AppQuitter for the app, its
// confirmation shown as an alert over the widget that asked, and `changed` after every change
// of what is being quit or of the result sentence. UI thread only.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "app/models/app_quitter.h"

namespace pellwin::ui {

class QuitControl : public QObject {
  Q_OBJECT

 public:
  using Confirm = std::function<bool(const QuitConfirmation&, QWidget* parent)>;

  // `confirm` shows the alert (the real one when empty); tests answer it themselves.
  QuitControl(std::shared_ptr<ProcessSignals> processSignals, std::int32_t ownPID,
              Confirm confirm = {}, QObject* parent = nullptr);
  ~QuitControl() override;

  // Refuses with a sentence, or asks over `dialogParent` and quits when confirmed.
  void confirmAndQuit(const AppUsage& app, bool force, QWidget* dialogParent);
  void dismissResult();

  [[nodiscard]] bool isWorking(const std::string& appID) const;
  [[nodiscard]] const std::optional<AppQuitter::Result>& result() const;

 signals:
  void changed();

 private:
  Confirm confirm_;
  QPointer<QWidget> dialogParent_;
  std::unique_ptr<AppQuitter> quitter_;
};

}  // namespace pellwin::ui
