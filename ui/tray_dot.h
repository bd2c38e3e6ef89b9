// The tray's one round dot in the colour of the worst health shown, drawn for every size a
// panel may ask for.
#pragma once

#include <QIcon>
#include <QPixmap>

#include "core/monitor/resource.h"

namespace pellwin::ui {

// A `size`×`size` pixmap (device pixels) with a transparent background and the dot centred,
// filling about two thirds of it.
[[nodiscard]] QPixmap dotPixmap(Health health, int size);
[[nodiscard]] QIcon dotIcon(Health health);

}  // namespace pellwin::ui
