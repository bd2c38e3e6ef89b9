// The Settings screen: a notification switch per resource ("notify." + the resource's key, on
// unless switched off), Start at login (the autostart entry), the appearance (always the
// desktop's own light or dark theme), a test notification, and the version with a word on
// updates. Every switch is saved the moment it changes. UI thread only.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QWidget>
#include <functional>

#include "app/desktop/login_item.h"
#include "app/models/notifier.h"
#include "core/monitor/resource.h"
#include "ui/user_settings.h"

namespace pellwin::ui {

class SettingsScreen : public QWidget {
  Q_OBJECT

 public:
  static constexpr const char* testTitle = "Tovrin notifications work";
  static constexpr const char* testBody = "This is the test from Settings.";

  struct Services {
    UserSettings settings;
    LoginItem loginItem;
    // Posts a notification; the outcome arrives later, on the UI thread.
    std::function<void(std::string title, std::string body,
                       std::function<void(NotificationResult)> completion)>
        notify;
  };

  explicit SettingsScreen(Services services, QWidget* parent = nullptr);

  // Reads the switches again from the settings and the autostart folder, which another
  // program may have changed; done each time the screen is shown.
  void reload();

  [[nodiscard]] QCheckBox* notifySwitch(Resource resource) const;
  [[nodiscard]] QCheckBox* startAtLogin() const { return startAtLogin_; }
  [[nodiscard]] QPushButton* testButton() const { return testButton_; }
  [[nodiscard]] QLabel* testResult() const { return testResult_; }
  [[nodiscard]] QLabel* loginProblem() const { return loginProblem_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* notificationsSection();
  QWidget* generalSection();
  QWidget* aboutSection();
  void setStartAtLogin(bool on);
  void sendTest();

  Services services_;
  std::vector<QCheckBox*> notifySwitches_;  // in the order of allResources
  QCheckBox* startAtLogin_ = nullptr;
  QLabel* loginProblem_ = nullptr;
  QPushButton* testButton_ = nullptr;
  QLabel* testResult_ = nullptr;
};

// The words under the test button for an outcome.
[[nodiscard]] QString testOutcomeText(const NotificationResult& result);

}  // namespace pellwin::ui
