#include "core/monitor/snapshot_builder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "core/base/checked_math.h"
#include "core/monitor/energy_impact.h"

namespace pellwin {
namespace {

// Counters only grow; one that went back (a reset, a reused pid) counts as no change.
std::uint64_t increase(std::uint64_t newer, std::uint64_t older) {
  return saturatingSubtract(newer, older);
}

double perSecond(std::uint64_t amount, double interval) {
  return static_cast<double>(amount) / interval;
}

std::uint64_t bytesOfPages(std::uint64_t pages, std::uint64_t pageSize) {
  return saturatingProduct(pages, pageSize);
}

MemoryReading memoryReading(const SystemSample& older, const SystemSample& newer, double interval,
                            bool measured) {
  const std::uint64_t appPages = increase(newer.internalPages, newer.purgeablePages);
  const std::uint64_t usedPages =
      checkedAdd(checkedAdd(appPages, newer.wiredPages, "used memory pages"), newer.compressorPages,
                 "used memory pages");
  MemoryReading memory{
      .totalBytes = newer.physicalMemoryBytes,
      .usedBytes = std::min(bytesOfPages(usedPages, newer.pageSize), newer.physicalMemoryBytes),
      .compressedBytes = bytesOfPages(newer.compressorPages, newer.pageSize),
      .swapUsedBytes = newer.swapUsedBytes,
      .pressureLevel = newer.pressureLevel,
  };
  if (measured) {
    const auto pageSize = static_cast<double>(newer.pageSize);
    memory.swapInBytesPerSecond =
        perSecond(increase(newer.swapIns, older.swapIns), interval) * pageSize;
    memory.swapOutBytesPerSecond =
        perSecond(increase(newer.swapOuts, older.swapOuts), interval) * pageSize;
  }
  return memory;
}

CPUReading cpuReading(const SystemSample& older, const SystemSample& newer, bool measured) {
  CPUReading cpu{.busyFraction = 0, .coreCount = newer.coreCount};
  if (measured && newer.cpuTotalTicks > older.cpuTotalTicks) {
    const auto total = static_cast<double>(newer.cpuTotalTicks - older.cpuTotalTicks);
    const auto busy = static_cast<double>(increase(newer.cpuBusyTicks, older.cpuBusyTicks));
    cpu.busyFraction = std::min(busy / total, 1.0);
  }
  return cpu;
}

DiskReading diskReading(const SystemSample& older, const SystemSample& newer, double interval,
                        bool measured) {
  DiskReading disk{.freeBytes = newer.diskFreeBytes, .totalBytes = newer.diskTotalBytes};
  if (measured) {
    disk.readBytesPerSecond =
        perSecond(increase(newer.diskReadBytes, older.diskReadBytes), interval);
    disk.writeBytesPerSecond =
        perSecond(increase(newer.diskWriteBytes, older.diskWriteBytes), interval);
  }
  return disk;
}

// Rates need the same process in both readings: a pid whose executable or start time changed
// was reused. The same program started again under a recycled pid (a compiler, run once per
// file) would otherwise be rated against its predecessor's counters.
std::vector<ProcessUsage> processUsages(const SystemSample& older, const SystemSample& newer,
                                        double interval) {
  // Sorted by pid, equal pids in listing order, so the first entry for a pid is found first.
  // The kernel lists processes by pid, so the sort has little to do.
  std::vector<const ProcessSample*> before;
  before.reserve(older.processes.size());
  for (const ProcessSample& process : older.processes) before.push_back(&process);
  std::ranges::stable_sort(before, std::less<>(), &ProcessSample::pid);
  const auto previousOf = [&](std::int32_t pid) -> const ProcessSample* {
    const auto it = std::ranges::lower_bound(before, pid, std::less<>(), &ProcessSample::pid);
    return it != before.end() && (*it)->pid == pid ? *it : nullptr;
  };

  std::vector<ProcessUsage> usages;
  usages.reserve(newer.processes.size());
  for (const ProcessSample& process : newer.processes) {
    ProcessUsage usage{.sample = &process};
    const ProcessSample* found = previousOf(process.pid);
    if (found != nullptr && found->path == process.path &&
        found->startTime == process.startTime) {
      const ProcessSample& old = *found;
      const double read = perSecond(increase(process.diskReadBytes, old.diskReadBytes), interval);
      const double write =
          perSecond(increase(process.diskWriteBytes, old.diskWriteBytes), interval);
      const double wakeups = perSecond(increase(process.wakeups, old.wakeups), interval);
      usage.cpuCores = perSecond(increase(process.cpuTimeNanos, old.cpuTimeNanos), interval) / 1e9;
      usage.diskBytesPerSecond = read + write;
      usage.energyImpact = EnergyImpact::score(usage.cpuCores, wakeups, read, write);
    }
    usages.push_back(usage);
  }
  return usages;
}

}  // namespace

std::optional<Snapshot> SnapshotBuilder::ingest(SystemSample sample) {
  if (!previous_) {
    previous_ = std::move(sample);
    return std::nullopt;
  }
  const SystemSample older = std::exchange(*previous_, std::move(sample));
  const SystemSample& newer = *previous_;
  const double interval = newer.timestamp - older.timestamp;
  if (!(interval > 0) || interval > maxInterval) return std::nullopt;

  std::set<Resource> unavailable = newer.unavailable;
  for (Resource resource : counterResources) {
    if (older.unavailable.contains(resource)) unavailable.insert(resource);
  }
  const auto measured = [&](Resource r) { return !unavailable.contains(r); };
  const std::vector<ProcessUsage> usages = processUsages(older, newer, interval);

  return Snapshot{
      .timestamp = newer.timestamp,
      .interval = interval,
      .memory = memoryReading(older, newer, interval, measured(Resource::memory)),
      .cpu = cpuReading(older, newer, measured(Resource::cpu)),
      .disk = diskReading(older, newer, interval, measured(Resource::diskActivity)),
      .thermal = newer.thermal,
      .lowPowerMode = newer.lowPowerMode,
      .uptime = newer.timestamp - newer.bootTime,
      .apps = AppGrouper::group(usages, bundleIdentifier_),
      .systemRemainderBytes = bytesOfPages(newer.wiredPages, newer.pageSize),
      .unavailable = std::move(unavailable),
      .battery = newer.battery,
  };
}

}  // namespace pellwin
