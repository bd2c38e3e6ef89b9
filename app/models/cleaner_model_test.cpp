#include "app/models/cleaner_model.h"

#include <gtest/gtest.h>

#include <thread>

#include "testing/enum_text_round_trip.h"
#include "testing/owner_loop.h"

namespace pellwin {
namespace {

using testing::OwnerLoop;

CleanPlan samplePlan() {
  auto group = [](std::string id, CleanAction action, std::vector<CleanItem> items) {
    return CleanGroupPlan{.group = {.id = id, .title = id, .action = action},
                          .items = std::move(items)};
  };
  return CleanPlan{
      .groups = {
          group("developer-caches", CleanAction::delete_,
                {{"/h/.npm/_cacache", "npm cache", 300}, {"/h/.cache/pip", "pip cache", 100}}),
          group("app-caches", CleanAction::delete_, {{"/h/.cache/thumbnails", "thumbnails", 50}}),
          group("ide-caches", CleanAction::trash, {{"/h/.cache/bazel", "Bazel build output", 400}}),
      }};
}

struct LoggedRun {
  std::string rules;
  std::uint64_t deleted = 0, trashed = 0;
  int items = 0;
  friend bool operator==(const LoggedRun&, const LoggedRun&) = default;
};

struct Harness {
  OwnerLoop main;
  std::thread::id ownerThread = std::this_thread::get_id();
  std::thread::id scanThread, removeThread;
  std::vector<CleanBatch> removed;
  std::vector<LoggedRun> logged;
  int changes = 0;
  TrashResult::Outcome outcome = TrashResult::Outcome::deleted;

