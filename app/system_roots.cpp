#include "app/system_roots.h"

namespace pellwin {

SystemReader::Roots systemReaderRoots(const Environment& environment) {
  return SystemReader::Roots{
      .proc = environment.procRoot,
      .sys = environment.sysRoot,
      .volume = "/",
  };
}

}  // namespace pellwin
