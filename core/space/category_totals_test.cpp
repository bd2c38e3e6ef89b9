#include "core/space/category_totals.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

SizeNode folder(std::string path, std::uint64_t bytes, StorageCategory category,
                std::vector<SizeNode> children = {}) {
  return SizeNode{.name = path.substr(path.rfind('/') + 1),
                  .path = path,
                  .bytes = bytes,
                  .isDirectory = true,
                  .children = std::move(children),
                  .category = category};
}

TEST(CategoryTotals, CountsEveryByteOnceInTheCategoryOfTheNodeThatHoldsIt) {
  using enum StorageCategory;
  // 10 MB home with 1 MB of its own and its remainder, a 6 MB developer folder holding a 4 MB
  // app-data folder, and a 3 MB file of your own.
  const SizeNode home = folder(
      "/h", 10'000'000, other,
      {folder("/h/code", 6'000'000, developer, {folder("/h/code/.cfg", 4'000'000, appData)}),
       SizeNode{.name = "a.mov", .path = "/h/a.mov", .bytes = 3'000'000, .category = yourFiles}});
  EXPECT_EQ(categoryTotals(home), (std::vector<CategoryTotal>{{appData, 4'000'000},
                                                              {developer, 2'000'000},
                                                              {yourFiles, 3'000'000},
                                                              {other, 1'000'000}}));
  EXPECT_EQ(categoryTotals(*home.find("/h/code")),
            (std::vector<CategoryTotal>{{appData, 4'000'000}, {developer, 2'000'000}}))
      << "only what lies under the folder";
}

TEST(CategoryTotals, ADriftedFolderAddsNothingRatherThanWrapping) {
  using enum StorageCategory;
  const SizeNode drifted = folder("/h", 3'000'000, other, {folder("/h/big", 5'000'000, developer)});
  EXPECT_EQ(categoryTotals(drifted), (std::vector<CategoryTotal>{{developer, 5'000'000}}));
  EXPECT_TRUE(categoryTotals(SizeNode{.path = "/h", .isLocked = true}).empty());
}

}  // namespace
}  // namespace pellwin
