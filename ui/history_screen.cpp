#include "ui/history_screen.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QVBoxLayout>

#include "ui/segment_button.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

constexpr int lookupWidth = 280;

// The screen charts one metric at a time, so the model reads that one alone.
HistoryModel::Setup observed(HistoryModel::Setup setup, std::function<void()> changed) {
  setup.changed = std::move(changed);
  setup.metric = setup.metric.value_or(HistoryMetric::memoryUsed);
  return setup;
}

bool askToClear(QWidget* parent) {
  return QMessageBox::question(parent, HistoryModel::clearTitle, HistoryModel::clearMessage,
                               QMessageBox::Cancel | QMessageBox::Yes,
                               QMessageBox::Cancel) == QMessageBox::Yes;
}

QString rangeName(HistoryRange range) {
  switch (range) {
    case HistoryRange::hour: return "Hour";
    case HistoryRange::day: return "Day";
    case HistoryRange::week: return "Week";
    case HistoryRange::month: return "30 days";
  }
  return {};
}

QTreeWidget* makeList(const QStringList& headers, QWidget* parent) {
  auto* list = new QTreeWidget(parent);
  list->setHeaderLabels(headers);
  list->setRootIsDecorated(false);
  list->setSelectionMode(QAbstractItemView::NoSelection);
  list->setFocusPolicy(Qt::NoFocus);
  list->setUniformRowHeights(true);
  return list;
}

}  // namespace

QString metricTitle(HistoryMetric metric) {
  switch (metric) {
    case HistoryMetric::memoryUsed: return "Memory used";
    case HistoryMetric::compressed: return "Compressed memory";
    case HistoryMetric::swapUsed: return "Swap used";
    case HistoryMetric::swapIn: return "Swap in";
    case HistoryMetric::swapOut: return "Swap out";
    case HistoryMetric::swapTraffic: return "Swap traffic";
    case HistoryMetric::pressure: return "Memory pressure";
    case HistoryMetric::cpuBusy: return "CPU busy";
    case HistoryMetric::diskFree: return "Disk free";
    case HistoryMetric::diskRead: return "Disk read";
    case HistoryMetric::diskWrite: return "Disk write";
    case HistoryMetric::diskTraffic: return "Disk traffic";
    case HistoryMetric::thermal: return "Heat";
  }
  return {};
}

HistoryScreen::HistoryScreen(HistoryModel::Setup setup, Confirm confirm, QWidget* parent)
    : QWidget(parent),
      model_(observed(std::move(setup), [this] { fill(); })),
      confirm_(confirm ? std::move(confirm) : Confirm(askToClear)) {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(20, 16, 20, 16);
  layout->setSpacing(10);
  layout->addWidget(buildControls());
  layout->addWidget(buildChartRow(), 3);
  layout->addWidget(buildLower(), 2);
  pages_ = new UnavailableView(verticallyScrolled(page), this);
  auto* outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->addWidget(pages_);
  fill();
}

QWidget* HistoryScreen::buildControls() {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(6);
  metrics_ = new QComboBox(row);
  for (HistoryMetric metric : allHistoryMetrics) {
    metrics_->addItem(metricTitle(metric), static_cast<int>(metric));
  }
  metrics_->setCurrentIndex(metrics_->findData(static_cast<int>(shownMetric())));
  connect(metrics_, &QComboBox::activated, this, [this](int index) {
    setMetric(static_cast<HistoryMetric>(metrics_->itemData(index).toInt()));
  });
  layout->addWidget(metrics_);
  layout->addSpacing(12);
  ranges_ = new QButtonGroup(row);
  for (HistoryRange range : allHistoryRanges) {
    auto* button = new SegmentButton(rangeName(range), row);
    button->setChecked(range == model_.range());
    ranges_->addButton(button, static_cast<int>(range));
    layout->addWidget(button);
  }
  connect(ranges_, &QButtonGroup::idClicked, this,
          [this](int id) { setRange(static_cast<HistoryRange>(id)); });
  status_ = makeLabel(row, -1);
  makeSecondary(status_);
  layout->addWidget(status_, 1, Qt::AlignRight);
  return row;
}

QWidget* HistoryScreen::buildChartRow() {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(10);
  chart_ = new HistoryChart(row);
  connect(chart_, &HistoryChart::pointedAt, this, &HistoryScreen::pointed);
  layout->addWidget(chart_, 1);
  auto* side = new QWidget(row);
  side->setFixedWidth(lookupWidth);
  auto* sideLayout = new QVBoxLayout(side);
  sideLayout->setContentsMargins(0, 0, 0, 0);
  sideLayout->setSpacing(6);
  sideLayout->addWidget(makeSectionTitle("Who was it, then?", side));
  lookupHeading_ = makeLabel(side, 0, true);
  lookupHeading_->setWordWrap(true);
  sideLayout->addWidget(lookupHeading_);
  lookupList_ = makeList({"App", "Use", "Share"}, side);
  lookupList_->setHeaderHidden(true);
  lookupList_->setRootIsDecorated(true);
  lookupList_->header()->setStretchLastSection(false);
  lookupList_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  lookupList_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  lookupList_->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
  sideLayout->addWidget(lookupList_, 1);
  layout->addWidget(side);
  return row;
}

