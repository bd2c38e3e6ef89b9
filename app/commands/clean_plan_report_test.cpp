#include "app/commands/clean_plan_report.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(CleanPlanReport, ListsVisibleGroupsWithItemsThenGroupsThatOnlySkipped) {
  const CleanPlan plan{
      .groups = {
          {.group = {.id = "developer-caches", .title = "Developer caches"},
           .items = {{"/h/.npm/_cacache", "npm cache", 2'500'000'000},
                     {"/h/.cache/yarn", "Yarn cache", 120'000'000}},
           .skipped = {{"pip cache", "pip3 is running"}}},
          {.group = {.id = "app-caches", .title = "App caches"},
           .skipped = {{"mozilla", "firefox-esr is open"}, {"spotify", "spotify is open"}}},
          {.group = {.id = "old-logs", .title = "Old logs"}},
          {.group = {.id = "ide-caches",
                     .title = "IDE and build caches",
                     .action = CleanAction::trash},
           .items = {{"/h/.cache/bazel", "Bazel build output", 4'000'000'000}}},
      }};
  EXPECT_EQ(cleanPlanReport(plan, 0.349),
            "IDE and build caches\t4.0 GB\t1 item\n"
            "  4.0 GB\tBazel build output\t/h/.cache/bazel\n"
            "Developer caches\t2.6 GB\t2 items, 1 skipped because it is in use: pip cache, pip3 "
            "is running\n"
            "  2.5 GB\tnpm cache\t/h/.npm/_cacache\n"
            "  120 MB\tYarn cache\t/h/.cache/yarn\n"
            "App caches\t0 MB\t0 items, 2 skipped because they are open: mozilla, firefox-esr is "
            "open; spotify, spotify is open\n"
            "planned in 0.3 s, nothing was changed\n");
}

TEST(CleanPlanReport, NamesThatHoldControlCharactersStayOnTheirLine) {
  const CleanPlan plan{.groups = {{.group = {.id = "app-caches", .title = "App caches"},
                                   .items = {{"/h/.cache/a\nb", "a\nb\x1b[2J", 5'000'000}}}}};
  EXPECT_EQ(cleanPlanReport(plan, 0),
            "App caches\t5 MB\t1 item\n"
            "  5 MB\ta?b?[2J\t/h/.cache/a?b\n"
            "planned in 0.0 s, nothing was changed\n");
}

TEST(CleanPlanReport, AnEmptyPlanSaysOnlyHowLongItTook) {
  EXPECT_EQ(cleanPlanReport(CleanPlan{}, 1.25), "planned in 1.2 s, nothing was changed\n");
}

}  // namespace
}  // namespace pellwin
