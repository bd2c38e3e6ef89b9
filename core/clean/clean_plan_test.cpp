#include "core/clean/clean_plan.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "core/clean/clean_summary.h"

namespace pellwin {
namespace {

CleanGroupPlan groupPlan(std::string title, CleanAction action, std::vector<CleanItem> items,
                         std::vector<CleanSkip> skipped = {}) {
  return CleanGroupPlan{.group = CleanGroup{.id = title, .title = title, .action = action},
                        .items = std::move(items),
                        .skipped = std::move(skipped)};
}

CleanPlan samplePlan() {
  return CleanPlan{
      .groups = {
          groupPlan("Developer caches", CleanAction::delete_,
                    {{"/h/.npm/_cacache", "npm cache", 300}, {"/h/.cache/yarn", "Yarn cache", 100}},
                    {{"pip cache", "pip3 is running"}}),
          groupPlan("App caches", CleanAction::delete_,
                    {{"/h/.cache/thumbnails", "thumbnails", 50}}),
          groupPlan("Old logs", CleanAction::delete_, {}, {{"Code", "Code is open"}}),
          groupPlan("IDE and build caches", CleanAction::trash,
                    {{"/h/.cache/bazel", "Bazel build output", 400}}),
          groupPlan("Downloaded debug symbols", CleanAction::trash,
                    {{"/h/.cache/debuginfod_client", "debuginfod cache", 400}}),
      }};
}

TEST(CleanPlan, VisibleGroupsAreTheNonEmptyOnesLargestFirstThenByTitle) {
  std::vector<std::string> titles;
  for (const CleanGroupPlan& g : samplePlan().visibleGroups()) titles.push_back(g.group.title);
  EXPECT_EQ(titles, (std::vector<std::string>{"Developer caches", "Downloaded debug symbols",
                                              "IDE and build caches", "App caches"}));
}

TEST(CleanPlan, TickStatesFollowTheTickedItemsAndAnEmptyGroupCountsAsAll) {
  const CleanPlan plan = samplePlan();
  const CleanGroupPlan& developer = plan.groups[0];
  EXPECT_EQ(developer.tickState(plan.allItemIDs()), CleanTickState::all);
  EXPECT_EQ(developer.tickState({"/h/.npm/_cacache"}), CleanTickState::some);
  EXPECT_EQ(developer.tickState({"/h/.cache/thumbnails"}), CleanTickState::none);
  EXPECT_EQ(plan.groups[2].tickState({}), CleanTickState::all);
  EXPECT_EQ(developer.tickedBytes({"/h/.cache/yarn", "/h/.cache/bazel"}), 100u);
}

TEST(CleanPlan, TotalsKeepDeletionsAndTheTrashApartAndCountTickedItemsOfBoth) {
  const CleanPlan plan = samplePlan();
  EXPECT_EQ(plan.totals(plan.allItemIDs()),
            (CleanTotals{.deleteBytes = 450, .trashBytes = 800, .items = 5}));
  EXPECT_EQ(plan.totals({"/h/.cache/yarn", "/h/.cache/bazel", "/not/in/plan"}),
            (CleanTotals{.deleteBytes = 100, .trashBytes = 400, .items = 2}));
  EXPECT_EQ(plan.totals({}), CleanTotals{});
}

TEST(CleanPlan, SumsStopAtTheLargestSizeInsteadOfWrapping) {
  const std::uint64_t max = std::numeric_limits<std::uint64_t>::max();
  const CleanPlan plan{
      .groups = {groupPlan("Huge", CleanAction::trash, {{"/a", "a", max - 1}, {"/b", "b", 5}})}};
  EXPECT_EQ(plan.groups[0].bytes(), max);
  EXPECT_EQ(plan.groups[0].tickedBytes(plan.allItemIDs()), max);
  EXPECT_EQ(plan.totals(plan.allItemIDs()).trashBytes, max);
}

TEST(CleanPlan, BatchesGatherTickedItemsByActionAndLeaveOutEmptyOnes) {
  const CleanPlan plan = samplePlan();
  const auto all = plan.batches(plan.allItemIDs());
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].action, CleanAction::delete_);
  EXPECT_EQ(all[0].items.size(), 3u);
  EXPECT_EQ(all[1].action, CleanAction::trash);
  EXPECT_EQ(all[1].items.size(), 2u);
  const auto trashOnly = plan.batches({"/h/.cache/bazel"});
  ASSERT_EQ(trashOnly.size(), 1u);
  EXPECT_EQ(trashOnly[0], (CleanBatch{.action = CleanAction::trash,
                                      .items = {{"/h/.cache/bazel", "Bazel build output", 400}}}));
  EXPECT_TRUE(plan.batches({}).empty());
}

