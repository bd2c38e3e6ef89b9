#include "ui/monitor_screen.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/health_dot.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

constexpr int detailsWidth = 300;
// Below this the list would show only a handful of apps; the page scrolls instead.
constexpr int listMinimumHeight = 250;

QWidget* legendRow(QWidget* parent) {
  auto* row = new QWidget(parent);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(2, 0, 0, 0);
  layout->setSpacing(4);
  for (Health health : {Health::ok, Health::strain, Health::problem}) {
    auto* dot = new HealthDot(8, row);
    dot->setHealth(health);
    layout->addWidget(dot);
  }
  layout->addSpacing(4);
  QLabel* text = makeLabel(row, -1);
  text->setObjectName("legend");
  text->setText(MonitorScreen::legend);
  makeSecondary(text);
  layout->addWidget(text, 1);
  return row;
}

}  // namespace

MonitorScreen::MonitorScreen(std::function<const LiveState&()> state, QuitControl& quit,
                             QWidget* parent)
    : QWidget(parent), state_(std::move(state)), quit_(quit) {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(20, 16, 20, 16);
  layout->setSpacing(10);
  layout->addWidget(buildTop());
  result_ = new QuitResultBar(quit_, this);
  layout->addWidget(result_);
  layout->addWidget(buildList(), 1);
  // A small window scrolls the whole page rather than squeezing the cards into each other.
  auto* scroll = new QScrollArea(this);
  scroll->setWidget(page);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  auto* outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->addWidget(scroll);
  connect(&quit_, &QuitControl::changed, this, &MonitorScreen::refresh);
}

QWidget* MonitorScreen::buildTop() {
  auto* top = new QWidget(this);
  auto* layout = new QVBoxLayout(top);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(10);
  auto* tiles = new QHBoxLayout;
  tiles->setSpacing(10);
  for (std::size_t i = 0; i < tiles_.size(); ++i) {
    tiles_[i] = new ResourceTile(allResources[i], top);
    tiles->addWidget(tiles_[i], 1);
  }
  layout->addLayout(tiles);
  auto* middle = new QHBoxLayout;
  middle->setSpacing(10);
  verdict_ = new VerdictView(top);
  energy_ = new EnergyView(top);
  energy_->setFixedWidth(detailsWidth);
  // The cards keep the height their lines need; the app list takes what is left.
  for (QWidget* card : {static_cast<QWidget*>(verdict_), static_cast<QWidget*>(energy_)}) {
    card->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
  }
  middle->addWidget(verdict_, 1);
  middle->addWidget(energy_);
  layout->addLayout(middle);
  layout->addWidget(legendRow(top));
  return top;
}

QWidget* MonitorScreen::buildList() {
  auto* box = new QWidget(this);
  auto* layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(6);
  QLabel* caption = makeLabel(box);
  caption->setObjectName("listCaption");
  caption->setText(listCaption);
  makeSecondary(caption);
  layout->addWidget(caption);

  model_ = new AppTableModel([this](const std::string& id) { return quit_.isWorking(id); }, box);
  view_ = new QTreeView(box);
  view_->setMinimumHeight(listMinimumHeight);
  view_->setModel(model_);
  view_->setUniformRowHeights(true);
  view_->setRootIsDecorated(false);
  view_->setItemsExpandable(false);
  view_->setIndentation(14);
  view_->setSelectionBehavior(QAbstractItemView::SelectRows);
  view_->setSelectionMode(QAbstractItemView::SingleSelection);
  view_->setAllColumnsShowFocus(true);
  QHeaderView* header = view_->header();
  header->setStretchLastSection(false);
  header->setSectionResizeMode(AppTableModel::nameColumn, QHeaderView::Stretch);
  for (int column = AppTableModel::memoryColumn; column < AppTableModel::columnTotal; ++column) {
    header->setSectionResizeMode(column, QHeaderView::Fixed);
    header->resizeSection(column, 86);
  }
  header->setSectionsClickable(true);
  header->setSortIndicatorShown(true);
  header->setSortIndicator(AppTableModel::column(list_.sort()), Qt::DescendingOrder);
  connect(header, &QHeaderView::sectionClicked, this, &MonitorScreen::headerClicked);
  connect(view_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& current) { currentChanged(current); });
  // Headings span the row and stay open: the list is read, not folded.
  connect(model_, &QAbstractItemModel::rowsInserted, this,
          [this](const QModelIndex& parent, int first, int last) {
            if (parent.isValid()) return;
            for (int row = first; row <= last; ++row) {
              view_->setFirstColumnSpanned(row, {}, true);
              view_->expand(model_->index(row, 0));
            }
          });

  details_ = new AppDetails(box);
  details_->setFixedWidth(detailsWidth);
  connect(details_, &AppDetails::quitClicked, this, &MonitorScreen::quitSelected);

  auto* row = new QHBoxLayout;
  row->setSpacing(10);
  row->addWidget(view_, 1);
  row->addWidget(details_);
  layout->addLayout(row, 1);
  return box;
}

