#include "probe/system/thermal_reader.h"

#include <gtest/gtest.h>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

TEST(ThermalLevel, JudgesTheWorstSensorAgainstItsLimits) {
  const ThermalSensor zone{.temperature = 50000, .passive = 90000, .critical = 105000};
  auto at = [&](std::int64_t temperature) {
    ThermalSensor s = zone;
    s.temperature = temperature;
    return s;
  };
  const struct {
    const char* why;
    ThermalFacts facts;
    ThermalLevel level;
  } cases[] = {
      {"no sensors at all (a virtual machine)", {}, ThermalLevel::nominal},
      {"cool", {.sensors = {zone}}, ThermalLevel::nominal},
      {"just under 10 °C below passive", {.sensors = {at(79999)}}, ThermalLevel::nominal},
      {"within 10 °C of passive", {.sensors = {at(80000)}}, ThermalLevel::fair},
      {"at the passive trip", {.sensors = {at(90000)}}, ThermalLevel::serious},
      {"within 5 °C of critical", {.sensors = {at(100000)}}, ThermalLevel::critical},
      {"at a hot trip",
       {.sensors = {ThermalSensor{.temperature = 70000, .hot = 70000}}},
       ThermalLevel::critical},
      {"hwmon max counts like passive",
       {.sensors = {ThermalSensor{.temperature = 86000, .max = 86000}}},
       ThermalLevel::serious},
      {"a critical alarm",
       {.sensors = {ThermalSensor{.temperature = 30000, .criticalAlarm = true}}},
       ThermalLevel::critical},
      {"past the second fan stage",
       {.sensors = {ThermalSensor{.temperature = 61000, .activeTrips = {50000, 60000, 70000}}}},
       ThermalLevel::fair},
      {"past the first fan stage only",
       {.sensors = {ThermalSensor{.temperature = 55000, .activeTrips = {50000, 60000}}}},
       ThermalLevel::nominal},
      {"throttling while cool", {.sensors = {zone}, .throttled = true}, ThermalLevel::serious},
      {"a processor cooling device at work", {.processorCooling = true}, ThermalLevel::serious},
      {"the worst of two sensors", {.sensors = {zone, at(92000)}}, ThermalLevel::serious},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(thermalLevel(c.facts), c.level);
  }
}

TEST(ThermalReader, ReadsZonesHwmonAndThrottleCounters) {
  testing::ScratchFolder root;
  const auto sys = root / "sys";
  root.write("sys/class/thermal/thermal_zone0/type", "x86_pkg_temp\n");
  root.write("sys/class/thermal/thermal_zone0/temp", "60000\n");
  root.write("sys/class/thermal/thermal_zone0/trip_point_0_type", "passive\n");
  root.write("sys/class/thermal/thermal_zone0/trip_point_0_temp", "95000\n");
  root.write("sys/class/thermal/thermal_zone0/trip_point_1_type", "critical\n");
  root.write("sys/class/thermal/thermal_zone0/trip_point_1_temp", "105000\n");
  // A hot wireless card says nothing about the CPU.
  root.write("sys/class/thermal/thermal_zone1/type", "iwlwifi_1\n");
  root.write("sys/class/thermal/thermal_zone1/temp", "120000\n");
  root.write("sys/class/thermal/thermal_zone1/trip_point_0_type", "critical\n");
  root.write("sys/class/thermal/thermal_zone1/trip_point_0_temp", "110000\n");
  root.write("sys/class/thermal/cooling_device0/type", "Processor\n");
  root.write("sys/class/thermal/cooling_device0/cur_state", "0\n");
  root.write("sys/class/hwmon/hwmon0/name", "nvme\n");
  root.write("sys/class/hwmon/hwmon0/temp1_input", "99000\n");
  root.write("sys/class/hwmon/hwmon0/temp1_crit", "100000\n");
  root.write("sys/class/hwmon/hwmon1/name", "k10temp\n");  // no crit: 95 °C assumed
  root.write("sys/class/hwmon/hwmon1/temp1_input", "70000\n");
  root.write("sys/devices/system/cpu/cpu0/thermal_throttle/core_throttle_count", "4\n");
  root.write("sys/devices/system/cpu/cpu0/thermal_throttle/package_throttle_count", "1\n");

  ThermalReader reader(sys);
  EXPECT_EQ(reader.read(1000), ThermalLevel::nominal);

  root.write("sys/class/thermal/thermal_zone0/temp", "86000\n");  // temperatures every reading
  EXPECT_EQ(reader.read(1002), ThermalLevel::fair);

  root.write("sys/devices/system/cpu/cpu0/thermal_throttle/core_throttle_count", "5\n");
  EXPECT_EQ(reader.read(1004), ThermalLevel::serious);
  EXPECT_EQ(reader.read(1013.9), ThermalLevel::serious);  // still within ten seconds
  EXPECT_EQ(reader.read(1014), ThermalLevel::fair);

  root.write("sys/class/hwmon/hwmon1/temp1_input", "91000\n");
  EXPECT_EQ(reader.read(1016), ThermalLevel::critical);

  root.write("sys/class/hwmon/hwmon1/temp1_input", "garbage\n");
  root.write("sys/class/thermal/cooling_device0/cur_state", "2\n");
  EXPECT_EQ(reader.read(1018), ThermalLevel::serious);

  testing::ScratchFolder none;
  EXPECT_EQ(ThermalReader(none / "sys").read(0), ThermalLevel::nominal);
}

}  // namespace
}  // namespace pellwin
