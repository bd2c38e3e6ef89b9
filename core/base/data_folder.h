// Where the per-user data folder lives and how a folder of the former name is moved to the
// current name at start. Pure: the caller looks at the disk and passes in what it found.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/enum_text.h"

namespace pellwin {

enum class DataFolderMove { move, nothingToMove, keepBoth };

[[nodiscard]] constexpr EnumTable<DataFolderMove::keepBoth> textTable(DataFolderMove) {
  return {{
      {DataFolderMove::move, "move"},
      {DataFolderMove::nothingToMove, "nothingToMove"},
      {DataFolderMove::keepBoth, "keepBoth"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(DataFolderMove move) { return enumText(move); }

namespace DataFolder {

inline constexpr std::string_view name = "Tovrin";
inline constexpr std::string_view formerName = "Pellwin";

// The per-user application data folder: $XDG_DATA_HOME when it holds an absolute path,
// otherwise home + "/.local/share". `xdgDataHome` is the variable's value, absent when unset.
[[nodiscard]] std::string applicationSupport(std::string_view home,
                                             std::optional<std::string_view> xdgDataHome);

// applicationSupport + "/Tovrin" and applicationSupport + "/Pellwin", by plain concatenation.
[[nodiscard]] std::string path(std::string_view applicationSupport);
[[nodiscard]] std::string formerPath(std::string_view applicationSupport);

// Folders that must never be offered for deletion: both names under the macOS layout
// (home + "/Library/Application Support/"), then both under `applicationSupport`.
[[nodiscard]] std::vector<std::string> protectedPaths(std::string_view home,
                                                      std::string_view applicationSupport);

[[nodiscard]] DataFolderMove move(bool currentExists, bool formerExists);

}  // namespace DataFolder
}  // namespace pellwin
