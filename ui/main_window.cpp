#include "ui/main_window.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMenuBar>

namespace pellwin::ui {

namespace {
constexpr int nameRole = Qt::UserRole;
}

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), sidebar_(new QListWidget), screens_(new QStackedWidget) {
  setWindowTitle("Tovrin");
  auto* central = new QWidget;
  auto* layout = new QHBoxLayout(central);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  sidebar_->setFixedWidth(180);
  sidebar_->setFrameShape(QFrame::NoFrame);
  sidebar_->setSpacing(2);
  sidebar_->setObjectName("sidebar");
  layout->addWidget(sidebar_);
  layout->addWidget(screens_, 1);
  setCentralWidget(central);
  resize(1040, 700);

  QMenu* menu = menuBar()->addMenu("&Tovrin");
  QAction* quit = menu->addAction("Quit Tovrin");
  quit->setShortcut(QKeySequence::Quit);
  connect(quit, &QAction::triggered, this, &MainWindow::quitRequested);
  QAction* close = menu->addAction("Close Window");
  close->setShortcut(QKeySequence::Close);
  connect(close, &QAction::triggered, this, &QWidget::close);

  connect(sidebar_, &QListWidget::currentRowChanged, screens_, &QStackedWidget::setCurrentIndex);
}

void MainWindow::addScreen(const QString& name, QWidget* screen) {
  auto* entry = new QListWidgetItem(name, sidebar_);
  entry->setData(nameRole, name);
  entry->setSizeHint(QSize(0, 34));
  screens_->addWidget(screen);
  if (sidebar_->currentRow() < 0) sidebar_->setCurrentRow(0);
}

QListWidgetItem* MainWindow::item(const QString& name) const {
  for (int row = 0; row < sidebar_->count(); ++row) {
    if (sidebar_->item(row)->data(nameRole).toString() == name) return sidebar_->item(row);
  }
  return nullptr;
}

void MainWindow::showScreen(const QString& name) {
  if (QListWidgetItem* entry = item(name)) sidebar_->setCurrentItem(entry);
}

QString MainWindow::currentScreen() const {
  const QListWidgetItem* entry = sidebar_->currentItem();
  return entry ? entry->data(nameRole).toString() : QString();
}

void MainWindow::setBadge(const QString& name, const QString& badge) {
  if (QListWidgetItem* entry = item(name)) {
    entry->setText(badge.isEmpty() ? name : name + "   " + badge);
  }
}

void MainWindow::closeEvent(QCloseEvent* event) {
  hide();
  event->ignore();
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  emit visibilityChanged();
}

void MainWindow::hideEvent(QHideEvent* event) {
  QMainWindow::hideEvent(event);
  emit visibilityChanged();
}

}  // namespace pellwin::ui
