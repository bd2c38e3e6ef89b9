// The space map's delete list beside the rings: the picked items with their sizes and total,
// the refusals of what could not be added, the confirmation with its warnings, and each item's
// result after a removal. It reads and drives the `SpaceMapModel`; `refresh` redraws it from
// the model. UI thread only.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

#include "app/models/space_map_model.h"
#include "ui/confirmation_box.h"

namespace pellwin::ui {

class DeleteListPanel : public QFrame {
  Q_OBJECT

 public:
  explicit DeleteListPanel(SpaceMapModel& model, QWidget* parent = nullptr);

  void refresh();

  [[nodiscard]] QListWidget* items() const { return items_; }
  [[nodiscard]] QLabel* total() const { return total_; }
  [[nodiscard]] QLabel* refusals() const { return refusals_; }
  [[nodiscard]] QPushButton* trashButton() const { return trash_; }
  [[nodiscard]] QPushButton* deleteButton() const { return delete_; }
  [[nodiscard]] QPushButton* clearButton() const { return clear_; }
  [[nodiscard]] QLabel* confirmation() const { return confirmBox_->text(); }
  [[nodiscard]] QPushButton* confirmButton() const { return confirmBox_->confirm(); }
  [[nodiscard]] QPushButton* cancelButton() const { return confirmBox_->cancel(); }
  [[nodiscard]] QLabel* results() const { return results_; }

 private:
  QWidget* confirmationBox();

  SpaceMapModel& model_;
  QListWidget* items_;
  QLabel* total_;
  QLabel* refusals_;
  QPushButton* trash_;
  QPushButton* delete_;
  QPushButton* clear_;
  ConfirmationBox* confirmBox_ = nullptr;
  QLabel* results_;
};

// The delete list's heading line: "3 items, 4.5 GB", or that it is empty.
[[nodiscard]] QString deleteListTotal(const RemovalSelection& list);

}  // namespace pellwin::ui
