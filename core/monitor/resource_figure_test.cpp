#include "core/monitor/resource_figure.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(ResourceFigure, ShowsEachResourceInItsOwnUnits) {
  Snapshot s{.memory = {.totalBytes = 16ull << 30, .usedBytes = 13ull << 30},
             .cpu = {.busyFraction = 0.624, .coreCount = 8},
             .disk = {.freeBytes = 48'200'000'000,
                      .totalBytes = 512'000'000'000,
                      .readBytesPerSecond = 9e6,
                      .writeBytesPerSecond = 3e6},
             .thermal = ThermalLevel::serious,
             .uptime = 3 * 86400.0 + 5};
  Snapshot oneCore = s;
  oneCore.cpu.coreCount = 1;
  Snapshot saving = s;
  saving.lowPowerMode = true;
  Snapshot unread = s;
  unread.unavailable = {Resource::diskActivity};

  const struct {
    const char* why;
    Resource resource;
    const Snapshot& snapshot;
    ResourceFigure expected;
  } cases[] = {
      {"memory in binary units", Resource::memory, s, {"13.0 GB", "of 16 GB"}},
      {"cpu", Resource::cpu, s, {"62%", "busy across 8 cores"}},
      {"one core", Resource::cpu, oneCore, {"62%", "busy across 1 core"}},
      {"disk sizes in decimal units", Resource::diskSpace, s, {"48.2 GB", "free of 512 GB"}},
      {"traffic adds reads and writes",
       Resource::diskActivity,
       s,
       {"12 MB/s", "reading and writing"}},
      {"heat", Resource::heat, s, {"Hot", "up 3 days"}},
      {"heat with power saving", Resource::heat, saving, {"Hot", "Low Power Mode on"}},
      {"not measured", Resource::diskActivity, unread, {"—", ""}},
      {"the others still are", Resource::memory, unread, {"13.0 GB", "of 16 GB"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(resourceFigure(c.resource, c.snapshot), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
