#include "probe/system/system_reader.h"

#include <unistd.h>

#include <chrono>
#include <utility>

#include "probe/proc_file.h"
#include "probe/system/battery_reader.h"
#include "probe/system/cpu_reader.h"
#include "probe/system/low_power_mode.h"
#include "probe/system/memory_reader.h"
#include "probe/system/power_profile.h"

namespace pellwin {

namespace {

double systemClock() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::uint64_t kernelPageSize() {
  const long size = ::sysconf(_SC_PAGESIZE);
  return size > 0 ? static_cast<std::uint64_t>(size) : 4096;
}

// A reading taken at `taken` still stands at `now` when it is less than `interval` old. A
// clock that went back makes it stale, so a jump never freezes a figure.
bool stillFresh(double taken, double now, double interval) {
  return now >= taken && now - taken < interval;
}

}  // namespace

SystemReader::SystemReader(Roots roots) : SystemReader(std::move(roots), Options{}) {}

SystemReader::SystemReader(Roots roots, Options options)
    : roots_(std::move(roots)),
      clock_(options.clock ? std::move(options.clock) : Clock(systemClock)),
      pageSize_(options.pageSize > 0 ? options.pageSize : kernelPageSize()),
      bundles_(DesktopSources{
          .dataDirs = roots_.dataDirs, .searchPath = roots_.searchPath, .locale = roots_.locale}),
      processes_(roots_.proc, options.ticksPerSecond, &bundles_, roots_.searchPath),
      thermal_(roots_.sys) {}

SystemSample SystemReader::read() {
  SystemSample sample = SystemSample::at(clock_());
  readMemory(sample);
  readProcStat(sample);
  if (const auto space = diskSpace(sample.timestamp)) {
    sample.diskFreeBytes = space->freeBytes;
    sample.diskTotalBytes = space->totalBytes;
  } else {
    sample.unavailable.insert(Resource::diskSpace);
  }
  if (const auto totals = DiskReader::totals(roots_.proc, roots_.sys)) {
    sample.diskReadBytes = totals->readBytes;
    sample.diskWriteBytes = totals->writeBytes;
  } else {
    sample.unavailable.insert(Resource::diskActivity);
  }
  sample.thermal = thermal_.read(sample.timestamp);
  sample.lowPowerMode = lowPowerMode(sample.timestamp);
  sample.processes = processes_.read(sample.timestamp);
  sample.battery = BatteryReader::read(roots_.sys);
  return sample;
}

void SystemReader::readMemory(SystemSample& sample) const {
  const auto memory = MemoryReader::read(roots_.proc, roots_.sys, pageSize_);
  if (!memory) {
    sample.unavailable.insert(Resource::memory);
    return;
  }
  sample.physicalMemoryBytes = memory->physicalMemoryBytes;
  sample.pageSize = memory->pageSize;
  sample.freePages = memory->freePages;
  sample.internalPages = memory->internalPages;
  sample.purgeablePages = memory->purgeablePages;
  sample.wiredPages = memory->wiredPages;
  sample.compressorPages = memory->compressorPages;
  sample.swapIns = memory->swapIns;
  sample.swapOuts = memory->swapOuts;
  sample.swapUsedBytes = memory->swapUsedBytes;
  sample.pressureLevel = memory->pressureLevel;
}

// /proc/stat holds both the CPU ticks and the boot time; it is read once for both.
void SystemReader::readProcStat(SystemSample& sample) const {
  const auto text = readTextFile(roots_.proc / "stat");
  const auto ticks = text ? parseCPUTicks(*text) : std::nullopt;
  if (ticks) {
    sample.cpuBusyTicks = ticks->busy;
    sample.cpuTotalTicks = ticks->total;
    sample.coreCount = ticks->processorCount;
  } else {
    sample.unavailable.insert(Resource::cpu);
  }
  if (const auto boot = text ? parseBootTime(*text) : std::nullopt) sample.bootTime = *boot;
}

std::optional<DiskSpace> SystemReader::diskSpace(double now) {
  if (lastSpace_ && stillFresh(lastSpace_->taken, now, spaceInterval)) return lastSpace_->space;
  const auto space = DiskReader::space(roots_.volume);
  if (space) {
    lastSpace_ = SpaceReading{.space = *space, .taken = now};
  } else {
    lastSpace_.reset();
  }
  return space;
}

bool SystemReader::lowPowerMode(double now) {
  if (lastLowPower_ && stillFresh(lastLowPower_->second, now, lowPowerInterval)) {
    return lastLowPower_->first;
  }
  // The daemon's profile when it runs (it sets the firmware's profile itself); the firmware's
  // when it does not.
  const auto profile = PowerProfile::activeProfile(roots_.systemBus);
  const bool on =
      profile ? *profile == "power-saver" : LowPowerMode::platformProfileIsLowPower(roots_.sys);
  lastLowPower_ = {on, now};
  return on;
}

}  // namespace pellwin
