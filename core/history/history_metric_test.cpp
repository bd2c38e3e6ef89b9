#include "core/history/history_metric.h"

#include <gtest/gtest.h>

#include "core/history/history_point.h"

namespace pellwin {
namespace {

TEST(HistoryMetric, RawValuesRoundTripAndAreDistinct) {
  std::set<std::string_view> seen;
  for (HistoryMetric metric : allHistoryMetrics) {
    EXPECT_EQ(historyMetricFromRawValue(rawValue(metric)), metric);
    EXPECT_TRUE(seen.insert(rawValue(metric)).second) << rawValue(metric);
  }
  EXPECT_EQ(historyMetricFromRawValue("MemoryUsed"), std::nullopt);
  for (HistoryRange range : allHistoryRanges) {
    EXPECT_EQ(historyRangeFromRawValue(rawValue(range)), range);
  }
}

}  // namespace
}  // namespace pellwin