void MonitorScreen::refresh() {
  if (isVisible()) fill();
}

void MonitorScreen::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  fill();
}

void MonitorScreen::fill() {
  const LiveState& state = state_();
  result_->refresh();
  verdict_->set(state.verdict ? &*state.verdict : nullptr);
  energy_->set(state.battery, state.snapshot ? state.snapshot->timestamp : 0);
  for (std::size_t i = 0; i < tiles_.size(); ++i) {
    const Resource resource = allResources[i];
    const auto shown = state.displayed.find(resource);
    const Health health = shown == state.displayed.end() ? Health::ok : shown->second;
    QString status;
    if (state.verdict) {
      const auto& rs = state.verdict->resources;
      const auto found = std::ranges::find(rs, resource, &ResourceVerdict::resource);
      if (found != rs.end()) status = qs(found->shortStatus);
    }
    tiles_[i]->set(
        health,
        state.snapshot ? resourceFigure(resource, *state.snapshot) : ResourceFigure{.value = "—"},
        status);
  }
  fillList(state);
}

void MonitorScreen::fillList(const LiveState& state) {
  static const std::vector<AppUsage> none;
  list_.show(state.snapshot ? state.snapshot->apps : none);
  syncing_ = true;
  model_->sync(list_.groups(), state.snapshot ? state.snapshot->cpu.coreCount : 1);
  syncing_ = false;
  keepSelection();
  const AppUsage* picked = list_.selected();
  details_->set(picked, state.verdict ? &*state.verdict : nullptr,
                state.snapshot ? state.snapshot->timestamp : 0,
                picked != nullptr && quit_.isWorking(picked->id));
}

// The view's own selection follows rows as they move; this puts it back on the picked app
// after the rows around it were removed, and takes it away when the app has ended, where a
// view would move it to a neighbour.
void MonitorScreen::keepSelection() {
  const QModelIndex wanted =
      list_.selectedID() ? model_->indexOf(*list_.selectedID()) : QModelIndex();
  QItemSelectionModel* selection = view_->selectionModel();
  if (selection->currentIndex().siblingAtColumn(0) == wanted &&
      selection->isRowSelected(wanted.row(), wanted.parent()) == wanted.isValid()) {
    return;
  }
  syncing_ = true;
  if (wanted.isValid()) {
    selection->setCurrentIndex(wanted,
                               QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  } else {
    selection->clear();
  }
  syncing_ = false;
}

void MonitorScreen::currentChanged(const QModelIndex& current) {
  if (syncing_) return;
  const AppUsage* app = model_->app(current);
  list_.select(app ? std::optional(app->id) : std::nullopt);
  const LiveState& state = state_();
  details_->set(list_.selected(), state.verdict ? &*state.verdict : nullptr,
                state.snapshot ? state.snapshot->timestamp : 0,
                list_.selected() != nullptr && quit_.isWorking(list_.selected()->id));
}

void MonitorScreen::headerClicked(int column) {
  const std::optional<MonitorSort> sort = AppTableModel::sortOf(column);
  const MonitorSort before = list_.sort();
  setSort(sort.value_or(before));
  if (list_.sort() != before) emit sortPicked(list_.sort());
}

void MonitorScreen::setSort(MonitorSort sort) {
  view_->header()->setSortIndicator(AppTableModel::column(sort), Qt::DescendingOrder);
  if (sort == list_.sort()) return;
  list_.setSort(sort);
  syncing_ = true;
  model_->sync(list_.groups(), state_().snapshot ? state_().snapshot->cpu.coreCount : 1);
  syncing_ = false;
  keepSelection();
}

void MonitorScreen::select(const std::string& appID) {
  const QModelIndex index = model_->indexOf(appID);
  if (!index.isValid()) return;
  view_->selectionModel()->setCurrentIndex(
      index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void MonitorScreen::quitSelected(bool force) {
  if (const AppUsage* app = list_.selected()) {
    const AppUsage picked = *app;
    quit_.confirmAndQuit(picked, force, window());
  }
}

QStringList MonitorScreen::tileTexts() const {
  QStringList out;
  for (const ResourceTile* tile : tiles_) out << tile->text();
  return out;
}

}  // namespace pellwin::ui
