#include "app/models/space_map.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "testing/owner_loop.h"
#include "testing/trash_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::OwnerLoop;
using testing::ScratchHome;

TEST(SpaceMap, ARealScanIsCachedAndARemovalReachesTheTrashTheTreeAndTheCache) {
  ScratchHome machine;
  machine.scratch.write("home/big.bin", std::string(3'000'000, 'b'));
  machine.scratch.write("home/code/app/package.json", "{}");
  machine.scratch.write("home/code/app/node_modules/a/index.bin", std::string(3'000'000, 'a'));
  machine.scratch.write("home/code/app/node_modules/b/index.bin", std::string(3'000'000, 'c'));
  const Environment environment{.home = machine.home, .xdgDataHome = machine.dataHome};
  const std::string big = machine.home + "/big.bin";

  OwnerLoop loop;
  auto model = makeSpaceMapModel(environment, loop.poster());
  model->open();
  ASSERT_TRUE(loop.runUntil([&] {
    return model->phase() == SpaceMapModel::Phase::ready && model->tree() != nullptr;
  })) << "without a cache, opening scans home";
  EXPECT_EQ(model->tree()->path, machine.home);
  ASSERT_NE(model->tree()->find(big), nullptr);
  EXPECT_GE(model->tree()->find(big)->bytes, 3'000'000u);
  ASSERT_EQ(model->rebuildPlan().items.size(), 1u);
  EXPECT_EQ(model->rebuildPlan().items[0].path, machine.home + "/code/app/node_modules");
  const auto cached = spaceMapCache(environment).load();
  ASSERT_TRUE(cached.has_value());
  EXPECT_EQ(cached->tree, *model->tree());
  EXPECT_EQ(cached->root, machine.home);

  ASSERT_EQ(model->addToDeleteList(big), std::nullopt);
  model->requestRemoval(CleanAction::trash);
  model->confirmRemoval();
  ASSERT_TRUE(loop.runUntil([&] { return model->phase() == SpaceMapModel::Phase::ready; }));
  ASSERT_TRUE(model->lastRemoval().has_value());
  EXPECT_EQ(
      model->lastRemoval()->sentences,
      std::vector<std::string>{"big.bin is in the Trash; empty the Trash to free the space."});
  EXPECT_FALSE(fs::exists(big));
  EXPECT_NE(machine.run("trash-list").find(big), std::string::npos) << machine.run("trash-list");
  EXPECT_EQ(model->tree()->find(big), nullptr);

  // A model opened later shows the tree as it was after the removal, from the cache.
  auto later = makeSpaceMapModel(environment, loop.poster());
  later->open();
  ASSERT_TRUE(loop.runUntil([&] { return later->phase() == SpaceMapModel::Phase::ready; }));
  EXPECT_TRUE(later->isFromCache());
  EXPECT_EQ(*later->tree(), *model->tree());
}

}  // namespace
}  // namespace pellwin
