// The short tour shown once, on the first launch, over the main window: what the dot means,
// notifications, history and the disk tools, one page each, with Back, Next and Done.
// A plain window that is not modal: the app behind it works while it is open.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <vector>

namespace pellwin::ui {

struct TourPage {
  QString title;
  QString text;
};

// The tour's pages, in order.
[[nodiscard]] std::vector<TourPage> tourPages();

class FirstRunTour : public QDialog {
  Q_OBJECT

 public:
  static constexpr const char* windowName = "Welcome to Tovrin";

  explicit FirstRunTour(QWidget* parent = nullptr);

  [[nodiscard]] int page() const { return pages_->currentIndex(); }
  [[nodiscard]] int pageCount() const { return pages_->count(); }
  void showPage(int index);

 private:
  QStackedWidget* pages_;
  QLabel* progress_;
  QPushButton* back_;
  QPushButton* next_;
};

}  // namespace pellwin::ui
