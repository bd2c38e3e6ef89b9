#include "probe/system/battery_reader.h"

#include <gtest/gtest.h>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

TEST(BatteryReading, FollowsTheChargeAndEstimateRules) {
  const PowerSupply discharging{.type = "Battery",
                                .status = "Discharging",
                                .capacity = 57,
                                .energyNow = 30'000'000,
                                .powerNow = 15'000'000};
  auto change = [&](auto edit) {
    PowerSupply s = discharging;
    edit(s);
    return s;
  };
  const struct {
    const char* why;
    PowerSupply supply;
    std::optional<BatteryReading> expected;
  } cases[] = {
      {"on battery: two hours from energy over power", discharging,
       BatteryReading{.percent = 57, .onBattery = true, .minutesLeft = 120}},
      {"a negative power (driver sign) still estimates",
       change([](PowerSupply& s) { s.powerNow = -15'000'000; }),
       BatteryReading{.percent = 57, .onBattery = true, .minutesLeft = 120}},
      {"the driver's own time to empty wins",
       change([](PowerSupply& s) { s.timeToEmptyNow = 3600; }),
       BatteryReading{.percent = 57, .onBattery = true, .minutesLeft = 60}},
      {"charge over current when there is no energy",
       PowerSupply{.type = "Battery",
                   .status = "Discharging",
                   .capacity = 50,
                   .chargeNow = 2'000'000,
                   .currentNow = 1'000'000},
       BatteryReading{.percent = 50, .onBattery = true, .minutesLeft = 120}},
      {"charging: no estimate", change([](PowerSupply& s) { s.status = "Charging"; }),
       BatteryReading{.percent = 57, .charging = true}},
      {"full on mains: no estimate", change([](PowerSupply& s) { s.status = "Full"; }),
       BatteryReading{.percent = 57}},
      {"no power draw: no estimate", change([](PowerSupply& s) { s.powerNow = 0; }),
       BatteryReading{.percent = 57, .onBattery = true}},
      {"zero time to empty: no estimate", change([](PowerSupply& s) {
         s.timeToEmptyNow = 0;
         s.powerNow.reset();
       }),
       BatteryReading{.percent = 57, .onBattery = true}},
      {"under a minute left: no estimate", change([](PowerSupply& s) { s.energyNow = 100; }),
       BatteryReading{.percent = 57, .onBattery = true}},
      {"capacity above 100 reads 100", change([](PowerSupply& s) { s.capacity = 104; }),
       BatteryReading{.percent = 100, .onBattery = true, .minutesLeft = 120}},
      {"a negative capacity reads 0", change([](PowerSupply& s) { s.capacity = -3; }),
       BatteryReading{.percent = 0, .onBattery = true, .minutesLeft = 120}},
      {"no capacity: energy over full, integer division",
       PowerSupply{.type = "Battery", .energyNow = 2, .energyFull = 3},
       BatteryReading{.percent = 66}},
      {"a full charge of 0 is unusable",
       PowerSupply{.type = "Battery", .energyNow = 2, .energyFull = 0}, std::nullopt},
      {"a mouse's battery is not the system's", change([](PowerSupply& s) { s.scope = "Device"; }),
       std::nullopt},
      {"a battery that is not present", change([](PowerSupply& s) { s.present = 0; }),
       std::nullopt},
      {"mains", PowerSupply{.type = "Mains"}, std::nullopt},
      {"a product past 64 bits",
       PowerSupply{.type = "Battery", .energyNow = INT64_MAX, .energyFull = 1}, std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(batteryReading(c.supply), c.expected);
  }
}

TEST(BatteryReader, TakesTheFirstSystemBatteryInNameOrder) {
  testing::ScratchFolder root;
  root.write("sys/class/power_supply/AC/type", "Mains\n");
  root.write("sys/class/power_supply/AC/online", "1\n");
  root.write("sys/class/power_supply/hidpp_battery_0/type", "Battery\n");
  root.write("sys/class/power_supply/hidpp_battery_0/scope", "Device\n");
  root.write("sys/class/power_supply/hidpp_battery_0/capacity", "5\n");
  root.write("sys/class/power_supply/BAT1/type", "Battery\n");
  root.write("sys/class/power_supply/BAT1/capacity", "90\n");
  root.write("sys/class/power_supply/BAT0/type", "Battery\n");
  root.write("sys/class/power_supply/BAT0/present", "1\n");
  root.write("sys/class/power_supply/BAT0/status", "Discharging\n");
  root.write("sys/class/power_supply/BAT0/capacity", "42\n");
  root.write("sys/class/power_supply/BAT0/energy_now", "21000000\n");
  root.write("sys/class/power_supply/BAT0/power_now", "7000000\n");
  EXPECT_EQ(BatteryReader::read(root / "sys"),
            (BatteryReading{.percent = 42, .onBattery = true, .minutesLeft = 180}));

  root.write("sys/class/power_supply/BAT0/capacity", "");  // truncated: not usable
  EXPECT_EQ(BatteryReader::read(root / "sys"), BatteryReading{.percent = 90});

  testing::ScratchFolder desktop;
  EXPECT_FALSE(BatteryReader::read(desktop / "sys").has_value());
}

}  // namespace
}  // namespace pellwin
