// The main window's Alerts screen: the stored alerts under their day's heading, newest first,
// each with its time, resource, what the notification said, the app behind it and its figure,
// and whether its red stretch has cleared; unread ones stand out until the list was seen.
// Seeing the list (the screen shown with alerts loaded) marks them all read. Reads go through
// the model, off the UI thread; while hidden nothing is read.
#pragma once

#include <QLabel>
#include <QTreeWidget>
#include <cstdint>
#include <set>

#include "app/models/alerts_model.h"
#include "ui/unavailable_view.h"

namespace pellwin::ui {

class AlertsScreen : public QWidget {
  Q_OBJECT

 public:
  static constexpr const char* caption =
      "Tovrin notifies you when something stays red. Every alert is kept here.";
  static constexpr const char* empty = "No alerts yet.";

  explicit AlertsScreen(AlertsModel::Setup setup, QWidget* parent = nullptr);

  // Reads again when history has changed; does nothing while hidden (showing refreshes).
  void refresh();

  [[nodiscard]] const AlertsModel& model() const { return model_; }
  [[nodiscard]] QTreeWidget* list() const { return list_; }
  [[nodiscard]] const UnavailableView& unavailable() const { return *pages_; }
  // Whether the row of alert `id` stands out as new: unread, or unread when this visit began.
  [[nodiscard]] bool showsAsNew(std::int64_t id) const;

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void fill();
  void addSection(const AlertSection& section);

  AlertsModel model_;
  UnavailableView* pages_ = nullptr;
  QTreeWidget* list_;
  std::set<std::int64_t> fresh_;  // alerts that were unread when seen during this visit
};

}  // namespace pellwin::ui
