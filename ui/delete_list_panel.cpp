#include "ui/delete_list_panel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "core/base/format.h"
#include "core/space/space_map_texts.h"
#include "ui/confirmation_box.h"
#include "ui/ui_text.h"

namespace pellwin::ui {

namespace {
constexpr int pathRole = Qt::UserRole;

// A wrapped label inside the side panel's splitter is not given the height its lines need
// unless it asks for it. An empty label has no height for a width (-1) and asks for none.
void fitHeight(QLabel* label, int width) {
  label->setMinimumHeight(std::max(0, label->heightForWidth(std::max(width, 200))));
}

}  // namespace

QString deleteListTotal(const RemovalSelection& list) {
  if (list.isEmpty()) return "Nothing picked yet";
  const QString count =
      list.count() == 1 ? QString("1 item") : QString::number(list.count()) + " items";
  return count + ", " + qs(Format::disk(list.totalBytes()));
}

DeleteListPanel::DeleteListPanel(SpaceMapModel& model, QWidget* parent)
    : QFrame(parent),
      model_(model),
      items_(new QListWidget(this)),
      total_(makeLabel(this, 0, true)),
      refusals_(wrapping(this)),
      trash_(new QPushButton(qs(SpaceMapTexts::confirmButton) + "…", this)),
      delete_(new QPushButton(qs(SpaceMapTexts::confirmDeleteButton) + "…", this)),
      clear_(new QPushButton("Clear", this)),
      results_(wrapping(this)) {
  setFrameShape(QFrame::StyledPanel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(makeSectionTitle("Delete list", this));
  layout->addWidget(total_);
  items_->setMinimumHeight(70);
  items_->setToolTip("Double-click an item to take it off the list");
  layout->addWidget(items_, 1);
  refusals_->setStyleSheet("color: #C0504D");
  layout->addWidget(refusals_);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(trash_);
  buttons->addWidget(delete_);
  buttons->addStretch(1);
  buttons->addWidget(clear_);
  layout->addLayout(buttons);
  layout->addWidget(confirmationBox());
  layout->addWidget(results_);

  connect(items_, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    model_.removeFromDeleteList(item->data(pathRole).toString().toStdString());
  });
  connect(trash_, &QPushButton::clicked, this,
          [this] { model_.requestRemoval(CleanAction::trash); });
  connect(delete_, &QPushButton::clicked, this,
          [this] { model_.requestRemoval(CleanAction::delete_); });
  connect(clear_, &QPushButton::clicked, this, [this] { model_.clearDeleteList(); });
  refresh();
}

QWidget* DeleteListPanel::confirmationBox() {
  confirmBox_ = new ConfirmationBox(qs(SpaceMapTexts::cancelButton), {}, {}, this);
  connect(confirmBox_->cancel(), &QPushButton::clicked, this, [this] { model_.cancelRemoval(); });
  connect(confirmBox_->confirm(), &QPushButton::clicked, this, [this] { model_.confirmRemoval(); });
  return confirmBox_;
}

void DeleteListPanel::refresh() {
  const RemovalSelection& list = model_.deleteList();
  total_->setText(deleteListTotal(list));
  items_->clear();
  for (const SizeNode& node : list.items()) {
    auto* item = new QListWidgetItem(qs(node.name) + "   " + qs(node.sizeLabel()), items_);
    item->setData(pathRole, qs(node.path.str()));
    item->setToolTip(qs(node.path.str()));
  }
  std::vector<std::string> refused;
  for (const SpaceMapModel::Refused& r : model_.refusals())
    refused.push_back(r.name + ": " + r.reason);
  refusals_->setText(bulleted(refused));
  refusals_->setVisible(!refused.empty());

  const bool ready = model_.phase() == SpaceMapModel::Phase::ready;
  const std::optional<CleanAction> confirming = model_.confirming();
  trash_->setEnabled(ready && !list.isEmpty() && !confirming);
  delete_->setVisible(model_.canDeleteForGood());
  delete_->setEnabled(ready && !list.isEmpty() && !confirming);
  clear_->setEnabled(!list.isEmpty() && model_.phase() != SpaceMapModel::Phase::removing);

  confirmBox_->setVisible(confirming.has_value());
  if (confirming) {
    const std::vector<std::string> lines = model_.confirmationText();
    QString text = lines.empty() ? QString() : qs(lines.front());
    if (lines.size() > 1) text += "\n" + bulleted({lines.begin() + 1, lines.end()});
    confirmBox_->text()->setText(text);
    fitHeight(confirmBox_->text(), items_->width());
    confirmBox_->confirm()->setText(qs(*confirming == CleanAction::trash
                                           ? SpaceMapTexts::confirmButton
                                           : SpaceMapTexts::confirmDeleteButton));
  }

  const auto& report = model_.lastRemoval();
  if (model_.phase() == SpaceMapModel::Phase::removing) {
    results_->setText("Removing…");
  } else {
    results_->setText(report ? bulleted(report->sentences) : QString());
  }
  results_->setVisible(!results_->text().isEmpty());
  fitHeight(results_, items_->width());
}

}  // namespace pellwin::ui