QWidget* HistoryScreen::buildLower() {
  auto* box = new QWidget(this);
  auto* layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(6);
  layout->addWidget(makeSectionTitle("Last 30 days", box));
  strip_ = new DayStripView(box);
  layout->addWidget(strip_);
  layout->addSpacing(6);
  layout->addWidget(makeSectionTitle("Slow periods", box));
  QLabel* explanation = makeLabel(box);
  explanation->setText(qs(slowPeriodExplanation));
  makeSecondary(explanation);
  layout->addWidget(explanation);
  slowPeriods_ = makeList({"Resource", "Started", "Length", "Peak", "Most to blame"}, box);
  slowPeriods_->setMinimumHeight(140);
  slowPeriods_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  slowPeriods_->header()->setStretchLastSection(true);
  layout->addWidget(slowPeriods_, 1);
  clear_ = new QPushButton("Clear History…", box);
  connect(clear_, &QPushButton::clicked, this, &HistoryScreen::clear);
  layout->addWidget(clear_, 0, Qt::AlignLeft);
  return box;
}

void HistoryScreen::refresh() {
  if (isVisible()) model_.refresh();
}

void HistoryScreen::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  model_.refresh();
}

void HistoryScreen::setRange(HistoryRange range) {
  if (QAbstractButton* button = ranges_->button(static_cast<int>(range))) button->setChecked(true);
  model_.setRange(range);
}

void HistoryScreen::setMetric(HistoryMetric metric) {
  metrics_->setCurrentIndex(metrics_->findData(static_cast<int>(metric)));
  // Until the new metric's read arrives the chart keeps what it drew and the status says so.
  model_.setMetric(metric);
}

void HistoryScreen::fill() {
  if (pages_->showUnavailable(model_.unavailable())) return;
  status_->setText(model_.loading() ? "Reading history…" : QString());
  fillLookup();
  const auto& view = model_.view();
  if (!view) return;
  if (auto found = view->series.find(shownMetric()); found != view->series.end()) {
    chart_->show(found->second);
  }
  strip_->show(view->strip);
  fillSlowPeriods(*view);
}

void HistoryScreen::fillSlowPeriods(const HistoryView& view) {
  slowPeriods_->clear();
  for (const SlowPeriodLine& line : view.slowPeriods) {
    new QTreeWidgetItem(slowPeriods_, {qs(line.title), qs(line.startText), qs(line.lengthText),
                                       qs(line.peakText), qs(line.blame.value_or(""))});
  }
  if (view.slowPeriods.empty()) {
    auto* none = new QTreeWidgetItem(slowPeriods_, {noSlowPeriods});
    none->setFirstColumnSpanned(true);
    none->setForeground(0, palette().color(QPalette::PlaceholderText));
  }
}

void HistoryScreen::fillLookup() {
  lookupList_->clear();
  const auto& lookup = model_.lookup();
  chart_->mark(lookup ? std::optional(lookup->minute + 30) : std::nullopt);
  if (!lookup) {
    lookupHeading_->setText(lookupHint);
    return;
  }
  lookupHeading_->setText(qs(lookup->heading));
  if (!lookup->recorded || lookup->rankings.empty()) {
    auto* none = new QTreeWidgetItem(lookupList_, {notRecorded});
    none->setFirstColumnSpanned(true);
    return;
  }
  for (const LookupRanking& ranking : lookup->rankings) {
    auto* title = new QTreeWidgetItem(lookupList_, {qs(ranking.title)});
    QFont bold = title->font(0);
    bold.setBold(true);
    title->setFont(0, bold);
    title->setFirstColumnSpanned(true);
    for (const LookupApp& app : ranking.apps) {
      auto* item = new QTreeWidgetItem(title, {qs(app.name), qs(app.valueText), qs(app.shareText)});
      item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
      item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    }
  }
  lookupList_->expandAll();
}

void HistoryScreen::pointed(double time) {
  const double minute = minuteOf(time);
  if (pointedMinute_ == minute) return;
  pointedMinute_ = minute;
  model_.lookUp(time);
}

void HistoryScreen::clear() {
  model_.requestClear();
  if (confirm_(this)) {
    model_.confirmClear();
  } else {
    model_.cancelClear();
  }
}

}  // namespace pellwin::ui
