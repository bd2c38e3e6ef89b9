#include "core/monitor/resource.h"

#include <gtest/gtest.h>

#include "core/monitor/energy_impact.h"
#include "core/monitor/readings.h"

namespace pellwin {
namespace {

TEST(Health, WorseLevelsCompareGreater) {
  EXPECT_LT(Health::ok, Health::strain);
  EXPECT_LT(Health::strain, Health::problem);
  EXPECT_LT(ThermalLevel::nominal, ThermalLevel::fair);
  EXPECT_LT(ThermalLevel::fair, ThermalLevel::serious);
  EXPECT_LT(ThermalLevel::serious, ThermalLevel::critical);
}

TEST(Readings, FractionsHandleUnknownAndOverfullTotals) {
  EXPECT_EQ((MemoryReading{.totalBytes = 0, .usedBytes = 5}.usedFraction()), 0.0);
  EXPECT_EQ((MemoryReading{.totalBytes = 10, .usedBytes = 20}.usedFraction()), 1.0);
  EXPECT_DOUBLE_EQ((MemoryReading{.totalBytes = 10, .usedBytes = 4}.usedFraction()), 0.4);
  EXPECT_EQ((DiskReading{.freeBytes = 0, .totalBytes = 0}.freeFraction()), 1.0);
  EXPECT_DOUBLE_EQ((DiskReading{.freeBytes = 1, .totalBytes = 4}.freeFraction()), 0.25);
  const SystemSample fresh = SystemSample::at(1234.5);
  EXPECT_EQ(fresh.bootTime, 1234.5);
  EXPECT_EQ(fresh.pageSize, 16384u);
  EXPECT_EQ(fresh.pressureLevel, 1);
  EXPECT_EQ(fresh.coreCount, 1);
}

TEST(EnergyImpact, OneBusyCoreAndFiveThousandWakeupsEachScoreOneHundred) {
  EXPECT_DOUBLE_EQ(EnergyImpact::score(1, 0, 0, 0), 100);
  EXPECT_DOUBLE_EQ(EnergyImpact::score(0, 5000, 0, 0), 100);
  EXPECT_DOUBLE_EQ(EnergyImpact::score(0, 0, 1e9, 1e9), 69);
}

}  // namespace
}  // namespace pellwin
