#include "ui/first_run_tour.h"

#include <gtest/gtest.h>

#include <QPointer>

namespace pellwin::ui {
namespace {

TEST(FirstRunTour, WalksThroughTheDotNotificationsHistoryAndDiskToolsThenCloses) {
  std::vector<QString> titles;
  for (const TourPage& page : tourPages()) titles.push_back(page.title);
  EXPECT_EQ(titles, (std::vector<QString>{"The dot in your tray", "Notifications", "History",
                                          "Disk tools"}));

  QPointer<FirstRunTour> tour = new FirstRunTour;
  tour->show();
  QPushButton* next = nullptr;
  QPushButton* back = nullptr;
  for (auto* button : tour->findChildren<QPushButton*>()) {
    if (button->text() == "Back") back = button;
    if (button->text() == "Next") next = button;
  }
  ASSERT_NE(back, nullptr);
  ASSERT_NE(next, nullptr);
  EXPECT_FALSE(back->isEnabled()) << "nothing before the first page";
  for (int page = 1; page < tour->pageCount(); ++page) next->click();
  EXPECT_EQ(tour->page(), 3);
  EXPECT_EQ(next->text(), "Done");
  back->click();
  EXPECT_EQ(tour->page(), 2);
  EXPECT_EQ(next->text(), "Next");
  next->click();
  next->click();
  EXPECT_EQ(tour->result(), QDialog::Accepted);
  EXPECT_FALSE(tour->isVisible()) << "Done closes the tour";
  delete tour.data();
}

}  // namespace
}  // namespace pellwin::ui
