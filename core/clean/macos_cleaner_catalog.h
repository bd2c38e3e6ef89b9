// Quick clean's catalog for macOS: the places that system's tools and Xcode use. Kept so that
// a machine reading from that system judges the same; not live on Linux, where quick clean
// uses LinuxCleanerCatalog.
#pragma once

#include <vector>

#include "core/clean/clean_group.h"

namespace pellwin {

namespace MacosCleanerCatalog {

// The groups, in display order: developer-caches, app-caches, old-logs, xcode-build,
// device-support. Built once; safe to share between threads.
[[nodiscard]] const std::vector<CleanGroup>& groups();

}  // namespace MacosCleanerCatalog
}  // namespace pellwin
