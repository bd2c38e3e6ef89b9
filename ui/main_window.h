// The main window: a sidebar of screens (Monitor, Report, History, Alerts, Disk cleanup,
// Quick clean, Settings) beside the screen picked. Each screen is one widget added with
// `addScreen`. Closing the window only hides it: the monitor and notifications keep running
// until "Quit Tovrin".
#pragma once

#include <QListWidget>
#include <QMainWindow>
#include <QStackedWidget>

namespace pellwin::ui {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(QWidget* parent = nullptr);

  // Adds `screen` under `name` at the end of the sidebar; the window takes ownership.
  void addScreen(const QString& name, QWidget* screen);
  void showScreen(const QString& name);
  [[nodiscard]] QString currentScreen() const;
  // Sets the text beside a sidebar entry's name (an unread count), or clears it when empty.
  void setBadge(const QString& name, const QString& badge);

 signals:
  void quitRequested();
  // The window was shown or hidden (the live model reads faster while it is seen).
  void visibilityChanged();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  QListWidgetItem* item(const QString& name) const;

  QListWidget* sidebar_;
  QStackedWidget* screens_;
};

}  // namespace pellwin::ui
