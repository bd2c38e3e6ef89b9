// The main window's Monitor screen: the five resource tiles, the verdict with the apps behind
// it, advice and tips, where the energy went on battery, the legend of the colours, and every
// app under its category heading, sortable by memory, CPU, disk or energy, with the picked
// app's details and Quit and Force quit. Widgets are made once; each update fills them and
// brings the list's model up to date in place. Reads the live state only while shown.
#pragma once

#include <QLabel>
#include <QTreeView>
#include <QWidget>
#include <array>
#include <functional>

#include "app/models/live_model.h"
#include "core/monitor/monitor_list.h"
#include "ui/app_details.h"
#include "ui/app_table_model.h"
#include "ui/energy_view.h"
#include "ui/quit_control.h"
#include "ui/quit_result_bar.h"
#include "ui/resource_tile.h"
#include "ui/verdict_view.h"

namespace pellwin::ui {

class MonitorScreen : public QWidget {
  Q_OBJECT

 public:
  static constexpr const char* legend =
      "Teal is healthy, amber is under strain, coral is a problem. The same dot sits in your "
      "menu bar.";
  static constexpr const char* listCaption =
      "Every app below, with its helper processes counted as one.";

  // `state` gives the live model's latest state; it is read on the UI thread.
  MonitorScreen(std::function<const LiveState&()> state, QuitControl& quit,
                QWidget* parent = nullptr);

  // Shows the latest state; does nothing while hidden (showing refreshes).
  void refresh();

  void setSort(MonitorSort sort);
  [[nodiscard]] MonitorSort sort() const { return list_.sort(); }
  // Picks the app with this id in the list, as a click would.
  void select(const std::string& appID);

  [[nodiscard]] const MonitorList& list() const { return list_; }
  [[nodiscard]] QTreeView* view() const { return view_; }
  [[nodiscard]] AppTableModel* model() const { return model_; }
  [[nodiscard]] QStringList tileTexts() const;
  [[nodiscard]] const VerdictView& verdict() const { return *verdict_; }
  [[nodiscard]] const EnergyView& energy() const { return *energy_; }
  [[nodiscard]] const AppDetails& details() const { return *details_; }
  [[nodiscard]] const QuitResultBar& quitResult() const { return *result_; }

 signals:
  // The user ordered the list by another measure (a click on a column's header).
  void sortPicked(pellwin::MonitorSort sort);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* buildTop();
  QWidget* buildList();
  void fill();
  void fillList(const LiveState& state);
  void keepSelection();
  void currentChanged(const QModelIndex& current);
  void headerClicked(int column);
  void quitSelected(bool force);

  std::function<const LiveState&()> state_;
  QuitControl& quit_;
  MonitorList list_;
  std::array<ResourceTile*, 5> tiles_{};
  VerdictView* verdict_;
  EnergyView* energy_;
  QuitResultBar* result_;
  AppTableModel* model_;
  QTreeView* view_;
  AppDetails* details_;
  bool syncing_ = false;
};

}  // namespace pellwin::ui
