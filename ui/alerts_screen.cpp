#include "ui/alerts_screen.h"

#include <QApplication>
#include <QHeaderView>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/palette.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

enum Column { timeColumn, resourceColumn, messageColumn, causeColumn, statusColumn };

AlertsModel::Setup observed(AlertsModel::Setup setup, std::function<void()> changed) {
  setup.changed = std::move(changed);
  return setup;
}

bool anyUnread(const std::vector<AlertSection>& sections) {
  return std::ranges::any_of(sections, [](const AlertSection& section) {
    return std::ranges::any_of(section.lines, &AlertLine::unread);
  });
}

QString causeText(const AlertLine& line) {
  if (!line.causeName) return {};
  if (!line.causeValue) return qs(*line.causeName);
  return qs(*line.causeName) + "  " + qs(*line.causeValue);
}

// The mark of an alert not seen before this visit, in the selection colour as mail readers do.
QIcon newDot() {
  QPixmap dot(10, 10);
  dot.fill(Qt::transparent);
  QPainter painter(&dot);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QApplication::palette().color(QPalette::Highlight));
  painter.drawEllipse(QRectF(1, 1, 8, 8));
  return QIcon(dot);
}

}  // namespace

AlertsScreen::AlertsScreen(AlertsModel::Setup setup, QWidget* parent)
    : QWidget(parent),
      model_(observed(std::move(setup), [this] { fill(); })),
      list_(new QTreeWidget) {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(20, 16, 20, 16);
  layout->setSpacing(8);
  QLabel* title = makeLabel(page, 5, true);
  title->setText("Alerts");
  layout->addWidget(title);
  QLabel* top = makeLabel(page);
  top->setText(caption);
  makeSecondary(top);
  layout->addWidget(top);
  list_->setParent(page);
  list_->setHeaderLabels({"Time", "Resource", "Alert", "App", "Status"});
  list_->setRootIsDecorated(false);
  list_->setItemsExpandable(false);
  list_->setSelectionMode(QAbstractItemView::NoSelection);
  list_->setFocusPolicy(Qt::NoFocus);
  list_->setWordWrap(true);
  QHeaderView* header = list_->header();
  header->setStretchLastSection(false);
  header->setSectionResizeMode(QHeaderView::ResizeToContents);
  header->setSectionResizeMode(messageColumn, QHeaderView::Stretch);
  layout->addWidget(list_, 1);
  pages_ = new UnavailableView(page, this);
  auto* outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->addWidget(pages_);
}

void AlertsScreen::refresh() {
  if (isVisible()) model_.refresh();
}

void AlertsScreen::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  model_.refresh();
  fill();
}

void AlertsScreen::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  fresh_.clear();
}

void AlertsScreen::fill() {
  if (pages_->showUnavailable(model_.unavailable())) return;
  const auto& sections = model_.sections();
  if (!sections) return;
  list_->clear();
  if (isVisible()) {
    for (const AlertSection& section : *sections) {
      for (const AlertLine& line : section.lines) {
        if (line.unread) fresh_.insert(line.id);
      }
    }
  }
  for (const AlertSection& section : *sections) addSection(section);
  if (sections->empty()) {
    auto* none = new QTreeWidgetItem(list_, {empty});
    none->setFirstColumnSpanned(true);
    none->setForeground(0, palette().color(QPalette::PlaceholderText));
  }
  list_->expandAll();
  // Marking read refills the list at once; the rows that were new keep standing out for the
  // rest of this visit, so the user still sees which ones they are.
  if (isVisible() && (anyUnread(*sections) || model_.unreadCount() > 0)) model_.markSeen();
}

bool AlertsScreen::showsAsNew(std::int64_t id) const {
  if (fresh_.contains(id)) return true;
  const auto& sections = model_.sections();
  if (!sections) return false;
  for (const AlertSection& section : *sections) {
    for (const AlertLine& line : section.lines) {
      if (line.id == id) return line.unread;
    }
  }
  return false;
}

void AlertsScreen::addSection(const AlertSection& section) {
  auto* heading = new QTreeWidgetItem(list_, {qs(section.label)});
  QFont bold = heading->font(0);
  bold.setBold(true);
  heading->setFont(0, bold);
  heading->setForeground(0, palette().color(QPalette::PlaceholderText));
  heading->setFirstColumnSpanned(true);
  for (const AlertLine& line : section.lines) {
    auto* item = new QTreeWidgetItem(heading, {qs(line.timeText), qs(line.title), qs(line.message),
                                               causeText(line), qs(line.statusText)});
    item->setData(0, Qt::UserRole, QVariant::fromValue(static_cast<qlonglong>(line.id)));
    if (line.unread || fresh_.contains(line.id)) {
      item->setIcon(timeColumn, newDot());
      item->setFont(messageColumn, bold);
    }
    item->setForeground(statusColumn, line.cleared ? palette().color(QPalette::PlaceholderText)
                                                   : healthEdge(Health::problem));
  }
}

}  // namespace pellwin::ui
