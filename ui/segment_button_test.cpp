#include "ui/segment_button.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <cstdlib>

#include "ui/screenshot_palettes.h"

namespace pellwin::ui {
namespace {

// The colour of the button's face just inside its left edge, clear of the text.
QColor faceOf(SegmentButton& button) {
  const QImage image = button.grab().toImage();
  return image.pixelColor(6, image.height() / 2);
}

int distance(const QColor& a, const QColor& b) {
  return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
         std::abs(a.blue() - b.blue());
}

TEST(SegmentButton, TheCheckedSegmentStandsOutInLightAndDarkPalettes) {
  const struct {
    const char* why;
    QPalette palette;
  } cases[] = {{"light", lightPalette()}, {"dark", darkPalette()}};
  const QPalette saved = QApplication::palette();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    QApplication::setPalette(c.palette);
    SegmentButton checked("Day");
    SegmentButton unchecked("Week");
    checked.setChecked(true);
    for (SegmentButton* button : {&checked, &unchecked}) button->resize(90, 28);
    const QColor on = faceOf(checked);
    const QColor off = faceOf(unchecked);
    EXPECT_GT(distance(on, off), 120) << on.name().toStdString() << " against "
                                      << off.name().toStdString();
    EXPECT_LT(distance(on, c.palette.color(QPalette::Highlight)), 90)
        << "drawn in the selection's colour, as the sidebar's picked screen is";
  }
  QApplication::setPalette(saved);
}

}  // namespace
}  // namespace pellwin::ui
