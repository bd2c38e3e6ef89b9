// The Monitor screen's app list as a two-level item model: category headings, and under each
// its apps with memory, CPU, disk and energy. `sync` brings it to a newer list in place:
// rows that went are removed, rows that came are inserted, moved rows keep their persistent
// indexes (so a view keeps its selection and scroll position), and figures are updated
// without a reset. UI thread only.
#pragma once

#include <QAbstractItemModel>
#include <functional>
#include <string>
#include <vector>

#include "core/monitor/app_usage.h"
#include "core/monitor/monitor_sort.h"

namespace pellwin::ui {

class AppTableModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  enum Column { nameColumn, memoryColumn, cpuColumn, diskColumn, energyColumn, columnTotal };

  // The column that shows `sort`'s measure, and back; the name column sorts by nothing.
  [[nodiscard]] static int column(MonitorSort sort);
  [[nodiscard]] static std::optional<MonitorSort> sortOf(int column);

  // `busy` says whether an app is being quit right now; its row says so.
  explicit AppTableModel(std::function<bool(const std::string& appID)> busy,
                         QObject* parent = nullptr);

  // `groups` in display order (as MonitorList gives them); `coreCount` turns cores into a
  // share of the machine.
  void sync(const std::vector<AppGroup>& groups, int coreCount);

  // The app of a row; null for a heading or an invalid index.
  [[nodiscard]] const AppUsage* app(const QModelIndex& index) const;
  // The row of the app with this id, in the name column; invalid when it is not listed.
  [[nodiscard]] QModelIndex indexOf(const std::string& appID) const;

  [[nodiscard]] QModelIndex index(int row, int column,
                                  const QModelIndex& parent = {}) const override;
  [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  struct Heading {
    AppCategory category;
    std::vector<AppUsage> apps;
  };

  [[nodiscard]] int headingRow(AppCategory category) const;
  void syncHeadings(const std::vector<AppGroup>& groups);
  void syncMembers(int row, const AppGroup& group);
  void reorder(const std::vector<AppGroup>& groups);
  [[nodiscard]] QVariant headingData(const Heading& heading, int column, int role) const;
  [[nodiscard]] QVariant appData(const AppUsage& app, int column, int role) const;

  std::function<bool(const std::string&)> busy_;
  std::vector<Heading> headings_;
  int coreCount_ = 1;
};

}  // namespace pellwin::ui
