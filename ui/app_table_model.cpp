#include "ui/app_table_model.h"

#include <QBrush>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "core/base/format.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

// App rows carry their heading's category + 1 as internal id; headings carry 0. The category
// stays valid while headings come and go, where a heading's row would not.
constexpr quintptr headingID = 0;
quintptr idOf(AppCategory category) { return static_cast<quintptr>(rawValue(category)) + 1; }

bool sameOrder(const std::vector<AppUsage>& shown, const std::vector<AppUsage>& wanted) {
  return std::ranges::equal(shown, wanted, {}, &AppUsage::id, &AppUsage::id);
}

QString energyText(double impact) { return qs(Format::fixed(impact, impact < 10 ? 1 : 0)); }

}  // namespace

int AppTableModel::column(MonitorSort sort) {
  switch (sort) {
    case MonitorSort::memory: return memoryColumn;
    case MonitorSort::cpu: return cpuColumn;
    case MonitorSort::disk: return diskColumn;
    case MonitorSort::energy: return energyColumn;
  }
  return memoryColumn;
}

std::optional<MonitorSort> AppTableModel::sortOf(int column) {
  for (MonitorSort sort : allMonitorSorts) {
    if (AppTableModel::column(sort) == column) return sort;
  }
  return std::nullopt;
}

AppTableModel::AppTableModel(std::function<bool(const std::string&)> busy, QObject* parent)
    : QAbstractItemModel(parent), busy_(std::move(busy)) {}

void AppTableModel::sync(const std::vector<AppGroup>& groups, int coreCount) {
  coreCount_ = std::max(coreCount, 1);
  syncHeadings(groups);
  for (std::size_t row = 0; row < groups.size(); ++row) {
    syncMembers(static_cast<int>(row), groups[row]);
  }
  reorder(groups);
  // Every figure may have changed; a view repaints only the rows it shows.
  for (std::size_t row = 0; row < headings_.size(); ++row) {
    const QModelIndex heading = index(static_cast<int>(row), 0);
    emit dataChanged(heading, heading.siblingAtColumn(columnTotal - 1));
    const int members = static_cast<int>(headings_[row].apps.size());
    if (members > 0) {
      emit dataChanged(index(0, 0, heading), index(members - 1, columnTotal - 1, heading));
    }
  }
}

// Headings follow the category order on both sides, so one pass removes those that went
// and a second inserts those that came at their place.
void AppTableModel::syncHeadings(const std::vector<AppGroup>& groups) {
  for (int row = static_cast<int>(headings_.size()) - 1; row >= 0; --row) {
    const AppCategory category = headings_[static_cast<std::size_t>(row)].category;
    if (std::ranges::find(groups, category, &AppGroup::category) == groups.end()) {
      beginRemoveRows({}, row, row);
      headings_.erase(headings_.begin() + row);
      endRemoveRows();
    }
  }
  for (std::size_t row = 0; row < groups.size(); ++row) {
    if (row < headings_.size() && headings_[row].category == groups[row].category) continue;
    const int at = static_cast<int>(row);
    beginInsertRows({}, at, at);
    headings_.insert(headings_.begin() + at, Heading{.category = groups[row].category, .apps = {}});
    endInsertRows();
  }
}

// Removes the apps that ended and appends those that started; their order comes after.
void AppTableModel::syncMembers(int row, const AppGroup& group) {
  std::vector<AppUsage>& shown = headings_[static_cast<std::size_t>(row)].apps;
  const QModelIndex parent = index(row, 0);
  std::unordered_set<std::string_view> wanted;
  for (const AppUsage& app : group.apps) wanted.insert(app.id);
  for (int at = static_cast<int>(shown.size()) - 1; at >= 0; --at) {
    if (wanted.contains(shown[static_cast<std::size_t>(at)].id)) continue;
    int first = at;
    while (first > 0 && !wanted.contains(shown[static_cast<std::size_t>(first - 1)].id)) --first;
    beginRemoveRows(parent, first, at);
    shown.erase(shown.begin() + first, shown.begin() + at + 1);
    endRemoveRows();
    at = first;
  }
  std::unordered_set<std::string_view> present;
  for (const AppUsage& app : shown) present.insert(app.id);
  std::vector<const AppUsage*> started;
  for (const AppUsage& app : group.apps) {
    if (!present.contains(app.id)) started.push_back(&app);
  }
  if (started.empty()) return;
  const int first = static_cast<int>(shown.size());
  beginInsertRows(parent, first, first + static_cast<int>(started.size()) - 1);
  for (const AppUsage* app : started) shown.push_back(*app);
  endInsertRows();
}

