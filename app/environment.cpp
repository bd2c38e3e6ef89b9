#include "app/environment.h"

#include "core/base/data_folder.h"

namespace pellwin {

std::string applicationSupport(const Environment& environment) {
  return DataFolder::applicationSupport(environment.home, environment.xdgDataHome);
}

}  // namespace pellwin
