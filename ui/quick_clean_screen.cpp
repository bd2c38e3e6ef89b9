#include "ui/quick_clean_screen.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>
#include <algorithm>

#include "core/base/format.h"
#include "ui/confirmation_box.h"
#include "ui/post_to.h"
#include "ui/ui_text.h"

namespace pellwin::ui {

namespace {

constexpr int itemRole = Qt::UserRole;       // an item's id
constexpr int groupRole = Qt::UserRole + 1;  // a group's id

Qt::CheckState checkState(CleanTickState state) {
  switch (state) {
    case CleanTickState::all: return Qt::Checked;
    case CleanTickState::some: return Qt::PartiallyChecked;
    case CleanTickState::none: return Qt::Unchecked;
  }
  return Qt::Unchecked;
}

QString lines(const std::vector<std::string>& sentences) {
  QStringList out;
  for (const std::string& sentence : sentences) out << qs(sentence);
  return out.join('\n');
}

}  // namespace

QString quickCleanStatus(const CleanerModel& model) {
  using enum CleanerModel::Phase;
  switch (model.phase()) {
    case idle: return {};
    case scanning: return CleanerTexts::scanning;
    case cleaning: return "Cleaning…";
    case done: return "Done";
    case ready: break;
  }
  const CleanTotals totals = model.totals();
  if (totals.items == 0) return "Nothing ticked";
  const QString items = totals.items == 1 ? "1 item" : QString::number(totals.items) + " items";
  const std::uint64_t bytes = totals.deleteBytes > UINT64_MAX - totals.trashBytes
                                  ? UINT64_MAX
                                  : totals.deleteBytes + totals.trashBytes;
  return items + " ticked, " + qs(Format::disk(bytes));
}

QuickCleanScreen::QuickCleanScreen(CleanerModel::Services services, QWidget* parent)
    : QWidget(parent),
      status_(makeLabel(this)),
      scan_(new QPushButton("Scan again", this)),
      clean_(new QPushButton(QString(CleanerTexts::confirmButton) + "…", this)),
      groups_(new QTreeWidget(this)),
      showAll_(new QPushButton("Show all", this)),
      summary_(wrapping(this, 1)),
      emptyTitle_(wrapping(this, 2, true)),
      emptyMessage_(wrapping(this)) {
  services.post = postTo(this);
  services.changed = [this] { refresh(); };
  model_ = std::make_unique<CleanerModel>(std::move(services));

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 12, 16, 12);
  auto* header = new QHBoxLayout;
  auto* text = new QVBoxLayout;
  QLabel* title = makeLabel(this, 5, true);
  title->setText("Quick clean");
  text->addWidget(title);
  makeSecondary(status_);
  text->addWidget(status_);
  header->addLayout(text, 1);
  header->addWidget(scan_);
  header->addWidget(clean_);
  clean_->setDefault(true);
  layout->addLayout(header);
  layout->addWidget(summary_);

  groups_->setHeaderLabels({"Place", "Size", ""});
  groups_->setUniformRowHeights(false);
  groups_->setWordWrap(true);
  groups_->header()->setStretchLastSection(true);
  groups_->header()->setSectionResizeMode(0, QHeaderView::Interactive);
  groups_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  groups_->setColumnWidth(0, 340);
  layout->addWidget(groups_, 1);
  layout->addWidget(showAll_, 0, Qt::AlignLeft);
  layout->addWidget(emptyTitle_);
  // Without the list (nothing found, or after a run) the text below takes its room, from the top.
  layout->addWidget(emptyMessage_, 1);
  layout->addWidget(makeConfirmationBox());
  emptyMessage_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  summary_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  emptyTitle_->setText(CleanerTexts::emptyTitle);
  emptyMessage_->setText(CleanerTexts::emptyMessage);
  makeSecondary(emptyMessage_);

  connect(scan_, &QPushButton::clicked, this, [this] { model_->scan(); });
  connect(clean_, &QPushButton::clicked, this, [this] { model_->requestClean(); });
  connect(showAll_, &QPushButton::clicked, this, [this] { model_->setShowingAll(true); });
  connect(groups_, &QTreeWidget::itemChanged, this, &QuickCleanScreen::itemChanged);
  auto fold = [this](QTreeWidgetItem* item) {
    if (filling_) return;
    const QString group = item->data(0, groupRole).toString();
    if (!group.isEmpty() && item->parent() == nullptr) model_->toggleCollapsed(group.toStdString());
  };
  connect(groups_, &QTreeWidget::itemExpanded, this, fold);
  connect(groups_, &QTreeWidget::itemCollapsed, this, fold);
  refresh();
}

// The model's worker must stop before the widgets its results would reach go away.
QuickCleanScreen::~QuickCleanScreen() { model_.reset(); }

QWidget* QuickCleanScreen::makeConfirmationBox() {
  confirmBox_ = new ConfirmationBox(CleanerTexts::cancelButton, CleanerTexts::confirmButton,
                                    CleanerTexts::confirmNote, this);
  connect(confirmBox_->cancel(), &QPushButton::clicked, this, [this] { model_->cancelClean(); });
  connect(confirmBox_->confirm(), &QPushButton::clicked, this, [this] { model_->clean(); });
  return confirmBox_;
}

void QuickCleanScreen::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (model_->phase() == CleanerModel::Phase::idle) model_->scan();
}

