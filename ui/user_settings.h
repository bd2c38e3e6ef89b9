// The user's settings ("notify.cpu", "com.pellwin.Pellwin.hasLaunched"), kept with QSettings in
// $XDG_CONFIG_HOME/tovrin/tovrin.conf. Each call opens its own QSettings, so any thread may
// call these (the sampler reads the notification switches).
#pragma once

#include <optional>
#include <string_view>

namespace pellwin::ui {

[[nodiscard]] std::optional<bool> storedFlag(std::string_view key);
void storeFlag(std::string_view key, bool value);

}  // namespace pellwin::ui
