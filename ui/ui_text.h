// The type scale and the few text helpers every screen shares, so headings, figures and
// secondary lines look alike in the panel and the window. Colours come from the palette, so
// light and dark themes both read.
#pragma once

#include <QLabel>
#include <QString>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin::ui {

[[nodiscard]] inline QString qs(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// A label styled as one step of the scale. `points` is added to the application font's size.
QLabel* makeLabel(QWidget* parent, int points = 0, bool bold = false);
// The same, wrapping its words at the width it is given.
QLabel* wrapping(QWidget* parent, int points = 0, bool bold = false);
// Dimmed text for figures' units, explanations and captions.
void makeSecondary(QLabel* label);
// A small capitalised section heading ("BUSIEST APPS").
QLabel* makeSectionTitle(const QString& text, QWidget* parent);

// A time of day for `at` (seconds since 1970), with the date when it is not the day of `now`.
[[nodiscard]] QString clockText(double at, double now);

// `lines` as one text, each after a bullet, one per line.
[[nodiscard]] QString bulleted(const std::vector<std::string>& lines);

}  // namespace pellwin::ui
