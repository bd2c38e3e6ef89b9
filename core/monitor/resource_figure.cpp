#include "core/monitor/resource_figure.h"

#include "core/base/format.h"

namespace pellwin {

ResourceFigure resourceFigure(Resource resource, const Snapshot& s) {
  if (s.isUnavailable(resource)) return {.value = "—"};
  switch (resource) {
    case Resource::memory:
      return {.value = Format::memory(s.memory.usedBytes),
              .detail = "of " + Format::ram(s.memory.totalBytes)};
    case Resource::cpu:
      return {.value = Format::percent(s.cpu.busyFraction),
              .detail = "busy across " + std::to_string(s.cpu.coreCount) +
                        (s.cpu.coreCount == 1 ? " core" : " cores")};
    case Resource::diskSpace:
      return {.value = Format::disk(s.disk.freeBytes),
              .detail = "free of " + Format::disk(s.disk.totalBytes)};
    case Resource::diskActivity:
      return {.value = Format::rate(s.disk.trafficBytesPerSecond()),
              .detail = "reading and writing"};
    case Resource::heat:
      return {.value = std::string(label(s.thermal)),
              .detail = s.lowPowerMode ? "Low Power Mode on" : "up " + Format::duration(s.uptime)};
  }
  return {};
}

}  // namespace pellwin
