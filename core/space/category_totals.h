// How much of a folder each storage category takes, for the list of categories beside the
// rings. Every byte of the folder is counted in exactly one category: a node's own share (its
// own blocks and its remainder, that is its bytes less its kept children's) goes to the node's
// category, so the shares add up to the folder's bytes. Pure.
#pragma once

#include <cstdint>
#include <vector>

#include "core/space/size_node.h"
#include "core/space/storage_category.h"

namespace pellwin {

struct CategoryTotal {
  StorageCategory category = StorageCategory::other;
  std::uint64_t bytes = 0;
  friend bool operator==(const CategoryTotal&, const CategoryTotal&) = default;
};

// The categories that hold any bytes under `folder` (itself included), in display order (the
// declaration order of StorageCategory). A node whose children add up to more than its bytes
// (totals that drifted) has a share of 0, never a wrapped one.
[[nodiscard]] std::vector<CategoryTotal> categoryTotals(const SizeNode& folder);

}  // namespace pellwin
