#include "core/base/enum_text.h"

#include <gtest/gtest.h>

#include "core/base/data_folder.h"
#include "core/clean/clean_action.h"
#include "core/clean/clean_plan.h"
#include "core/history/history_metric.h"
#include "core/history/history_point.h"
#include "core/history/history_unavailable.h"
#include "core/history/minute_row.h"
#include "core/history/weekly_report.h"
#include "core/monitor/app_category.h"
#include "core/monitor/monitor_sort.h"
#include "core/monitor/resource.h"
#include "core/monitor/tip.h"
#include "core/space/project_advisor.h"
#include "core/space/storage_category.h"
#include "core/space/sunburst_layout.h"
#include "core/space/trash_item.h"
#include "testing/enum_text_round_trip.h"

namespace pellwin {
namespace {

enum class Letter { a, b, c };

TEST(EnumTable, CheckAcceptsOnlyEveryCaseOnceInOrderWithDistinctTexts) {
  const struct {
    const char* why;
    EnumTable<Letter::c> table;
    bool accepted;
  } cases[] = {
      {"complete", {{{Letter::a, "a"}, {Letter::b, "b"}, {Letter::c, "c"}}}, true},
      {"last case left out", {{{Letter::a, "a"}, {Letter::b, "b"}}}, false},
      {"middle case left out", {{{Letter::a, "a"}, {Letter::c, "c"}}}, false},
      {"a case twice", {{{Letter::a, "a"}, {Letter::b, "b"}, {Letter::b, "c"}}}, false},
      {"two cases swapped", {{{Letter::a, "a"}, {Letter::c, "c"}, {Letter::b, "b"}}}, false},
      {"a text twice", {{{Letter::a, "a"}, {Letter::b, "b"}, {Letter::c, "b"}}}, false},
      {"an empty text", {{{Letter::a, "a"}, {Letter::b, ""}, {Letter::c, "c"}}}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(listsEveryCaseOnceInOrder(c.table), c.accepted);
  }
}

// A case appended after the one a table is sized by is caught because the compiler names
// only real cases: the check below is what `enumTable` asserts for every table.
static_assert(isNamedCase<Letter::c>());
static_assert(!isNamedCase<static_cast<Letter>(3)>());
static_assert(!isNamedCase<static_cast<Letter>(-1)>());

}  // namespace

namespace testing {

using CoreEnums =
    ::testing::Types<Resource, Health, ThermalLevel, AppCategory, TipKind, HistoryMetric,
                     HistoryRange, AppRank, HistoryScreen, WeekTrend, MonitorSort, CleanAction,
                     CleanTickState, StorageCategory, TrashResult::Outcome, SunburstKind,
                     ProjectAdvisor::Kind, DataFolderMove>;
INSTANTIATE_TYPED_TEST_SUITE_P(Core, EnumTextRoundTrip, CoreEnums);

}  // namespace testing
}  // namespace pellwin
