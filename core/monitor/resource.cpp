#include "core/monitor/resource.h"

namespace pellwin {

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

}  // namespace pellwin
