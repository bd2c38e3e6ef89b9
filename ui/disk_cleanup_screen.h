// The Disk cleanup screen: the space map's rings around the focused folder with a breadcrumb
// back up, and beside them the biggest items, the categories with their totals, the developer
// projects with their rebuildable folders, and the delete list. It owns its `SpaceMapModel`
// (made from the services it is given, with `post` and `changed` pointed at itself), opens it
// the first time it is shown, and redraws from it on every change; the model scans and removes
// on its own worker. UI thread only.
#pragma once

#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <QWidget>
#include <memory>

#include "app/models/space_map_model.h"
#include "ui/delete_list_panel.h"
#include "ui/sunburst_view.h"

namespace pellwin::ui {

class DiskCleanupScreen : public QWidget {
  Q_OBJECT

 public:
  static constexpr std::size_t biggestCount = 30;
  // Said in a list that has nothing to show, under the folder shown.
  static constexpr const char* noBigFiles = "No file here takes 1 MB or more.";
  static constexpr const char* noProjects = "No developer projects with folders that rebuild.";

  // `services.post` and `services.changed` are replaced by the screen's own.
  DiskCleanupScreen(std::string home, RemovalGuards guards, SpaceMapModel::Services services,
                    QWidget* parent = nullptr);
  ~DiskCleanupScreen() override;

  [[nodiscard]] SpaceMapModel& model() { return *model_; }
  // Redraws everything from the model; the rings only when the tree or the focus changed.
  void refresh();

  [[nodiscard]] SunburstView* rings() const { return rings_; }
  [[nodiscard]] QLabel* status() const { return status_; }
  [[nodiscard]] QLabel* notice() const { return notice_; }
  [[nodiscard]] QWidget* breadcrumb() const { return breadcrumb_; }
  [[nodiscard]] QTreeWidget* biggest() const { return biggest_; }
  [[nodiscard]] QTreeWidget* categories() const { return categories_; }
  [[nodiscard]] QTreeWidget* projects() const { return projects_; }
  [[nodiscard]] QTabWidget* tabs() const { return tabs_; }
  [[nodiscard]] QPushButton* addProjectsButton() const { return addProjects_; }
  [[nodiscard]] QPushButton* addPickedButton() const { return addPicked_; }
  [[nodiscard]] QLabel* picked() const { return picked_; }
  [[nodiscard]] DeleteListPanel* deleteList() const { return deleteList_; }

  // The arc at `index` of the rings was clicked: a folder is zoomed into, anything else picked.
  void clickArc(int index);
  // The menu a right-click on an item's arc opens: "Add to delete list" for that item, shown
  // unavailable while the item is already in the list or nothing may be added.
  [[nodiscard]] QMenu* arcMenu() const { return arcMenu_; }
  // Fills the arc menu for the arc at `index` of the rings and pops it up at `globalPos`.
  void openArcMenu(int index, QPoint globalPos);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  QWidget* header();
  QWidget* sidePanel();
  void refreshStatus();
  void refreshBreadcrumb();
  void refreshRings();
  void refreshLists();
  void addNote(QTreeWidget* list, const char* text);
  void pick(const std::string& path);
  [[nodiscard]] const SizeNode* pickedNow() const;

  std::unique_ptr<SpaceMapModel> model_;
  SunburstView* rings_ = nullptr;
  QLabel* status_ = nullptr;
  QLabel* notice_ = nullptr;
  QPushButton* scanHome_ = nullptr;
  QPushButton* scanFolder_ = nullptr;
  QPushButton* scanDisk_ = nullptr;
  QPushButton* stop_ = nullptr;
  QWidget* breadcrumb_ = nullptr;
  QLabel* picked_ = nullptr;
  QPushButton* addPicked_ = nullptr;
  QTabWidget* tabs_ = nullptr;
  QTreeWidget* biggest_ = nullptr;
  QTreeWidget* categories_ = nullptr;
  QTreeWidget* projects_ = nullptr;
  QPushButton* addProjects_ = nullptr;
  DeleteListPanel* deleteList_ = nullptr;
  QMenu* arcMenu_ = nullptr;
  QAction* addArc_ = nullptr;
  std::string pickedPath_;
  std::string menuPath_;
  // What the rings and lists were drawn from, so a progress report does not lay them out again.
  const SizeNode* drawnTree_ = nullptr;
  const SizeNode* drawnFocus_ = nullptr;
};

// The status line: what runs now, or when the shown map was scanned.
[[nodiscard]] QString spaceMapStatus(const SpaceMapModel& model, double now);

}  // namespace pellwin::ui
