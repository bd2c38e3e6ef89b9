// Where the machine readers look on this computer: the proc and sys file systems of the
// environment, the start-up volume, and the folders where desktop apps are found.
#pragma once

#include "app/environment.h"
#include "probe/system/system_reader.h"

namespace pellwin {

// Data folders: the XDG data home, then $XDG_DATA_DIRS (by default /usr/local/share and
// /usr/share), then the Flatpak and Snap export folders when the environment left them out.
// Search path: $PATH, then the usual program folders it left out. Relative entries are
// ignored, as the XDG base directory rules say.
[[nodiscard]] SystemReader::Roots systemReaderRoots(const Environment& environment);

}  // namespace pellwin
