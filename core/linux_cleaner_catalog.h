// Quick clean's catalog for Linux: the same five-slot shape as the reference table, with the
// places Linux tools really use. The XDG base folders move several of them, so the table is
// made for one home and environment; paths stay relative to home.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/cleaner_catalog.h"

namespace pellwin {

// The home folder and the XDG base-folder variables as the environment gives them (absent when
// unset). A value that is empty or relative is ignored, as the XDG rules say.
struct CleanerPlaces {
  std::string home{};
  std::optional<std::string> xdgCacheHome{};
  std::optional<std::string> xdgConfigHome{};
  std::optional<std::string> xdgDataHome{};
  std::optional<std::string> xdgStateHome{};
  friend bool operator==(const CleanerPlaces&, const CleanerPlaces&) = default;
};

namespace LinuxCleanerCatalog {

// The groups, in order: developer-caches, app-caches, old-logs, ide-caches, debug-symbols.
// A base folder that lies outside home, is home itself, or holds ".." leaves out the sources
// under it: nothing outside home is ever cleaned. Children of the cache folder that hold one
// of the other base folders are never app caches.
[[nodiscard]] std::vector<CleanGroup> groups(const CleanerPlaces& places);

}  // namespace LinuxCleanerCatalog
}  // namespace pellwin
