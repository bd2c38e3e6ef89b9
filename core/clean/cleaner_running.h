// The rule that turns what runs now into a reason to leave a cleaner source, or one child of a
// per-child source, alone. Pure: reads only catalog fields and the running set.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/clean/clean_group.h"
#include "core/clean/running_set.h"

namespace pellwin {

namespace CleanerRunning {

// The reason the source (child absent) or the named child must be left alone, or none. In
// order: a running tool ("npm is running"), a running app of the source ("Xcode is open"), and
// for a child an app that owns it by its name, a helper's longer identity or a Linux alias
// ("com.example.app is open", "firefox is open").
[[nodiscard]] std::optional<std::string> pause(std::optional<std::string_view> child,
                                               const RunningSet& running,
                                               const CleanSource& source);

}  // namespace CleanerRunning
}  // namespace pellwin
