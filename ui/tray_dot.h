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
// The installed theme icon of that name when there is one, else the drawn dot.
[[nodiscard]] QIcon dotIcon(Health health);
// "tovrin-dot-ok", "tovrin-dot-strain", "tovrin-dot-problem": the names the package installs.
[[nodiscard]] QString themeIconName(Health health);

}  // namespace pellwin::ui
