#include "ui/disk_cleanup_screen.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPainter>
#include <QSplitter>
#include <QVBoxLayout>

#include "app/system_calendar.h"
#include "core/base/format.h"
#include "ui/post_to.h"
#include "ui/ui_text.h"

namespace pellwin::ui {

namespace {

constexpr int pathRole = Qt::UserRole;
constexpr int projectRole = Qt::UserRole + 1;

QIcon swatch(const QColor& colour) {
  QPixmap pixmap(12, 12);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(colour.darker(130));
  painter.setBrush(colour);
  painter.drawRoundedRect(QRectF(0.5, 0.5, 11, 11), 3, 3);
  return QIcon(pixmap);
}

QTreeWidget* makeList(QWidget* parent, const QStringList& headers) {
  auto* list = new QTreeWidget(parent);
  list->setHeaderLabels(headers);
  list->setRootIsDecorated(false);
  list->setUniformRowHeights(true);
  list->header()->setStretchLastSection(false);
  list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  for (int column = 1; column < headers.size(); ++column)
    list->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
  return list;
}

}  // namespace

QString spaceMapStatus(const SpaceMapModel& model, double now) {
  using enum SpaceMapModel::Phase;
  switch (model.phase()) {
    case idle: return {};
    case loading: return "Opening the last scan…";
    case scanning: {
      if (model.isCancelling()) return "Stopping the scan…";
      const auto& progress = model.progress();
      if (!progress) return "Scanning…";
      return "Scanning… " + qs(Format::count(static_cast<std::uint64_t>(progress->items))) +
             " items, " +
             qs(Format::disk(progress->bytes));
    }
    case removing: return "Removing the delete list…";
    case ready: break;
  }
  if (model.scanProblem()) return qs(*model.scanProblem());
  if (!model.tree()) return "No scan yet";
  QString text = "Scanned " + qs(model.scannedRoot());
  if (const auto at = model.scannedAt()) text += " at " + clockText(*at, now);
  return text;
}

DiskCleanupScreen::DiskCleanupScreen(std::string home, RemovalGuards guards,
                                     SpaceMapModel::Services services, QWidget* parent)
    : QWidget(parent) {
  services.post = postTo(this);
  services.changed = [this] { refresh(); };
  model_ = std::make_unique<SpaceMapModel>(std::move(home), std::move(guards), std::move(services));
  rings_ = new SunburstView([this](const SunburstArc& arc) -> std::optional<std::string> {
    switch (arc.kind) {
      case SunburstKind::rest: return std::string(SunburstLayout::restDescription);
      case SunburstKind::other: return std::string(SunburstLayout::otherDescription);
      case SunburstKind::node: return model_->explanation(arc.path);
    }
    return std::nullopt;
  });
  connect(rings_, &SunburstView::arcClicked, this, &DiskCleanupScreen::clickArc);
  connect(rings_, &SunburstView::centreClicked, this, [this] { model_->zoomOut(); });
  connect(rings_, &SunburstView::arcMenuRequested, this, &DiskCleanupScreen::openArcMenu);
  arcMenu_ = new QMenu(this);
  addArc_ = arcMenu_->addAction("Add to delete list");
  connect(addArc_, &QAction::triggered, this, [this] { model_->addToDeleteList(menuPath_); });

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 12, 16, 12);
  layout->addWidget(header());
  breadcrumb_ = new QWidget(this);
  auto* crumbs = new QHBoxLayout(breadcrumb_);
  crumbs->setContentsMargins(0, 0, 0, 0);
  crumbs->setSpacing(2);
  layout->addWidget(breadcrumb_);

  auto* body = new QHBoxLayout;
  auto* left = new QVBoxLayout;
  left->addWidget(rings_, 1);
  auto* pickRow = new QHBoxLayout;
  picked_ = makeLabel(this);
  makeSecondary(picked_);
  addPicked_ = new QPushButton("Add to delete list", this);
  pickRow->addWidget(picked_, 1);
  pickRow->addWidget(addPicked_);
  left->addLayout(pickRow);
  body->addLayout(left, 5);
  body->addWidget(sidePanel(), 4);
  layout->addLayout(body, 1);

