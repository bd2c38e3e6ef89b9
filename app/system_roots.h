// Where the machine readers look on this computer: the proc and sys file systems of the
// environment and the start-up volume.
#pragma once

#include "app/entry.h"
#include "probe/system_reader.h"

namespace pellwin {

[[nodiscard]] SystemReader::Roots systemReaderRoots(const Environment& environment);

}  // namespace pellwin
