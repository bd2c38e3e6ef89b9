// The program's knowledge of well-known folders: what each is for (one sentence the user
// reads), the storage category it is counted in, and whether its contents may be deleted for
// good because they rebuild on their own. A constant table with lookups by path; pure.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/space/storage_category.h"

namespace pellwin {

struct FolderEntry {
  // Relative to the home folder; absolute when it begins with "/"; a bare folder name when
  // `anywhere` is set.
  std::string_view path{};
  std::string_view explanation{};
  StorageCategory category = StorageCategory::other;
  bool cleanable = false;  // its contents may be deleted for good
  bool anywhere = false;   // matches a folder of that name at any depth inside home
  friend bool operator==(const FolderEntry&, const FolderEntry&) = default;
};

namespace FolderCatalog {

// Every row: the rows live on Linux, then the macOS rows. Where both describe the same folder
// (the cache folder in home), the Linux wording wins because equal matches go to the earlier
// row.
[[nodiscard]] std::span<const FolderEntry> entries();

// The best matching row: the deepest match wins, the earlier row on equal depth. A row matches
// a path that is its folder or lies inside it, component by component. Home-relative and
// anywhere rows match only paths inside `home`; absolute rows match any path.
[[nodiscard]] std::optional<FolderEntry> best(std::string_view path, std::string_view home);

// The best row's category; `system` for a path outside home that no absolute row matches;
// `other` for a path inside home that nothing matches.
[[nodiscard]] StorageCategory category(std::string_view path, std::string_view home);

// The best row's sentence, only when the path is that row's folder itself.
[[nodiscard]] std::optional<std::string> explanation(std::string_view path, std::string_view home);

// The best row's flag; false when nothing matches.
[[nodiscard]] bool isCleanable(std::string_view path, std::string_view home);

}  // namespace FolderCatalog
}  // namespace pellwin
