#include "app/commands/check_json.h"

#include <nlohmann/json.hpp>

#include "app/commands/check_command.h"

namespace pellwin {

namespace {

using json = nlohmann::ordered_json;

json optionalText(const std::optional<std::string>& text) {
  return text ? json(*text) : json(nullptr);
}

json appJSON(const AppUsage& app) {
  return json{{"id", app.id},
              {"name", app.name},
              {"detail", optionalText(app.detail)},
              {"category", enumText(app.category)},
              {"bundleIdentifier", optionalText(app.bundleIdentifier)},
              {"processCount", app.processCount},
              {"pids", app.pids},
              {"footprintBytes", app.footprintBytes},
              {"cpuCores", app.cpuCores},
              {"diskBytesPerSecond", app.diskBytesPerSecond}};
}

json healthJSON(const std::map<Resource, Health>& health) {
  json all = json::array();
  for (Resource resource : allResources) {
    const auto found = health.find(resource);
    json entry{{"resource", rawValue(resource)}, {"title", title(resource)}};
    if (found == health.end()) {
      entry["health"] = nullptr;  // not judged
      entry["label"] = "?";
    } else {
      entry["health"] = rawValue(found->second);
      entry["label"] = label(found->second);
    }
    all.push_back(std::move(entry));
  }
  return all;
}

json snapshotJSON(const Snapshot& s) {
  const MemoryReading& m = s.memory;
  json unavailable = json::array();
  for (Resource resource : s.unavailable) unavailable.push_back(rawValue(resource));
  json apps = json::array();
  for (const AppUsage& app : s.apps) apps.push_back(appJSON(app));
  json battery = nullptr;
  if (s.battery) {
    battery = json{
        {"percent", s.battery->percent},
        {"onBattery", s.battery->onBattery},
        {"charging", s.battery->charging},
        {"minutesLeft", s.battery->minutesLeft ? json(*s.battery->minutesLeft) : json(nullptr)}};
  }
  return json{
      {"timestamp", s.timestamp},
      {"interval", s.interval},
      {"memory",
       {{"totalBytes", m.totalBytes},
        {"usedBytes", m.usedBytes},
        {"compressedBytes", m.compressedBytes},
        {"swapUsedBytes", m.swapUsedBytes},
        {"swapInBytesPerSecond", m.swapInBytesPerSecond},
        {"swapOutBytesPerSecond", m.swapOutBytesPerSecond},
        {"pressureLevel", m.pressureLevel}}},
      {"cpu", {{"busyFraction", s.cpu.busyFraction}, {"coreCount", s.cpu.coreCount}}},
      {"disk",
       {{"freeBytes", s.disk.freeBytes},
        {"totalBytes", s.disk.totalBytes},
        {"readBytesPerSecond", s.disk.readBytesPerSecond},
        {"writeBytesPerSecond", s.disk.writeBytesPerSecond}}},
      {"thermal", {{"level", rawValue(s.thermal)}, {"label", label(s.thermal)}}},
      {"lowPowerMode", s.lowPowerMode},
      {"uptime", s.uptime},
      {"battery", battery},
      {"unavailable", unavailable},
      {"systemRemainderBytes", s.systemRemainderBytes},
      {"apps", apps},
  };
}

}  // namespace

std::string checkJSON(const Snapshot* snapshot, const std::map<Resource, Health>& health) {
  json document;
  if (snapshot == nullptr) {
    document = json{{"error", CheckCommand::noSnapshot}};
  } else {
    document = json{{"snapshot", snapshotJSON(*snapshot)}, {"health", healthJSON(health)}};
  }
  return document.dump(2, ' ', false, json::error_handler_t::replace);
}

}  // namespace pellwin
