// The program's knowledge of well-known folders: what each is for (one sentence the user
// reads), the storage category it is counted in, and whether its contents may be deleted for
// good because they rebuild on their own. A constant table with lookups by path; pure.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

// The categories of a tree's paths, met from its root down: each path's follows from its
// folder's trail and its own name, so a tree as deep as a disk allows costs each name once,
// not each path's whole length. `category()` is what `category(path, home)` gives.
class CategoryTrail {
 public:
  // A path read whole.
  CategoryTrail(std::string_view path, std::string_view home);
  // The path with one more name (no "/" in it) below it.
  [[nodiscard]] CategoryTrail below(std::string_view name) const;
  [[nodiscard]] StorageCategory category() const;

 private:
  CategoryTrail() = default;
  void matchFixedRows();

  std::shared_ptr<const std::vector<std::string>> home_;
  // The leading components, as far as rows reach; shared once it stops growing.
  std::shared_ptr<const std::vector<std::string>> head_;
  std::size_t depth_ = 0;
  bool insideHome_ = false;
  const FolderEntry* fixed_ = nullptr;  // the best row that is not an anywhere row
  std::size_t fixedDepth_ = 0;
  const FolderEntry* anywhere_ = nullptr;  // the deepest anywhere row below home
  std::size_t anywhereDepth_ = 0;
};

}  // namespace FolderCatalog
}  // namespace pellwin
