// Quick clean's catalog for Linux: the same five-group shape as the macOS catalog, with the
// places Linux tools really use. The XDG base folders move several of them, so the table is
// made for one home and environment; paths stay relative to home.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/clean/clean_group.h"

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

// An XDG base folder that the environment moved: where it is, and the standard place (the one
// the folder catalog knows) it stands for. Both absolute.
struct MovedFolder {
  std::string actual{};
  std::string standard{};
  friend bool operator==(const MovedFolder&, const MovedFolder&) = default;
};

namespace LinuxCleanerCatalog {

// The groups, in order: developer-caches, app-caches, old-logs, ide-caches, debug-symbols.
// A base folder that lies outside home, is home itself, or holds ".." leaves out the sources
// under it: nothing outside home is ever cleaned. Children of the cache folder that hold one
// of the other base folders are never app caches.
[[nodiscard]] std::vector<CleanGroup> groups(const CleanerPlaces& places);

// The base folders that the variables move to another usable place inside home, in the order
// cache, config, data, state; those left at their standard place, or unusable, are left out.
[[nodiscard]] std::vector<MovedFolder> movedBases(const CleanerPlaces& places);

// The path as it would be spelled in the standard place of the first moved base strictly
// containing it; the path itself when none does. Paths are compared as given, so both sides
// should be tidy (no "//", "." or trailing "/").
[[nodiscard]] std::string standardPath(const std::string& path,
                                       const std::vector<MovedFolder>& moved);

}  // namespace LinuxCleanerCatalog
}  // namespace pellwin
