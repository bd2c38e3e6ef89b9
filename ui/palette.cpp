#include "ui/palette.h"

namespace pellwin::ui {

QColor healthColor(Health health) {
  switch (health) {
    case Health::ok: return {0x26, 0xA6, 0x9A};       // teal
    case Health::strain: return {0xF2, 0xA6, 0x3B};   // amber
    case Health::problem: return {0xEE, 0x6A, 0x5C};  // coral
  }
  return {};
}

QColor healthEdge(Health health) { return healthColor(health).darker(150); }

QPalette checkedPalette(QPalette palette) {
  for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
    palette.setColor(group, QPalette::Button, palette.color(group, QPalette::Highlight));
    palette.setColor(group, QPalette::ButtonText, palette.color(group, QPalette::HighlightedText));
  }
  return palette;
}

}  // namespace pellwin::ui
