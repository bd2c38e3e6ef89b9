// The health colours, the same on every screen, in the tray and in the legend: teal healthy,
// amber under strain, coral a problem. Mid-tone so they read on light and dark panels alike.
#pragma once

#include <QColor>

#include "core/monitor/resource.h"

namespace pellwin::ui {

[[nodiscard]] QColor healthColor(Health health);
// A darker edge for a dot or tile of that colour, so it keeps its shape on a panel of a
// similar colour.
[[nodiscard]] QColor healthEdge(Health health);

}  // namespace pellwin::ui
