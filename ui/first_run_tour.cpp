#include "ui/first_run_tour.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "ui/tray_dot.h"

namespace pellwin::ui {
namespace {

// The three dots side by side, the same pixels the tray shows.
QWidget* dotsRow() {
  auto* row = new QWidget;
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  for (const Health health : {Health::ok, Health::strain, Health::problem}) {
    auto* dot = new QLabel;
    dot->setPixmap(dotPixmap(health, 40));
    layout->addWidget(dot);
  }
  layout->addStretch(1);
  return row;
}

QWidget* pageWidget(const TourPage& page, bool withDots) {
  auto* widget = new QWidget;
  auto* layout = new QVBoxLayout(widget);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(12);
  auto* title = new QLabel(page.title);
  QFont font = title->font();
  font.setPointSizeF(font.pointSizeF() * 1.4);
  font.setBold(true);
  title->setFont(font);
  layout->addWidget(title);
  if (withDots) layout->addWidget(dotsRow());
  auto* text = new QLabel(page.text);
  text->setWordWrap(true);
  text->setTextFormat(Qt::PlainText);
  layout->addWidget(text);
  layout->addStretch(1);
  return widget;
}

}  // namespace

std::vector<TourPage> tourPages() {
  return {
      {"The dot in your tray",
       "Tovrin puts one dot in your panel. Teal is healthy, amber is under strain, coral is a "
       "problem. Click it to see why, and which apps are busiest. On a desktop without a tray, "
       "this window is where Tovrin lives: closing it keeps Tovrin watching until you choose "
       "Quit Tovrin."},
      {"Notifications",
       "When memory, CPU, disk space, disk activity or heat stays a problem, Tovrin sends one "
       "notification that says why and which app is behind it. Switch each one on or off in "
       "Settings. It never quits or changes anything on its own."},
      {"History",
       "Tovrin remembers how busy the computer was, so History can show when it was slow and "
       "what was running then. The history stays on this computer."},
      {"Disk tools",
       "Disk cleanup maps what fills your disk, folder by folder. Quick clean finds caches and "
       "leftovers that can go. Nothing is removed until you confirm it."},
  };
}

FirstRunTour::FirstRunTour(QWidget* parent)
    : QDialog(parent),
      pages_(new QStackedWidget),
      progress_(new QLabel),
      back_(new QPushButton("Back")),
      next_(new QPushButton("Next")) {
  setWindowTitle(windowName);
  setModal(false);
  setAttribute(Qt::WA_DeleteOnClose);
  const std::vector<TourPage> pages = tourPages();
  for (std::size_t i = 0; i < pages.size(); ++i) {
    pages_->addWidget(pageWidget(pages[i], i == 0));
  }
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(progress_);
  buttons->addStretch(1);
  buttons->addWidget(back_);
  buttons->addWidget(next_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(24, 24, 24, 16);
  layout->addWidget(pages_, 1);
  layout->addLayout(buttons);
  next_->setDefault(true);
  connect(back_, &QPushButton::clicked, this, [this] { showPage(page() - 1); });
  connect(next_, &QPushButton::clicked, this, [this] {
    if (page() + 1 < pageCount()) {
      showPage(page() + 1);
    } else {
      accept();
    }
  });
  setFixedSize(460, 300);
  showPage(0);
}

void FirstRunTour::showPage(int index) {
  if (index < 0 || index >= pageCount()) return;
  pages_->setCurrentIndex(index);
  back_->setEnabled(index > 0);
  next_->setText(index + 1 == pageCount() ? "Done" : "Next");
  progress_->setText(QString("%1 of %2").arg(index + 1).arg(pageCount()));
}

}  // namespace pellwin::ui
