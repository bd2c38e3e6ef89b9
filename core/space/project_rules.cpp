#include "core/space/project_rules.h"

#include <algorithm>
#include <span>

namespace pellwin::ProjectRules {

bool isMarker(std::string_view name, bool isDirectory) {
  const auto& names = isDirectory ? std::span<const std::string_view>(markerDirectories)
                                  : std::span<const std::string_view>(markerFiles);
  if (std::find(names.begin(), names.end(), name) != names.end()) return true;
  return std::any_of(markerSuffixes.begin(), markerSuffixes.end(),
                     [&](std::string_view suffix) { return name.ends_with(suffix); });
}

}  // namespace pellwin::ProjectRules
