// The rows of the folder catalog, one table per operating system, read only by the catalog's
// lookups. Constant tables; safe from any thread.
#pragma once

#include <span>
#include <string_view>

#include "core/space/folder_catalog.h"

namespace pellwin::FolderCatalog {

// The rows live on Linux: its own folders, and those that every system keeps in the same place
// (tools' folders in home, the user folders, project folders found at any depth).
[[nodiscard]] std::span<const FolderEntry> linuxRows();

// The macOS rows: kept so that a machine reading from that system judges the same; not live on
// Linux.
[[nodiscard]] std::span<const FolderEntry> macosRows();

// A row as the tables spell it.
[[nodiscard]] constexpr FolderEntry row(std::string_view path, StorageCategory category,
                                        std::string_view explanation, bool cleanable = false,
                                        bool anywhere = false) {
  return {.path = path,
          .explanation = explanation,
          .category = category,
          .cleanable = cleanable,
          .anywhere = anywhere};
}
inline constexpr bool kCleanable = true;
inline constexpr bool kAnywhere = true;

}  // namespace pellwin::FolderCatalog
