#include "core/history/alert_policy.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

using Displayed = std::map<Resource, Health>;
const Displayed kMemoryRed = {{Resource::memory, Health::problem}};
const Displayed kAllOk = {{Resource::memory, Health::ok}};

// Feeds `displayed` every `step` seconds over [from, to] and returns the times memory was due.
std::vector<double> memoryDueTimes(AlertPolicy& policy, const Displayed& displayed, double from,
                                   double to, double step = 2) {
  std::vector<double> times;
  for (double t = from; t <= to; t += step) {
    for (Resource r : policy.due(displayed, t)) {
      if (r == Resource::memory) times.push_back(t);
    }
  }
  return times;
}

TEST(AlertPolicy, IsDueOnceAfterTwoMinutesOfRed) {
  AlertPolicy policy;
  EXPECT_TRUE(memoryDueTimes(policy, kMemoryRed, 0, 118).empty());
  EXPECT_TRUE(policy.due(kMemoryRed, 119).empty());
  EXPECT_EQ(policy.due(kMemoryRed, 120), std::vector<Resource>{Resource::memory});
  EXPECT_TRUE(memoryDueTimes(policy, kMemoryRed, 122, 4000).empty())
      << "one notification per red stretch, however long it lasts";
}

TEST(AlertPolicy, HoldsBackARepeatWithinTheHourAndFiresWhenItHasPassed) {
  AlertPolicy policy;
  EXPECT_EQ(memoryDueTimes(policy, kMemoryRed, 0, 200), std::vector<double>{120});
  memoryDueTimes(policy, kAllOk, 202, 212);
  // Red again from 214: two minutes later (334) the hour since 120 has not passed, so it waits
  // while red and fires on the first red snapshot at least 3600 s after the first notice.
  EXPECT_EQ(memoryDueTimes(policy, kMemoryRed, 214, 4000), std::vector<double>{3720});
}

TEST(AlertPolicy, AGapRestartsTheRedStretchButKeepsTheHourlyLimit) {
  AlertPolicy policy;
  EXPECT_TRUE(memoryDueTimes(policy, kMemoryRed, 0, 100).empty());
  // 31 s of silence: the 100 s of red so far no longer count.
  EXPECT_TRUE(memoryDueTimes(policy, kMemoryRed, 131, 250).empty());
  EXPECT_EQ(memoryDueTimes(policy, kMemoryRed, 252, 252), std::vector<double>{252});

  // Notified at 252. A gap (48 s) does not reset the hour: red from 300 is long enough at 420
  // but waits until 3852, and fires on the first red snapshot after that.
  EXPECT_TRUE(memoryDueTimes(policy, kMemoryRed, 300, 3850, 10).empty());
  EXPECT_EQ(memoryDueTimes(policy, kMemoryRed, 3860, 3900, 10), std::vector<double>{3860});
}

TEST(AlertPolicy, ResourcesRedTogetherAreDueTogetherInResourceOrder) {
  AlertPolicy policy;
  const Displayed red = {{Resource::heat, Health::problem},
                         {Resource::cpu, Health::problem},
                         {Resource::diskActivity, Health::strain},
                         {Resource::memory, Health::problem}};
  for (double t = 0; t < 120; t += 2) EXPECT_TRUE(policy.due(red, t).empty()) << t;
  EXPECT_EQ(policy.due(red, 120),
            (std::vector<Resource>{Resource::memory, Resource::cpu, Resource::heat}));
}

TEST(AlertPolicy, AnAbsentResourceEndsItsRedStretch) {
  AlertPolicy policy;
  EXPECT_TRUE(memoryDueTimes(policy, kMemoryRed, 0, 58).empty());
  EXPECT_TRUE(policy.due({}, 60).empty());
  EXPECT_EQ(memoryDueTimes(policy, kMemoryRed, 62, 200), std::vector<double>{182});
}

}  // namespace
}  // namespace pellwin
