// Raw readings taken by the platform readers (cumulative counters, never rates) and the
// derived per-resource readings a snapshot carries. Times are seconds since 1970 as doubles.
// Plain values: copied between threads, never shared.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/monitor/resource.h"

namespace pellwin {

// The desktop app a process belongs to, as the desktop session knows it (a systemd app
// scope, a Flatpak or Snap id, a desktop entry). It plays the part of a bundle.
struct AppIdentity {
  std::string id{};         // desktop id without ".desktop", e.g. "org.gnome.Nautilus"
  std::string name{};       // the desktop entry's Name
  std::string entryPath{};  // the desktop entry file; empty when none was found
  std::vector<std::string> categories{};  // the desktop entry's Categories, in file order
  friend bool operator==(const AppIdentity&, const AppIdentity&) = default;
};

struct ProcessSample {
  std::int32_t pid = 0;
  std::int32_t parentPid = 0;  // 0 when unknown; changes when the parent goes away
  std::string name{};
  // The executable: its exe link, or, when that is not ours to read (another user's process),
  // the file its command line names. Empty when unknown.
  std::string path{};
  std::uint64_t footprintBytes = 0;
  // Counted once across processes: the work of a child it reaped that no reading had counted,
  // and a newborn descendant's work from before its first reading, are in these counters.
  std::uint64_t cpuTimeNanos = 0;
  std::uint64_t diskReadBytes = 0;
  std::uint64_t diskWriteBytes = 0;
  std::uint64_t wakeups = 0;
  std::vector<std::string> arguments{};
  std::optional<std::string> workingDirectory{};
  std::optional<double> startTime{};
  std::optional<AppIdentity> app{};  // absent for command-line programs and system processes
  bool kernelThread = false;
  friend bool operator==(const ProcessSample&, const ProcessSample&) = default;
};

struct BatteryReading {
  int percent = 0;  // 0 to 100
  bool onBattery = false;
  bool charging = false;
  std::optional<int> minutesLeft{};
  friend bool operator==(const BatteryReading&, const BatteryReading&) = default;
};

// A reader that fails to read a group leaves that group's defaults in place and lists the
// resource in `unavailable`.
struct SystemSample {
  double timestamp = 0;
  std::uint64_t physicalMemoryBytes = 0;
  std::uint64_t pageSize = 16384;
  std::uint64_t freePages = 0;
  std::uint64_t internalPages = 0;
  std::uint64_t purgeablePages = 0;
  std::uint64_t wiredPages = 0;
  std::uint64_t compressorPages = 0;
  std::uint64_t swapIns = 0;
  std::uint64_t swapOuts = 0;
  std::uint64_t swapUsedBytes = 0;
  int pressureLevel = 1;  // 1 normal, 2 warning, 4 critical
  std::uint64_t cpuBusyTicks = 0;
  std::uint64_t cpuTotalTicks = 0;
  int coreCount = 1;
  std::uint64_t diskFreeBytes = 0;
  std::uint64_t diskTotalBytes = 0;
  std::uint64_t diskReadBytes = 0;
  std::uint64_t diskWriteBytes = 0;
  ThermalLevel thermal = ThermalLevel::nominal;
  bool lowPowerMode = false;
  double bootTime = 0;
  std::vector<ProcessSample> processes{};
  std::optional<BatteryReading> battery{};
  std::set<Resource> unavailable{};

  // A fresh sample: every field at its default and the boot time equal to the timestamp.
  [[nodiscard]] static SystemSample at(double timestamp) {
    return SystemSample{.timestamp = timestamp, .bootTime = timestamp};
  }
  friend bool operator==(const SystemSample&, const SystemSample&) = default;
};

struct MemoryReading {
  std::uint64_t totalBytes = 0;
  std::uint64_t usedBytes = 0;
  std::uint64_t compressedBytes = 0;
  std::uint64_t swapUsedBytes = 0;
  double swapInBytesPerSecond = 0;
  double swapOutBytesPerSecond = 0;
  int pressureLevel = 1;

  // 0 for an unknown total; never above 1.
  [[nodiscard]] double usedFraction() const;
  [[nodiscard]] double swapTrafficBytesPerSecond() const {
    return swapInBytesPerSecond + swapOutBytesPerSecond;
  }
  friend bool operator==(const MemoryReading&, const MemoryReading&) = default;
};

struct CPUReading {
  double busyFraction = 0;  // of the whole machine, 0 to 1
  int coreCount = 1;
  friend bool operator==(const CPUReading&, const CPUReading&) = default;
};

struct DiskReading {
  std::uint64_t freeBytes = 0;
  std::uint64_t totalBytes = 0;
  double readBytesPerSecond = 0;
  double writeBytesPerSecond = 0;

  // An unknown disk (total 0) counts as free, never as full. Not capped.
  [[nodiscard]] double freeFraction() const;
  [[nodiscard]] double trafficBytesPerSecond() const {
    return readBytesPerSecond + writeBytesPerSecond;
  }
  friend bool operator==(const DiskReading&, const DiskReading&) = default;
};

}  // namespace pellwin
