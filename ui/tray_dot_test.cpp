#include "ui/tray_dot.h"

#include <gtest/gtest.h>

#include <QImage>

#include "ui/palette.h"

namespace pellwin::ui {
namespace {

TEST(TrayDot, OneRoundDotInTheColourOfTheWorstHealth) {
  for (const Health health : {Health::ok, Health::strain, Health::problem}) {
    SCOPED_TRACE(std::string(label(health)));
    for (const int size : {16, 22, 64}) {
      const QImage image = dotPixmap(health, size).toImage();
      ASSERT_EQ(image.size(), QSize(size, size));
      EXPECT_EQ(image.pixelColor(size / 2, size / 2), healthColor(health)) << size;
      EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << "the corners stay see-through";
      EXPECT_EQ(image.pixelColor(size - 1, size / 2).alpha(), 0) << "a dot, not a square";
    }
  }
  EXPECT_NE(healthColor(Health::ok), healthColor(Health::strain));
  EXPECT_NE(healthColor(Health::strain), healthColor(Health::problem));
}

}  // namespace
}  // namespace pellwin::ui
