// The health colours, the same on every screen, in the tray and in the legend: teal healthy,
// amber under strain, coral a problem. Mid-tone so they read on light and dark panels alike.
#pragma once

#include <QColor>
#include <QPalette>

#include "core/monitor/resource.h"

namespace pellwin::ui {

[[nodiscard]] QColor healthColor(Health health);
// A darker edge for a dot or tile of that colour, so it keeps its shape on a panel of a
// similar colour.
[[nodiscard]] QColor healthEdge(Health health);

// `palette` with a checked segment's colours: the selection's colour behind the selection's
// text, as the sidebar marks the screen shown. A style's own checked shade (a tenth darker than
// an unchecked button in Fusion) is hard to tell apart on a dark panel.
[[nodiscard]] QPalette checkedPalette(QPalette palette);

}  // namespace pellwin::ui
