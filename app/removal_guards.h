// What this computer protects from removal beyond the fixed rules: Tovrin's data folders under
// both layouts, and the user's own folders as named in the XDG user-dirs.dirs file.
#pragma once

#include "app/environment.h"
#include "core/space/removal_rules.h"

namespace pellwin {

// Reads $XDG_CONFIG_HOME/user-dirs.dirs (~/.config when the variable is unset or relative);
// a missing or unreadable file adds no folders. Blocking.
[[nodiscard]] RemovalGuards removalGuards(const Environment& environment);

}  // namespace pellwin
