#include "core/monitor/resource.h"

namespace pellwin {

std::string_view rawValue(Resource resource) {
  switch (resource) {
    case Resource::memory: return "memory";
    case Resource::cpu: return "cpu";
    case Resource::diskSpace: return "diskSpace";
    case Resource::diskActivity: return "diskActivity";
    case Resource::heat: return "heat";
  }
  return "";
}

std::optional<Resource> resourceFromRawValue(std::string_view raw) {
  for (Resource resource : allResources) {
    if (rawValue(resource) == raw) return resource;
  }
  return std::nullopt;
}

std::string_view title(Resource resource) {
  switch (resource) {
    case Resource::memory: return "Memory";
    case Resource::cpu: return "CPU";
    case Resource::diskSpace: return "Disk space";
    case Resource::diskActivity: return "Disk activity";
    case Resource::heat: return "Heat";
  }
  return "";
}

std::string_view noun(Resource resource) {
  switch (resource) {
    case Resource::memory: return "memory";
    case Resource::cpu: return "CPU";
    case Resource::diskSpace: return "disk space";
    case Resource::diskActivity: return "disk";
    case Resource::heat: return "CPU";
  }
  return "";
}

int rawValue(Health health) { return static_cast<int>(health); }

std::optional<Health> healthFromRawValue(int raw) {
  if (raw < 0 || raw > 2) return std::nullopt;
  return static_cast<Health>(raw);
}

std::string_view label(Health health) {
  switch (health) {
    case Health::ok: return "Healthy";
    case Health::strain: return "Getting busy";
    case Health::problem: return "Slowing your Mac";
  }
  return "";
}

int rawValue(ThermalLevel level) { return static_cast<int>(level); }

std::optional<ThermalLevel> thermalLevelFromRawValue(int raw) {
  if (raw < 0 || raw > 3) return std::nullopt;
  return static_cast<ThermalLevel>(raw);
}

std::string_view label(ThermalLevel level) {
  switch (level) {
    case ThermalLevel::nominal: return "Normal";
    case ThermalLevel::fair: return "Warm";
    case ThermalLevel::serious: return "Hot";
    case ThermalLevel::critical: return "Very hot";
  }
  return "";
}

}  // namespace pellwin