  connect(addPicked_, &QPushButton::clicked, this, [this] {
    if (const SizeNode* picked = pickedNow()) model_->addToDeleteList(picked->path.str());
  });
  refresh();
}

// The model's worker must stop before the widgets its results would reach go away.
DiskCleanupScreen::~DiskCleanupScreen() { model_.reset(); }

QWidget* DiskCleanupScreen::header() {
  auto* box = new QWidget(this);
  auto* row = new QHBoxLayout(box);
  row->setContentsMargins(0, 0, 0, 0);
  auto* text = new QVBoxLayout;
  QLabel* title = makeLabel(box, 5, true);
  title->setText("Disk cleanup");
  text->addWidget(title);
  status_ = makeLabel(box);
  makeSecondary(status_);
  text->addWidget(status_);
  notice_ = makeLabel(box);
  notice_->setWordWrap(true);
  text->addWidget(notice_);
  row->addLayout(text, 1);
  scanHome_ = new QPushButton("Scan home folder", box);
  scanDisk_ = new QPushButton("Scan whole disk", box);
  scanFolder_ = new QPushButton("Scan a folder…", box);
  stop_ = new QPushButton("Stop", box);
  for (QPushButton* button : {scanHome_, scanFolder_, scanDisk_, stop_}) row->addWidget(button);
  connect(scanHome_, &QPushButton::clicked, this, [this] { model_->scanHome(); });
  connect(scanDisk_, &QPushButton::clicked, this, [this] { model_->scanWholeDisk(); });
  connect(stop_, &QPushButton::clicked, this, [this] { model_->cancelScan(); });
  connect(scanFolder_, &QPushButton::clicked, this, [this] {
    const QString folder = QFileDialog::getExistingDirectory(this, "Scan a folder", qs(model_->home()));
    if (!folder.isEmpty()) model_->scanFolder(folder.toStdString());
  });
  return box;
}

QWidget* DiskCleanupScreen::sidePanel() {
  auto* side = new QSplitter(Qt::Vertical, this);
  tabs_ = new QTabWidget(side);
  biggest_ = makeList(tabs_, {"Item", "Size"});
  biggest_->setToolTip("Double-click an item to add it to the delete list");
  tabs_->addTab(biggest_, "Biggest items");
  categories_ = makeList(tabs_, {"Category", "Size"});
  tabs_->addTab(categories_, "Categories");

  auto* projectsBox = new QWidget(tabs_);
  auto* projectsLayout = new QVBoxLayout(projectsBox);
  projectsLayout->setContentsMargins(0, 0, 0, 0);
  projects_ = makeList(projectsBox, {"Rebuildable folder", "Size"});
  projects_->setRootIsDecorated(true);
  projects_->setWordWrap(true);
  projectsLayout->addWidget(projects_, 1);
  addProjects_ = new QPushButton("Add to delete list", projectsBox);
  projectsLayout->addWidget(addProjects_, 0, Qt::AlignRight);
  tabs_->addTab(projectsBox, "Developer projects");

  deleteList_ = new DeleteListPanel(*model_, side);
  side->setStretchFactor(0, 3);
  side->setStretchFactor(1, 2);

  connect(biggest_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
    const QString path = item->data(0, pathRole).toString();
    if (!path.isEmpty()) model_->addToDeleteList(path.toStdString());
  });
  connect(projects_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
    const QString path = item->data(0, pathRole).toString();
    if (!path.isEmpty()) model_->addToDeleteList(path.toStdString());
  });
  connect(addProjects_, &QPushButton::clicked, this,
          [this] { model_->addRebuildPlanToDeleteList(); });
  return side;
}

void DiskCleanupScreen::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  if (model_->phase() == SpaceMapModel::Phase::idle) model_->open();
}

