#include "ui/report_screen.h"

#include <QHeaderView>
#include <QVBoxLayout>

#include "core/history/day_strip.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

ReportModel::Setup observed(ReportModel::Setup setup, std::function<void()> changed) {
  setup.changed = std::move(changed);
  return setup;
}

// A list that is as tall as its rows: the page scrolls, not each list.
QTreeWidget* makeTable(const QStringList& headers, QWidget* parent) {
  auto* table = new QTreeWidget(parent);
  table->setHeaderLabels(headers);
  table->setRootIsDecorated(false);
  table->setSelectionMode(QAbstractItemView::NoSelection);
  table->setFocusPolicy(Qt::NoFocus);
  table->setUniformRowHeights(true);
  table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  table->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  table->header()->setStretchLastSection(true);
  return table;
}

void fitRows(QTreeWidget* table) {
  const int rows = std::max(1, table->topLevelItemCount());
  const int row = table->sizeHintForRow(0) > 0 ? table->sizeHintForRow(0) : 22;
  table->setFixedHeight(table->header()->sizeHint().height() + rows * row +
                        2 * table->frameWidth() + 2);
}

QString resourceList(const std::vector<Resource>& resources) {
  QStringList names;
  for (Resource resource : resources) names << qs(title(resource));
  return names.join(", ");
}

void collect(const QTreeWidget* table, QStringList& out) {
  for (int row = 0; row < table->topLevelItemCount(); ++row) {
    QStringList cells;
    const QTreeWidgetItem* item = table->topLevelItem(row);
    for (int column = 0; column < table->columnCount(); ++column) cells << item->text(column);
    out << cells.join(" | ");
  }
}

}  // namespace

ReportScreen::ReportScreen(ReportModel::Setup setup, QWidget* parent)
    : QWidget(parent), model_(observed(std::move(setup), [this] { fill(); })) {
  pages_ = new UnavailableView(verticallyScrolled(buildPage()), this);
  auto* outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->addWidget(pages_);
}

QWidget* ReportScreen::buildPage() {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(20, 16, 20, 16);
  layout->setSpacing(8);
  QLabel* heading = makeLabel(page, 6, true);
  heading->setText("This week");
  layout->addWidget(heading);
  period_ = makeLabel(page);
  makeSecondary(period_);
  layout->addWidget(period_);
  layout->addSpacing(8);

  causesHeading_ = makeLabel(page, 2, true);
  layout->addWidget(causesHeading_);
  causes_ = makeTable({"App", "Red time it led", "Blamed for", "Days it led"}, page);
  layout->addWidget(causes_);
  layout->addSpacing(8);

  trend_ = makeLabel(page, 2, true);
  trend_->setWordWrap(true);
  layout->addWidget(trend_);
  changes_ = makeLabel(page);
  changes_->setWordWrap(true);
  layout->addWidget(changes_);
  layout->addSpacing(4);
  resources_ = makeTable({"Resource", "This week", "Last week"}, page);
  layout->addWidget(resources_);
  layout->addSpacing(8);

  layout->addWidget(makeSectionTitle("Cleanups", page));
  cleanupsText_ = makeLabel(page, 0, true);
  layout->addWidget(cleanupsText_);
  cleanups_ = makeTable({"When", "What was cleaned"}, page);
  layout->addWidget(cleanups_);
  layout->addStretch(1);
  return page;
}

void ReportScreen::refresh() {
  if (isVisible()) model_.refresh();
}

void ReportScreen::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  model_.refresh();
}

void ReportScreen::fill() {
  if (pages_->showUnavailable(model_.unavailable())) return;
  const auto& report = model_.report();
  if (!report) return;
  period_->setText(qs(report->periodText));
  causesHeading_->setText(qs(report->causesHeading));
  fillCauses(*report);
  trend_->setText(qs(report->trendText));
  changes_->setText(bulleted(report->changes));
  changes_->setVisible(!report->changes.empty());
  fillResources(*report);
  fillCleanups(*report);
}

void ReportScreen::fillCauses(const WeeklyReport& report) {
  causes_->clear();
  for (const CauseTotal& cause : report.causes) {
    new QTreeWidgetItem(causes_, {qs(cause.name), qs(redAndAmberText(cause.seconds, 0)),
                                  resourceList(cause.resources), QString::number(cause.days)});
  }
  if (report.causes.empty()) {
    auto* none = new QTreeWidgetItem(causes_, {qs(report.causesEmptyText)});
    none->setFirstColumnSpanned(true);
  }
  fitRows(causes_);
}

void ReportScreen::fillResources(const WeeklyReport& report) {
  resources_->clear();
  for (const ResourceWeek& week : report.resources) {
    new QTreeWidgetItem(resources_, {qs(week.title), qs(week.text), qs(week.previousText)});
  }
  fitRows(resources_);
}

void ReportScreen::fillCleanups(const WeeklyReport& report) {
  cleanupsText_->setText(qs(report.cleanupsText));
  cleanups_->clear();
  for (const CleanupLine& line : report.cleanups) {
    new QTreeWidgetItem(cleanups_, {qs(line.whenText), qs(line.text)});
  }
  cleanups_->setVisible(!report.cleanups.empty());
  fitRows(cleanups_);
}

QStringList ReportScreen::texts() const {
  QStringList out{period_->text(), causesHeading_->text()};
  collect(causes_, out);
  out << trend_->text();
  if (changes_->isVisibleTo(this)) out << changes_->text();
  collect(resources_, out);
  out << cleanupsText_->text();
  collect(cleanups_, out);
  return out;
}

}  // namespace pellwin::ui