TEST(CleanGroupPlan, DetailCountsItemsAndSaysWhySomeWereSkipped) {
  const CleanItem item{"/x", "x", 1};
  const struct {
    const char* why;
    CleanGroupPlan plan;
    const char* expected;
  } cases[] = {
      {"one item", groupPlan("g", CleanAction::delete_, {item}), "1 item"},
      {"no items", groupPlan("g", CleanAction::delete_, {}), "0 items"},
      {"an open app",
       groupPlan("g", CleanAction::delete_, {item, item, item, item}, {{"a", "a is open"}}),
       "4 items, 1 skipped because it is open"},
      {"every skip a running tool",
       groupPlan("g", CleanAction::delete_, {item, item, item},
                 {{"npm cache", "npm is running"}, {"pip cache", "pip3 is running"}}),
       "3 items, 2 skipped because they are in use"},
      {"a mix of tools and apps says open",
       groupPlan("g", CleanAction::delete_, {}, {{"n", "npm is running"}, {"c", "Code is open"}}),
       "0 items, 2 skipped because they are open"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(c.plan.detail(), c.expected);
  }
}

TEST(CleanSummary, ResultsBecomeFreedAndTrashedBytesAndProblemLinesNamedAsPlanned) {
  const CleanPlan plan = samplePlan();
  using O = TrashResult::Outcome;
  const CleanSummary summary = CleanSummary::from(
      plan, {{.path = "/h/.npm/_cacache", .bytes = 300, .outcome = O::deleted},
             {.path = "/h/.cache/yarn",
              .bytes = 100,
              .outcome = O::failed,
              .reason = "Permission denied"},
             {.path = "/h/.cache/thumbnails", .bytes = 50, .outcome = O::alreadyGone},
             {.path = "/h/.cache/bazel", .bytes = 400, .outcome = O::moved},
             {.path = "/h/.cache/debuginfod_client",
              .bytes = 400,
              .outcome = O::refused,
              .reason = "It's a shortcut to somewhere else"}});
  EXPECT_EQ(summary.freed, 300u);
  EXPECT_EQ(summary.trashed, 400u);
  EXPECT_EQ(summary.cleaned, 2);
  EXPECT_EQ(summary.problems,
            (std::vector<std::string>{
                "Yarn cache wasn't cleaned. Permission denied",
                "debuginfod cache was left alone. It's a shortcut to somewhere else"}));
}

TEST(CleanSummary, ARunWhereEveryItemFailsFreesNothingAndListsEachItem) {
  const CleanPlan plan = samplePlan();
  std::vector<TrashResult> results;
  for (const std::string& id : plan.allItemIDs()) {
    results.push_back({.path = id,
                       .bytes = 1,
                       .outcome = TrashResult::Outcome::failed,
                       .reason = "Read-only file system"});
  }
  const CleanSummary summary = CleanSummary::from(plan, results);
  EXPECT_EQ(summary.freed + summary.trashed, 0u);
  EXPECT_EQ(summary.cleaned, 0);
  EXPECT_EQ(summary.problems.size(), 5u);
  EXPECT_EQ(CleanerTexts::result(summary), std::vector<std::string>{"Nothing was cleaned."});
}

TEST(CleanerTexts, ConfirmationAndResultSentencesMentionOnlyWhatHappens) {
  EXPECT_EQ(CleanerTexts::confirmation({.deleteBytes = 2'500'000'000, .trashBytes = 0, .items = 3}),
            std::vector<std::string>{
                "Delete 2.5 GB. This can't be undone, and the files rebuild on their own."});
  EXPECT_EQ(CleanerTexts::confirmation({.deleteBytes = 0, .trashBytes = 120'000'000, .items = 1}),
            std::vector<std::string>{"Move 120 MB to the Trash. You can put it back, and emptying "
                                     "the Trash frees the space."});
  EXPECT_EQ(CleanerTexts::result({.freed = 2'000'000'000, .trashed = 0, .cleaned = 2}),
            std::vector<std::string>{"Freed 2.0 GB"});
  EXPECT_EQ(CleanerTexts::result({.freed = 0, .trashed = 300'000'000, .cleaned = 1}),
            std::vector<std::string>{"300 MB is in the Trash; empty the Trash to free the space."});
  EXPECT_EQ(
      CleanerTexts::result({.freed = 1'000'000'000, .trashed = 300'000'000, .cleaned = 3}),
      (std::vector<std::string>{
          "Freed 1.0 GB", "300 MB is in the Trash; empty the Trash to free that space too."}));
  EXPECT_EQ(CleanerTexts::skipRow({"pip cache", "pip3 is running"}),
            "Left alone because pip3 is running");
}

}  // namespace
}  // namespace pellwin
