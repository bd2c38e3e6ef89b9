#include "core/monitor/stabilizer.h"

#include <gtest/gtest.h>

#include <vector>

namespace pellwin {
namespace {

using Levels = std::map<Resource, Health>;

// Feeds the CPU's raw level at each time and records what was shown after each update.
std::vector<Health> shownFor(Stabilizer& stabilizer,
                             const std::vector<std::pair<double, Health>>& raw) {
  std::vector<Health> shown;
  for (const auto& [t, level] : raw) {
    shown.push_back(stabilizer.update({{Resource::cpu, level}}, {}, t).at(Resource::cpu));
  }
  return shown;
}

TEST(Stabilizer, ShowsAChangeOnlyAfterItHeldForTheHoldBothWays) {
  Stabilizer stabilizer(30);
  std::vector<std::pair<double, Health>> raw = {{-2, Health::ok}};
  for (double t = 0; t <= 32; t += 2) raw.emplace_back(t, Health::problem);
  const auto shown = shownFor(stabilizer, raw);
  for (std::size_t i = 0; i < raw.size(); ++i) {
    SCOPED_TRACE(raw[i].first);
    EXPECT_EQ(shown[i], raw[i].first >= 30 ? Health::problem : Health::ok);
  }

  // Back to healthy waits just as long.
  std::vector<std::pair<double, Health>> calm;
  for (double t = 34; t <= 66; t += 2) calm.emplace_back(t, Health::ok);
  const auto settled = shownFor(stabilizer, calm);
  for (std::size_t i = 0; i < calm.size(); ++i) {
    SCOPED_TRACE(calm[i].first);
    EXPECT_EQ(settled[i], calm[i].first >= 64 ? Health::ok : Health::problem);
  }
}

TEST(Stabilizer, ForgetsAChangeThatFlipsBackBeforeTheHold) {
  Stabilizer stabilizer(30);
  std::vector<std::pair<double, Health>> raw = {{0, Health::ok}};
  for (double t = 1; t <= 29; t += 2) raw.emplace_back(t, Health::problem);
  raw.emplace_back(30, Health::ok);
  for (double t = 31; t <= 59; t += 2) raw.emplace_back(t, Health::problem);
  for (Health h : shownFor(stabilizer, raw)) EXPECT_EQ(h, Health::ok);
}

TEST(Stabilizer, TimesAChangeToAThirdLevelFromTheFirstDifference) {
  Stabilizer stabilizer(30);
  const auto shown = shownFor(stabilizer, {{-1, Health::ok},
                                           {0, Health::strain},
                                           {10, Health::problem},
                                           {20, Health::problem},
                                           {29, Health::problem},
                                           {30, Health::problem}});
  EXPECT_EQ(shown, (std::vector<Health>{Health::ok, Health::ok, Health::ok, Health::ok, Health::ok,
                                        Health::problem}));
}

TEST(Stabilizer, AdoptsRawLevelsAtOnceAtTheStartAndAfterAGap) {
  Stabilizer stabilizer(30);
  EXPECT_EQ(stabilizer.update({{Resource::memory, Health::strain}}, {}, 0),
            (Levels{{Resource::memory, Health::strain}}));
  (void)stabilizer.update({{Resource::memory, Health::problem}}, {}, 2);  // pending from 2
  EXPECT_EQ(stabilizer.update({{Resource::memory, Health::ok}, {Resource::cpu, Health::problem}},
                              {}, 32.5),
            (Levels{{Resource::memory, Health::ok}, {Resource::cpu, Health::problem}}))
      << "30.5 s is a gap: every raw level is adopted at once";
  EXPECT_EQ(stabilizer.update({{Resource::memory, Health::problem}}, {}, 34).at(Resource::memory),
            Health::ok)
      << "the change pending from before the gap was forgotten";
  EXPECT_EQ(stabilizer.update({{Resource::memory, Health::problem}}, {}, 63).at(Resource::memory),
            Health::ok);
  EXPECT_EQ(stabilizer.update({{Resource::memory, Health::problem}}, {}, 64).at(Resource::memory),
            Health::problem);
}

TEST(Stabilizer, ShowsAnUnreadableResourceAsHealthyAtOnceAndKeepsAbsentOnes) {
  Stabilizer stabilizer(30);
  (void)stabilizer.update({{Resource::heat, Health::problem}, {Resource::cpu, Health::strain}}, {},
                          0);
  const Levels shown = stabilizer.update({{Resource::heat, Health::problem}}, {Resource::heat}, 2);
  EXPECT_EQ(shown, (Levels{{Resource::heat, Health::ok}, {Resource::cpu, Health::strain}}));
  // Readable again: a change from the shown healthy level waits the hold like any other.
  EXPECT_EQ(stabilizer.update({{Resource::heat, Health::problem}}, {}, 4).at(Resource::heat),
            Health::ok);
}

}  // namespace
}  // namespace pellwin