void QuickCleanScreen::refresh() {
  using enum CleanerModel::Phase;
  const CleanerModel::Phase phase = model_->phase();
  status_->setText(quickCleanStatus(*model_));
  scan_->setEnabled(phase == idle || phase == ready || phase == done);
  clean_->setEnabled(phase == ready && model_->totals().items > 0 && !model_->confirming());
  const bool empty = (phase == ready || phase == done) && model_->plan() &&
                     model_->plan()->visibleGroups().empty() && !model_->summary();
  emptyTitle_->setVisible(empty);
  emptyMessage_->setVisible(empty);
  refreshGroups();

  confirmBox_->setVisible(model_->confirming());
  if (model_->confirming()) confirmBox_->text()->setText(lines(model_->confirmationText()));

  const auto& summary = model_->summary();
  if (phase == done && summary) {
    QString text = lines(CleanerTexts::result(*summary));
    if (!summary->problems.empty()) text += "\n" + bulleted(summary->problems);
    summary_->setText(text);
  }
  summary_->setVisible(phase == done && summary.has_value());
}

// Before a run, every group with ticks to change; after it, what was cleaned: the ticked items
// of each group, beside the group's note of where they went. What failed or was left alone is
// in the summary above.
void QuickCleanScreen::refreshGroups() {
  using enum CleanerModel::Phase;
  filling_ = true;
  groups_->clear();
  const auto& plan = model_->plan();
  const CleanerModel::Phase phase = model_->phase();
  const bool cleaned = phase == done && model_->summary().has_value();
  const bool listing = plan && (phase == ready || phase == cleaning || cleaned);
  showAll_->setVisible(false);
  if (!listing) {
    groups_->setVisible(false);
    filling_ = false;
    return;
  }
  const CleanTicks& ticked = model_->ticked();
  const bool editable = phase == ready && !model_->confirming();
  // Groups behind "Show all" went too when they were ticked.
  const std::vector<CleanGroupPlan> listed =
      cleaned ? plan->visibleGroups() : model_->listedGroups();
  for (const CleanGroupPlan& group : listed) {
    const auto isTicked = [&](const CleanItem& item) { return ticked.contains(item.id()); };
    if (cleaned && std::ranges::none_of(group.items, isTicked)) continue;
    addGroup(group, ticked, editable, cleaned);
  }
  groups_->setVisible(groups_->topLevelItemCount() > 0);
  showAll_->setVisible(!cleaned && !model_->showingAll() &&
                       listed.size() < plan->visibleGroups().size());
  filling_ = false;
}

void QuickCleanScreen::addGroup(const CleanGroupPlan& group, const CleanTicks& ticked,
                                bool editable, bool cleaned) {
  auto* top = new QTreeWidgetItem(
      groups_, {qs(group.group.title), qs(Format::disk(group.tickedBytes(ticked))),
                cleaned ? QString() : qs(group.detail())});
  QFont bold = top->font(0);
  bold.setBold(true);
  top->setFont(0, bold);
  top->setData(0, groupRole, qs(group.group.id));
  top->setFlags(Qt::ItemIsEnabled | (editable ? Qt::ItemIsUserCheckable : Qt::NoItemFlags));
  if (!cleaned) top->setCheckState(0, checkState(group.tickState(ticked)));
  top->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
  top->setToolTip(0, qs(group.group.explanation));
  auto* note = new QTreeWidgetItem(top, {qs(CleanerTexts::actionNote(group.group.action))});
  note->setFlags(Qt::ItemIsEnabled);
  note->setForeground(0, palette().color(QPalette::PlaceholderText));
  note->setFirstColumnSpanned(true);
  for (const CleanItem& item : group.items) {
    const bool tick = ticked.contains(item.id());
    if (cleaned && !tick) continue;
    auto* row = new QTreeWidgetItem(top, {qs(item.name), qs(Format::disk(item.bytes))});
    row->setData(0, itemRole, qs(item.id()));
    row->setToolTip(0, qs(item.path));
    row->setFlags(Qt::ItemIsEnabled | (editable ? Qt::ItemIsUserCheckable : Qt::NoItemFlags));
    if (!cleaned) row->setCheckState(0, tick ? Qt::Checked : Qt::Unchecked);
    row->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
  }
  if (!cleaned) {
    for (const CleanSkip& skip : group.skipped) {
      auto* row =
          new QTreeWidgetItem(top, {qs(skip.name), QString(), qs(CleanerTexts::skipRow(skip))});
      row->setFlags(Qt::ItemIsEnabled);
      row->setForeground(0, palette().color(QPalette::PlaceholderText));
    }
  }
  top->setExpanded(cleaned || !model_->collapsed().contains(group.group.id));
}

void QuickCleanScreen::itemChanged(QTreeWidgetItem* item, int column) {
  if (filling_ || column != 0) return;
  const QString id = item->data(0, itemRole).toString();
  const QString group = item->data(0, groupRole).toString();
  // The model's change rebuilds the tree, so this item is gone once the call returns; the
  // rebuild is queued so that Qt finishes with the item first.
  if (!id.isEmpty()) {
    QMetaObject::invokeMethod(
        this, [this, id] { model_->toggle(id.toStdString()); }, Qt::QueuedConnection);
  } else if (!group.isEmpty()) {
    QMetaObject::invokeMethod(
        this, [this, group] { model_->toggleGroup(group.toStdString()); }, Qt::QueuedConnection);
  }
}

}  // namespace pellwin::ui
