#include "core/space/category_totals.h"

#include <array>

#include "core/base/checked_math.h"

namespace pellwin {

std::vector<CategoryTotal> categoryTotals(const SizeNode& folder) {
  constexpr auto count = static_cast<std::size_t>(StorageCategory::other) + 1;
  std::array<std::uint64_t, count> sums{};
  folder.forEach([&](const SizeNode& node) {
    std::uint64_t kept = 0;
    for (const SizeNode& child : node.children) kept = saturatingAdd(kept, child.bytes);
    auto& sum = sums[static_cast<std::size_t>(node.category)];
    sum = checkedAdd(sum, saturatingSubtract(node.bytes, kept), "a storage category's total");
  });
  std::vector<CategoryTotal> totals;
  for (std::size_t i = 0; i < count; ++i) {
    if (sums[i] > 0)
      totals.push_back({.category = static_cast<StorageCategory>(i), .bytes = sums[i]});
  }
  return totals;
}

}  // namespace pellwin