  CleanerModel::Services services() {
    return {
        .scan =
            [this] {
              scanThread = std::this_thread::get_id();
              return samplePlan();
            },
        .remove =
            [this](const CleanBatch& batch) {
              removeThread = std::this_thread::get_id();
              removed.push_back(batch);
              std::vector<TrashResult> results;
              for (const CleanItem& item : batch.items) {
                auto done = batch.action == CleanAction::trash ? TrashResult::Outcome::moved
                                                               : TrashResult::Outcome::deleted;
                const bool fail = outcome == TrashResult::Outcome::failed;
                results.push_back({.path = item.path,
                                   .bytes = item.bytes,
                                   .outcome = fail ? outcome : done,
                                   .reason = fail ? "Input/output error" : ""});
              }
              return results;
            },
        .logClean =
            [this](std::string_view rules, std::uint64_t d, std::uint64_t t, int n) {
              EXPECT_EQ(std::this_thread::get_id(), ownerThread);
              logged.push_back({std::string(rules), d, t, n});
            },
        .post = main.poster(),
        .changed = [this] { ++changes; },
    };
  }
};

TEST(CleanerModel, ScanRunsOnTheWorkerAndAdoptsThePlanWithEverythingTicked) {
  Harness h;
  CleanerModel model(h.services());
  EXPECT_EQ(model.phase(), CleanerModel::Phase::idle);
  model.scan();
  EXPECT_EQ(model.phase(), CleanerModel::Phase::scanning);
  model.scan();  // a second request while scanning is ignored: only one step will arrive
  ASSERT_TRUE(h.main.runNext());
  EXPECT_EQ(model.phase(), CleanerModel::Phase::ready);
  EXPECT_NE(h.scanThread, h.ownerThread);
  EXPECT_EQ(model.ticked(), samplePlan().allItemIDs());
  EXPECT_EQ(model.totals(), (CleanTotals{.deleteBytes = 450, .trashBytes = 400, .items = 4}));
  EXPECT_GE(h.changes, 2);
}

TEST(CleanerModel, TogglesTickItemsAndGroupsAndTheSheetNeedsSomethingTicked) {
  Harness h;
  CleanerModel model(h.services());
  model.requestClean();
  EXPECT_FALSE(model.confirming()) << "no sheet before a plan";
  model.scan();
  ASSERT_TRUE(h.main.runNext());
  const CleanGroupPlan developer = model.plan()->groups[0];

  model.toggle("/h/.cache/pip");
  EXPECT_EQ(developer.tickState(model.ticked()), CleanTickState::some);
  model.toggleGroup("developer-caches");
  EXPECT_EQ(developer.tickState(model.ticked()), CleanTickState::all) << "some ticks all";
  model.toggleGroup("developer-caches");
  EXPECT_EQ(developer.tickState(model.ticked()), CleanTickState::none) << "all unticks all";
  model.toggle("/not/an/item");
  EXPECT_FALSE(model.ticked().contains("/not/an/item"));

  model.toggleGroup("app-caches");
  model.toggleGroup("ide-caches");
  EXPECT_TRUE(model.ticked().empty());
  model.requestClean();
  EXPECT_FALSE(model.confirming());
  model.toggle("/h/.cache/bazel");
  model.requestClean();
  EXPECT_TRUE(model.confirming());
  ASSERT_EQ(model.confirmationText().size(), 1u) << "only the Trash part is ticked";
  EXPECT_TRUE(model.confirmationText()[0].starts_with("Move "));
  model.cancelClean();
  EXPECT_FALSE(model.confirming());

  model.toggleCollapsed("ide-caches");
  EXPECT_TRUE(model.collapsed().contains("ide-caches"));
  model.toggleCollapsed("ide-caches");
  EXPECT_TRUE(model.collapsed().empty());
}

TEST(CleanerModel, ACleanRemovesTickedItemsByBatchThenLogsOneRun) {
  Harness h;
  CleanerModel model(h.services());
  model.scan();
  ASSERT_TRUE(h.main.runNext());
  model.toggle("/h/.cache/pip");
  model.requestClean();
  model.clean();
  EXPECT_FALSE(model.confirming());
  EXPECT_EQ(model.phase(), CleanerModel::Phase::cleaning);
  ASSERT_TRUE(h.main.runNext());
  EXPECT_EQ(model.phase(), CleanerModel::Phase::done);
  EXPECT_NE(h.removeThread, h.ownerThread);
  ASSERT_EQ(h.removed.size(), 2u);
  EXPECT_EQ(h.removed[0].action, CleanAction::delete_);
  EXPECT_EQ(h.removed[0].items.size(), 2u) << "pip was unticked";
  EXPECT_EQ(h.removed[1].action, CleanAction::trash);
  ASSERT_TRUE(model.summary());
  EXPECT_EQ(*model.summary(), (CleanSummary{.freed = 350, .trashed = 400, .cleaned = 3}));
  ASSERT_EQ(h.logged.size(), 1u);
  EXPECT_EQ(h.logged[0], (LoggedRun{"quick clean", 350, 400, 3}));

  model.clean();  // nothing happens outside ready
  EXPECT_EQ(model.phase(), CleanerModel::Phase::done);
  model.scan();
  EXPECT_EQ(model.phase(), CleanerModel::Phase::scanning);
  EXPECT_FALSE(model.summary());
  ASSERT_TRUE(h.main.runNext());
  EXPECT_EQ(model.phase(), CleanerModel::Phase::ready);
}

TEST(CleanerModel, ARunWhereEveryItemFailsEndsDoneWithAProblemPerItemAndNoLog) {
  Harness h;
  h.outcome = TrashResult::Outcome::failed;
  CleanerModel model(h.services());
  model.scan();
  ASSERT_TRUE(h.main.runNext());
  model.clean();
  ASSERT_TRUE(h.main.runNext());
  ASSERT_EQ(model.phase(), CleanerModel::Phase::done);
  EXPECT_EQ(model.summary()->freed + model.summary()->trashed, 0u);
  EXPECT_EQ(model.summary()->cleaned, 0);
  EXPECT_EQ(model.summary()->problems.size(), 4u);
  EXPECT_EQ(model.summary()->problems[0], "npm cache wasn't cleaned. Input/output error");
  EXPECT_TRUE(h.logged.empty());
}

TEST(CleanerModel, DemonstrationDataIsNeverLogged) {
  Harness h;
  CleanerModel model(h.services(), /*isFixture=*/true);
  model.scan();
  ASSERT_TRUE(h.main.runNext());
  model.clean();
  ASSERT_TRUE(h.main.runNext());
  EXPECT_EQ(model.summary()->cleaned, 4);
  EXPECT_TRUE(h.logged.empty());
}

TEST(CleanerModel, AResultArrivingAfterTheModelIsGoneIsDropped) {
  Harness h;
  {
    CleanerModel model(h.services());
    model.scan();
  }
  ASSERT_TRUE(h.main.runNext());  // the posted adoption finds no model and does nothing
  SUCCEED();
}

TEST(CleanerModel, OnlyTheFirstGroupsAreListedUntilShowingAll) {
  Harness h;
  CleanerModel::Services services = h.services();
  services.scan = [] {
    CleanPlan plan;
    for (int i = 0; i < 6; ++i) {
      const std::string id = "g" + std::to_string(i);
      plan.groups.push_back({.group = {.id = id, .title = id},
                             .items = {{"/" + id, id, static_cast<std::uint64_t>(10 + i)}}});
    }
    return plan;
  };
  CleanerModel model(services);
  model.scan();
  ASSERT_TRUE(h.main.runNext());
  ASSERT_EQ(model.listedGroups().size(), CleanerModel::groupsBeforeShowAll);
  EXPECT_EQ(model.listedGroups().front().group.id, "g5");
  model.setShowingAll(true);
  EXPECT_EQ(model.listedGroups().size(), 6u);
}

}  // namespace

namespace testing {

using CleanerModelEnums = ::testing::Types<CleanerModel::Phase>;
INSTANTIATE_TYPED_TEST_SUITE_P(CleanerModel, EnumTextRoundTrip, CleanerModelEnums);

}  // namespace testing
}  // namespace pellwin
