// The Quick clean screen: what the cleaner's scan found, by group, with sizes and ticks; the
// first few groups and "Show all"; the places left alone and why (the program that runs); the
// confirmation; the run and its summary. It owns its `CleanerModel` (made from the services it
// is given, with `post` and `changed` pointed at itself), scans the first time it is shown, and
// redraws from the model on every change; the model scans and removes on its own worker. UI
// thread only.
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QWidget>
#include <memory>

#include "app/models/cleaner_model.h"
#include "ui/confirmation_box.h"

namespace pellwin::ui {

class QuickCleanScreen : public QWidget {
  Q_OBJECT

 public:
  // `services.post` and `services.changed` are replaced by the screen's own.
  explicit QuickCleanScreen(CleanerModel::Services services, QWidget* parent = nullptr);
  ~QuickCleanScreen() override;

  [[nodiscard]] CleanerModel& model() { return *model_; }
  void refresh();

  [[nodiscard]] QLabel* status() const { return status_; }
  [[nodiscard]] QTreeWidget* groups() const { return groups_; }
  [[nodiscard]] QPushButton* showAllButton() const { return showAll_; }
  [[nodiscard]] QPushButton* scanButton() const { return scan_; }
  [[nodiscard]] QPushButton* cleanButton() const { return clean_; }
  [[nodiscard]] QWidget* confirmationBox() const { return confirmBox_; }
  [[nodiscard]] QLabel* confirmation() const { return confirmBox_->text(); }
  [[nodiscard]] QPushButton* confirmButton() const { return confirmBox_->confirm(); }
  [[nodiscard]] QPushButton* cancelButton() const { return confirmBox_->cancel(); }
  [[nodiscard]] QLabel* summary() const { return summary_; }
  [[nodiscard]] QLabel* emptyTitle() const { return emptyTitle_; }
  [[nodiscard]] QLabel* emptyMessage() const { return emptyMessage_; }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* makeConfirmationBox();
  void refreshGroups();
  // One group's rows: with ticks to change before a run, only what went once `cleaned`.
  void addGroup(const CleanGroupPlan& group, const CleanTicks& ticked, bool editable, bool cleaned);
  void itemChanged(QTreeWidgetItem* item, int column);

  std::unique_ptr<CleanerModel> model_;
  QLabel* status_;
  QPushButton* scan_;
  QPushButton* clean_;
  QTreeWidget* groups_;
  QPushButton* showAll_;
  ConfirmationBox* confirmBox_ = nullptr;
  QLabel* summary_;
  QLabel* emptyTitle_;
  QLabel* emptyMessage_;
  bool filling_ = false;  // the tree is being rebuilt: its tick changes are not the user's
};

// The line under the title: the scan's sentence while scanning, else what is ticked.
[[nodiscard]] QString quickCleanStatus(const CleanerModel& model);

}  // namespace pellwin::ui