// Takes the new figures and, when the order changed, moves rows as one layout change that
// carries every persistent index (the selection, the current row) to its app's new row.
void AppTableModel::reorder(const std::vector<AppGroup>& groups) {
  bool moved = false;
  for (std::size_t row = 0; row < groups.size() && !moved; ++row) {
    moved = !sameOrder(headings_[row].apps, groups[row].apps);
  }
  if (!moved) {
    for (std::size_t row = 0; row < groups.size(); ++row) headings_[row].apps = groups[row].apps;
    return;
  }
  emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  std::vector<std::pair<AppCategory, std::string>> held;
  held.reserve(static_cast<std::size_t>(before.size()));
  for (const QModelIndex& index : before) {
    const AppUsage* a = app(index);
    held.emplace_back(AppCategory::other, a ? a->id : std::string());
    if (a) held.back().first = a->category;
  }
  for (std::size_t row = 0; row < groups.size(); ++row) headings_[row].apps = groups[row].apps;
  QModelIndexList after;
  after.reserve(before.size());
  for (qsizetype i = 0; i < before.size(); ++i) {
    const auto& [category, id] = held[static_cast<std::size_t>(i)];
    after << (id.empty() ? before[i] : indexOf(id).siblingAtColumn(before[i].column()));
  }
  changePersistentIndexList(before, after);
  emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

int AppTableModel::headingRow(AppCategory category) const {
  const auto found = std::ranges::find(headings_, category, &Heading::category);
  return found == headings_.end() ? -1 : static_cast<int>(found - headings_.begin());
}

const AppUsage* AppTableModel::app(const QModelIndex& index) const {
  if (!index.isValid() || index.internalId() == headingID) return nullptr;
  const auto category = appCategoryFromRawValue(static_cast<int>(index.internalId() - 1));
  if (!category) return nullptr;
  const int heading = headingRow(*category);
  if (heading < 0) return nullptr;
  const auto& apps = headings_[static_cast<std::size_t>(heading)].apps;
  if (index.row() < 0 || static_cast<std::size_t>(index.row()) >= apps.size()) return nullptr;
  return &apps[static_cast<std::size_t>(index.row())];
}

QModelIndex AppTableModel::indexOf(const std::string& appID) const {
  for (std::size_t row = 0; row < headings_.size(); ++row) {
    const auto& apps = headings_[row].apps;
    const auto found = std::ranges::find(apps, appID, &AppUsage::id);
    if (found != apps.end()) {
      return createIndex(static_cast<int>(found - apps.begin()), 0, idOf(headings_[row].category));
    }
  }
  return {};
}

QModelIndex AppTableModel::index(int row, int column, const QModelIndex& parent) const {
  if (row < 0 || column < 0 || column >= columnTotal) return {};
  if (!parent.isValid()) {
    return static_cast<std::size_t>(row) < headings_.size() ? createIndex(row, column, headingID)
                                                            : QModelIndex();
  }
  if (parent.internalId() != headingID) return {};
  if (parent.row() < 0 || static_cast<std::size_t>(parent.row()) >= headings_.size()) return {};
  const Heading& heading = headings_[static_cast<std::size_t>(parent.row())];
  if (static_cast<std::size_t>(row) >= heading.apps.size()) return {};
  return createIndex(row, column, idOf(heading.category));
}

QModelIndex AppTableModel::parent(const QModelIndex& child) const {
  if (!child.isValid() || child.internalId() == headingID) return {};
  const auto category = appCategoryFromRawValue(static_cast<int>(child.internalId() - 1));
  const int row = category ? headingRow(*category) : -1;
  return row < 0 ? QModelIndex() : createIndex(row, 0, headingID);
}

int AppTableModel::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return static_cast<int>(headings_.size());
  if (parent.column() != 0 || parent.internalId() != headingID) return 0;
  return static_cast<int>(headings_[static_cast<std::size_t>(parent.row())].apps.size());
}

int AppTableModel::columnCount(const QModelIndex&) const { return columnTotal; }

QVariant AppTableModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (index.internalId() == headingID) {
    return headingData(headings_[static_cast<std::size_t>(index.row())], index.column(), role);
  }
  const AppUsage* a = app(index);
  return a ? appData(*a, index.column(), role) : QVariant();
}

QVariant AppTableModel::headingData(const Heading& heading, int column, int role) const {
  if (role == Qt::FontRole) {
    QFont font = QGuiApplication::font();
    font.setBold(true);
    return font;
  }
  if (role == Qt::BackgroundRole) return QGuiApplication::palette().brush(QPalette::AlternateBase);
  if (role != Qt::DisplayRole) return {};
  if (column != nameColumn) return {};
  int processes = 0;
  for (const AppUsage& a : heading.apps) processes += a.processCount;
  return qs(title(heading.category)) + qs(" · ") + QString::number(processes) +
         (processes == 1 ? " process" : " processes");
}

QVariant AppTableModel::appData(const AppUsage& a, int column, int role) const {
  const bool quitting = busy_ && busy_(a.id);
  switch (role) {
    case Qt::DisplayRole:
      switch (column) {
        case nameColumn: return quitting ? qs(a.name) + "  (quitting…)" : qs(a.name);
        case memoryColumn: return qs(Format::memory(a.footprintBytes));
        case cpuColumn: return qs(Format::percent(a.cpuCores / coreCount_));
        case diskColumn: return qs(Format::rate(a.diskBytesPerSecond));
        case energyColumn: return energyText(a.energyImpact);
        default: return {};
      }
    case Qt::TextAlignmentRole:
      return column == nameColumn ? QVariant() : QVariant(Qt::AlignRight | Qt::AlignVCenter);
    case Qt::ToolTipRole: return a.detail ? qs(*a.detail) : qs(a.name);
    case Qt::ForegroundRole:
      if (quitting) return QGuiApplication::palette().brush(QPalette::PlaceholderText);
      return {};
    default: return {};
  }
}

QVariant AppTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole && section != nameColumn) {
    return QVariant(Qt::AlignRight | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case nameColumn: return "App";
    case memoryColumn: return "Memory";
    case cpuColumn: return "CPU";
    case diskColumn: return "Disk";
    case energyColumn: return "Energy";
    default: return {};
  }
}

Qt::ItemFlags AppTableModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  if (index.internalId() == headingID) return Qt::ItemIsEnabled;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

}  // namespace pellwin::ui
