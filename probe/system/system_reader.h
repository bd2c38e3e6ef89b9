// One reading of the whole machine per read(): memory, CPU ticks, disk space and traffic, the
// thermal level, Low Power Mode, boot time, every readable process and the battery.
// Thread: the sampler thread only (one reader, one caller at a time), except bundles().
// Units are those of SystemSample: bytes, pages of `pageSize` bytes, USER_HZ ticks summed over
// all processors, and seconds since 1970 for times.
//
// Every file is read below the roots given at construction, so tests point the reader at
// fixture trees. read() never fails as a whole: a group that cannot be read keeps its defaults
// and lists its resource in `unavailable`; heat is never unavailable.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/monitor/readings.h"
#include "probe/system/bundle_identifier_cache.h"
#include "probe/system/disk_reader.h"
#include "probe/system/process_reader.h"
#include "probe/system/thermal_reader.h"

namespace pellwin {

class SystemReader {
 public:
  struct Roots {
    std::filesystem::path proc{};    // the proc file system
    std::filesystem::path sys{};     // the sys file system
    std::filesystem::path volume{};  // a path on the start-up volume, whose space is read
    // Where apps are looked up: the XDG data folders in precedence order (the desktop entries
    // are in their "applications" folders), the program search path, and the messages locale
    // for the apps' names. With no data folders only sandboxed apps (Flatpak, Snap) are named.
    std::vector<std::filesystem::path> dataDirs{};
    std::vector<std::filesystem::path> searchPath{};
    std::string locale;
    // The D-Bus address where power-profiles-daemon is asked; empty: the system bus.
    std::string systemBus;
  };
  // Seconds since 1970. The default reads the system clock.
  using Clock = std::function<double()>;
  struct Options {
    Clock clock{};                     // empty: the system clock
    std::uint64_t pageSize = 0;        // 0: the running kernel's
    std::uint64_t ticksPerSecond = 0;  // USER_HZ; 0: the running kernel's
  };

  explicit SystemReader(Roots roots);
  SystemReader(Roots roots, Options options);

  [[nodiscard]] SystemSample read();

  // The app lookup the process reader uses; thread-safe, so the app grouping may share it.
  [[nodiscard]] BundleIdentifierCache& bundles() { return bundles_; }

  // Disk space is asked of the file system at most this often; a reading younger than this
  // is returned unchanged.
  static constexpr double spaceInterval = 30.0;
  // Low Power Mode is asked at most this often.
  static constexpr double lowPowerInterval = 30.0;

 private:
  struct SpaceReading {
    DiskSpace space{};
    double taken = 0;
  };
  [[nodiscard]] std::optional<DiskSpace> diskSpace(double now);
  [[nodiscard]] bool lowPowerMode(double now);
  void readMemory(SystemSample& sample) const;
  void readProcStat(SystemSample& sample) const;

  Roots roots_;
  Clock clock_;
  std::uint64_t pageSize_;
  BundleIdentifierCache bundles_;  // before processes_, which keeps a pointer to it
  ProcessReader processes_;
  ThermalReader thermal_;
  std::optional<SpaceReading> lastSpace_;
  std::optional<std::pair<bool, double>> lastLowPower_;  // (on, when asked)
};

}  // namespace pellwin