void DiskCleanupScreen::clickArc(int index) {
  const auto& arcs = rings_->arcs();
  if (index < 0 || static_cast<std::size_t>(index) >= arcs.size()) return;
  const SunburstArc& arc = arcs[static_cast<std::size_t>(index)];
  if (arc.kind != SunburstKind::node) return;
  const SizeNode* tree = model_->tree();
  const SizeNode* node = tree ? tree->find(arc.path) : nullptr;
  if (node && node->isDirectory && !node->isLocked && !node->children.empty()) {
    model_->zoomInto(arc.path);
  } else {
    pick(arc.path);
  }
}

void DiskCleanupScreen::openArcMenu(int index, QPoint globalPos) {
  const auto& arcs = rings_->arcs();
  if (index < 0 || static_cast<std::size_t>(index) >= arcs.size()) return;
  const SunburstArc& arc = arcs[static_cast<std::size_t>(index)];
  const SizeNode* tree = model_->tree();
  const SizeNode* node = arc.kind == SunburstKind::node && tree ? tree->find(arc.path) : nullptr;
  if (node == nullptr) return;
  menuPath_ = arc.path;
  addArc_->setEnabled(model_->phase() != SpaceMapModel::Phase::removing &&
                      !model_->isInDeleteList(*node));
  arcMenu_->popup(globalPos);
}

void DiskCleanupScreen::pick(const std::string& path) {
  pickedPath_ = path;
  refresh();
}

// What "Add to delete list" under the rings adds: the arc clicked last since the focus moved,
// else the focus itself unless it is the whole tree.
const SizeNode* DiskCleanupScreen::pickedNow() const {
  const SizeNode* tree = model_->tree();
  if (!tree) return nullptr;
  if (const SizeNode* clicked = tree->find(pickedPath_)) return clicked;
  return model_->focus() != tree ? model_->focus() : nullptr;
}

void DiskCleanupScreen::refresh() {
  refreshStatus();
  if (model_->tree() != drawnTree_ || model_->focus() != drawnFocus_) {
    drawnTree_ = model_->tree();
    drawnFocus_ = model_->focus();
    pickedPath_.clear();
    refreshBreadcrumb();
    refreshRings();
    refreshLists();
  }
  const SizeNode* pickedNode = pickedNow();
  picked_->setText(pickedNode ? qs(pickedNode->name) + " (" + qs(pickedNode->sizeLabel()) + ")"
                              : QString("Click a file, or go into a folder, to pick it"));
  addPicked_->setEnabled(pickedNode != nullptr && !model_->isInDeleteList(*pickedNode));
  addProjects_->setEnabled(!model_->rebuildPlan().isEmpty());
  deleteList_->refresh();
}

void DiskCleanupScreen::refreshStatus() {
  using enum SpaceMapModel::Phase;
  const SpaceMapModel::Phase phase = model_->phase();
  status_->setText(spaceMapStatus(*model_, systemNow()));
  const auto notice = model_->accessNotice();
  notice_->setText(notice ? qs(*notice) : QString());
  notice_->setVisible(notice.has_value());
  const bool busy = phase == loading || phase == scanning || phase == removing;
  scanHome_->setEnabled(!busy);
  scanFolder_->setEnabled(!busy);
  scanDisk_->setEnabled(!busy);
  stop_->setVisible(phase == scanning);
  stop_->setEnabled(!model_->isCancelling());
}

void DiskCleanupScreen::refreshBreadcrumb() {
  auto* row = static_cast<QHBoxLayout*>(breadcrumb_->layout());
  while (QLayoutItem* item = row->takeAt(0)) {
    delete item->widget();
    delete item;
  }
  const std::vector<const SizeNode*> trail = model_->breadcrumb();
  for (std::size_t i = 0; i < trail.size(); ++i) {
    if (i > 0) row->addWidget(new QLabel(QString::fromUtf8("›"), breadcrumb_));
    if (i + 1 == trail.size()) {
      QLabel* here = makeLabel(breadcrumb_, 0, true);
      here->setText(qs(trail[i]->name));
      here->setContentsMargins(6, 0, 6, 0);
      row->addWidget(here);
      break;
    }
    auto* button = new QPushButton(qs(trail[i]->name), breadcrumb_);
    button->setFlat(true);
    const std::string path = trail[i]->path;
    connect(button, &QPushButton::clicked, this, [this, path] { model_->zoomInto(path); });
    row->addWidget(button);
  }
  row->addStretch(1);
}

