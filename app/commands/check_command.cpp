#include "app/commands/check_command.h"

#include <algorithm>
#include <ostream>

#include "app/commands/check_json.h"
#include "core/base/format.h"
#include "core/base/printable_text.h"
#include "core/monitor/diagnoser.h"
#include "core/monitor/snapshot_builder.h"
#include "core/monitor/snapshot_window.h"

namespace pellwin::CheckCommand {
namespace {

constexpr std::string_view kDot = " · ";

// Blanks on the right up to `width`; a longer text is cut to it. The texts padded are
// figures, which are ASCII.
std::string padded(std::string text, std::size_t width) {
  text.resize(width, ' ');
  return text;
}

std::string memoryLine(const MemoryReading& m) {
  return "memory  used " + Format::memory(m.usedBytes) + " of " + Format::ram(m.totalBytes) +
         std::string(kDot) + "compressed " + Format::memory(m.compressedBytes) + std::string(kDot) +
         "spilled to disk " + Format::memory(m.swapUsedBytes) + std::string(kDot) + "moving in " +
         Format::rate(m.swapInBytesPerSecond) + " out " + Format::rate(m.swapOutBytesPerSecond) +
         std::string(kDot) + "pressure " + std::to_string(m.pressureLevel);
}

std::string cpuLine(const CPUReading& cpu) {
  return "cpu     " + Format::percent(cpu.busyFraction) + " busy" + std::string(kDot) +
         std::to_string(cpu.coreCount) + " cores";
}

std::string diskLine(const DiskReading& disk) {
  return "disk    " + Format::disk(disk.freeBytes) + " free of " + Format::disk(disk.totalBytes) +
         std::string(kDot) + "read " + Format::rate(disk.readBytesPerSecond) + std::string(kDot) +
         "write " + Format::rate(disk.writeBytesPerSecond);
}

std::string heatLine(const Snapshot& s) {
  return "heat    " + std::string(label(s.thermal)) + std::string(kDot) + "Low Power Mode " +
         (s.lowPowerMode ? "on" : "off") + std::string(kDot) + "up " + Format::duration(s.uptime);
}

std::string unavailableLine(const std::set<Resource>& unavailable) {
  std::vector<std::string_view> keys;
  for (Resource resource : unavailable) keys.push_back(rawValue(resource));
  std::ranges::sort(keys);
  std::string line = "unavailable: ";
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (i > 0) line += ", ";
    line += keys[i];
  }
  return line;
}

std::string appsLine(const Snapshot& s) {
  long long processes = 0;
  for (const AppUsage& app : s.apps) processes += app.processCount;
  return "apps    " + std::to_string(s.apps.size()) + " apps from " + std::to_string(processes) +
         " readable processes" + std::string(kDot) + "macOS system remainder " +
         Format::memory(s.systemRemainderBytes);
}

std::string appLine(const AppUsage& app, int coreCount) {
  std::string line = "  " + padded(Format::memory(app.footprintBytes), 9) + " " +
                     padded(Format::percent(app.cpuCores / std::max(coreCount, 1)), 5) + " " +
                     padded(std::to_string(app.processCount), 4) + " " + printableText(app.name);
  if (app.detail) line += std::string(kDot) + printableText(*app.detail);
  return line;
}

std::string healthLine(const std::map<Resource, Health>& health) {
  std::string line = "health  ";
  for (Resource resource : allResources) {
    if (resource != allResources.front()) line += kDot;
    const auto found = health.find(resource);
    line += std::string(title(resource)) + " " +
            std::string(found == health.end() ? "?" : label(found->second));
  }
  return line;
}

}  // namespace

std::vector<std::string> lines(const Snapshot& snapshot, const std::map<Resource, Health>& health) {
  std::vector<std::string> out = {memoryLine(snapshot.memory), cpuLine(snapshot.cpu),
                                  diskLine(snapshot.disk), heatLine(snapshot)};
  if (!snapshot.unavailable.empty()) out.push_back(unavailableLine(snapshot.unavailable));
  out.push_back(appsLine(snapshot));
  const std::size_t shown = std::min(snapshot.apps.size(), maxAppLines);
  for (std::size_t i = 0; i < shown; ++i) {
    out.push_back(appLine(snapshot.apps[i], snapshot.cpu.coreCount));
  }
  out.push_back(healthLine(health));
  return out;
}

Result take(const std::function<SystemSample()>& read,
            const std::function<void(double seconds)>& sleep) {
  SnapshotBuilder builder;
  // The first reading is only the baseline: it never gives a snapshot.
  (void)builder.ingest(read());
  sleep(2.0);
  Result result{.snapshot = builder.ingest(read()), .health = {}};
  if (!result.snapshot) return result;
  // The same judgement as the monitor's, over a window that holds only this snapshot.
  SnapshotWindow window(600);
  window.append(*result.snapshot);
  result.health = Diagnoser{.thresholds = Thresholds::standard()}.health(window);
  return result;
}

void run(const std::function<SystemSample()>& read,
         const std::function<void(double seconds)>& sleep, std::ostream& out) {
  const Result result = take(read, sleep);
  if (!result.snapshot) {
    out << noSnapshot << "\n";
    return;
  }
  for (const std::string& line : lines(*result.snapshot, result.health)) out << line << '\n';
}

void runJSON(const std::function<SystemSample()>& read,
             const std::function<void(double seconds)>& sleep, std::ostream& out) {
  const Result result = take(read, sleep);
  out << checkJSON(result.snapshot ? &*result.snapshot : nullptr, result.health) << "\n";
}

}  // namespace pellwin::CheckCommand
