#include "core/monitor/battery_session.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

SystemSample reading(double at, std::optional<bool> onBattery) {
  SystemSample sample = SystemSample::at(at);
  if (onBattery) sample.battery = BatteryReading{.percent = 80, .onBattery = *onBattery};
  return sample;
}

void feed(BatterySession& session, const SystemSample& sample, const Snapshot* snapshot) {
  session.ingest(sample.timestamp, sample.battery, snapshot);
}

Snapshot spending(double at, std::vector<std::pair<std::string, double>> impacts) {
  Snapshot snapshot{.timestamp = at, .interval = 2};
  for (const auto& [name, impact] : impacts) {
    snapshot.apps.push_back({.id = "app:" + name, .name = name, .energyImpact = impact});
  }
  return snapshot;
}

TEST(BatterySession, StartsAtEachChangeOfPowerSourceAndSplitsTheEnergySinceThen) {
  BatterySession session;
  const Snapshot busy = spending(102, {{"Firefox", 30}, {"Slack", 10}, {"Idle", 0}});

  feed(session, reading(100, true), nullptr);
  EXPECT_EQ(session.since(), 100.0);
  EXPECT_TRUE(session.onBattery());
  EXPECT_TRUE(session.shares(5).empty());

  feed(session, reading(102, true), &busy);
  feed(session, reading(104, true), &busy);
  EXPECT_EQ(session.since(), 100.0);
  EXPECT_EQ(session.shares(5),
            (std::vector<EnergyShare>{{.appID = "app:Firefox", .name = "Firefox", .share = 0.75},
                                      {.appID = "app:Slack", .name = "Slack", .share = 0.25}}))
      << "an app that used nothing has no share";
  EXPECT_EQ(session.shares(1).size(), 1u);

  feed(session, reading(106, false), &busy);
  EXPECT_EQ(session.since(), 106.0) << "plugging in starts a new session";
  EXPECT_FALSE(session.onBattery());
  EXPECT_TRUE(session.shares(5).empty()) << "the interval began before the change";

  feed(session, reading(108, std::nullopt), &busy);
  EXPECT_TRUE(session.isEmpty()) << "no battery, no session";
}

TEST(BatterySession, ALongSessionForgetsTheLeastCostlyAppsButKeepsTheirEnergy) {
  BatterySession session;
  feed(session, reading(0, true), nullptr);
  std::vector<std::pair<std::string, double>> many;
  for (std::size_t i = 0; i < 2 * BatterySession::maxApps + 1; ++i) {
    many.emplace_back("app" + std::to_string(1000 + i), 1.0 + static_cast<double>(i));
  }
  const Snapshot snapshot = spending(2, many);
  feed(session, reading(2, true), &snapshot);

  const auto shares = session.shares(1000);
  ASSERT_EQ(shares.size(), BatterySession::maxApps);
  EXPECT_EQ(shares.front().name, "app" + std::to_string(1000 + 2 * BatterySession::maxApps));
  double sum = 0;
  for (const EnergyShare& share : shares) sum += share.share;
  EXPECT_LT(sum, 1.0) << "the forgotten apps' energy still counts in the whole";
}

}  // namespace
}  // namespace pellwin