void DiskCleanupScreen::refreshRings() {
  const SizeNode* focus = model_->focus();
  if (!focus) {
    rings_->setArcs({}, {}, {});
    return;
  }
  rings_->setArcs(model_->arcs(SunburstView::maxRings, SunburstView::minDegrees), qs(focus->name),
                  qs(focus->sizeLabel()));
}

// A row that says why a list is empty, in the placeholder colour; it names no item.
void DiskCleanupScreen::addNote(QTreeWidget* list, const char* text) {
  auto* note = new QTreeWidgetItem(list, {text});
  note->setFirstColumnSpanned(true);
  note->setFlags(Qt::ItemIsEnabled);
  note->setForeground(0, palette().color(QPalette::PlaceholderText));
}

void DiskCleanupScreen::refreshLists() {
  biggest_->clear();
  for (const SizeNode& file : model_->biggestFiles(biggestCount)) {
    auto* item = new QTreeWidgetItem(biggest_, {qs(file.name), qs(file.sizeLabel())});
    item->setData(0, pathRole, qs(file.path.str()));
    item->setToolTip(0, qs(file.path.str()));
    item->setIcon(0, swatch(categoryColor(file.category)));
    item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
  }
  categories_->clear();
  for (const CategoryTotal& total : model_->categoryTotals()) {
    auto* item = new QTreeWidgetItem(categories_,
                                     {categoryName(total.category), qs(Format::disk(total.bytes))});
    item->setIcon(0, swatch(categoryColor(total.category)));
    item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
  }
  projects_->clear();
  const RebuildPlan& plan = model_->rebuildPlan();
  for (const ProjectSummary& project : plan.projects) {
    auto* top = new QTreeWidgetItem(projects_, {qs(project.name) + "  ·  " + qs(project.label)});
    top->setToolTip(0, qs(project.path));
    top->setData(0, projectRole, qs(project.path + "/"));
  }
  auto place = [this](const RebuildItem& rebuild) {
    QTreeWidgetItem* parent = nullptr;
    for (int i = 0; i < projects_->topLevelItemCount(); ++i) {
      QTreeWidgetItem* top = projects_->topLevelItem(i);
      const QString inside = top->data(0, projectRole).toString();
      if (!inside.isEmpty() && qs(rebuild.path).startsWith(inside)) parent = top;
    }
    const QStringList columns{qs(rebuild.relativePath), qs(Format::disk(rebuild.bytes))};
    auto* item =
        parent ? new QTreeWidgetItem(parent, columns) : new QTreeWidgetItem(projects_, columns);
    item->setData(0, pathRole, qs(rebuild.path));
    item->setToolTip(0, qs(rebuild.reason));
    item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    auto* reason = new QTreeWidgetItem(item, {qs(rebuild.reason)});
    reason->setFlags(Qt::ItemIsEnabled);
    reason->setForeground(0, palette().color(QPalette::PlaceholderText));
  };
  for (const RebuildItem& item : plan.items) place(item);
  for (const RebuildItem& item : plan.models) place(item);
  projects_->expandAll();
  if (model_->tree()) {
    if (biggest_->topLevelItemCount() == 0) addNote(biggest_, noBigFiles);
    if (projects_->topLevelItemCount() == 0) addNote(projects_, noProjects);
  }
  // Under X11 a list rebuilt this way after a removal kept showing its old rows until its tab
  // was switched: the view did not ask for a repaint of its viewport, so each asks here.
  for (QTreeWidget* list : {biggest_, categories_, projects_}) list->viewport()->update();
}

}  // namespace pellwin::ui
