#include "core/history/minute_lookup.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

constexpr double kMinute = 1'717'425'120;  // Mon 3 June 2024, 14:32 UTC

MinuteAppRow ranked(AppRank rank, int position, const char* name, double value) {
  return MinuteAppRow{.minute = kMinute,
                      .rank = rank,
                      .position = position,
                      .appID = std::string("app:") + name,
                      .name = name,
                      .value = value};
}

TEST(MinuteLookup, ListsTheStoredRankingsWithEachAppsShareOfTheMachine) {
  const MinuteRow row{.minute = kMinute,
                      .covered = 60,
                      .stats = {{HistoryMetric::memoryUsed, {8.0 * 1073741824, 0, 0}},
                                {HistoryMetric::cpuBusy, {0.5, 0, 0}}}};
  const std::vector<MinuteAppRow> apps = {
      ranked(AppRank::cpu, 2, "Slack", 0.5),
      ranked(AppRank::cpu, 1, "python3.12", 3.0),
      ranked(AppRank::memory, 1, "Google Chrome", 6.0 * 1073741824),
      ranked(AppRank::disk, 1, "OrbStack", 160e6),
  };
  const MinuteLookup lookup = minuteLookup(kMinute, row, apps, 8, kMinute + 600, Calendar());
  EXPECT_TRUE(lookup.recorded);
  EXPECT_EQ(lookup.heading, "Busiest apps at 2:32 PM");
  ASSERT_EQ(lookup.rankings.size(), 3u);
  EXPECT_EQ(lookup.rankings[0].title, "Memory");
  EXPECT_EQ(lookup.rankings[0].apps[0].valueText, "6.0 GB");
  EXPECT_EQ(lookup.rankings[0].apps[0].shareText, "75%") << "of the memory in use";
  const LookupRanking& cpu = lookup.rankings[1];
  EXPECT_EQ(cpu.title, "CPU");
  ASSERT_EQ(cpu.apps.size(), 2u);
  EXPECT_EQ(cpu.apps[0].name, "python3.12") << "in stored position order";
  EXPECT_EQ(cpu.apps[0].valueText, "38%") << "of all eight cores, as the monitor shows it";
  EXPECT_EQ(cpu.apps[0].shareText, "75%") << "of the four busy cores";
  const LookupApp& disk = lookup.rankings[2].apps[0];
  EXPECT_EQ(disk.valueText, "160 MB/s");
  EXPECT_FALSE(disk.share.has_value()) << "the minute has no disk traffic to divide by";
  EXPECT_EQ(disk.shareText, "");
}

TEST(MinuteLookup, NamesTheDayOfAnEarlierMinuteAndSaysWhenNothingWasStored) {
  const MinuteLookup lookup =
      minuteLookup(kMinute, std::nullopt, {}, 0, kMinute + 86400, Calendar());
  EXPECT_FALSE(lookup.recorded);
  EXPECT_TRUE(lookup.rankings.empty());
  EXPECT_EQ(lookup.heading, "Busiest apps at 2:32 PM, Yesterday");
  const MinuteLookup noCores = minuteLookup(
      kMinute, std::nullopt, {ranked(AppRank::cpu, 1, "yes", 1.0)}, 0, kMinute, Calendar());
  EXPECT_EQ(noCores.rankings[0].apps[0].valueText, "1.0 cores");
  EXPECT_EQ(minuteOf(kMinute + 59.9), kMinute);
  EXPECT_EQ(minuteOf(kMinute - 0.1), kMinute - 60);
}

}  // namespace
}  // namespace pellwin
