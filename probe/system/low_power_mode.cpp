#include "probe/system/low_power_mode.h"

#include "probe/proc_file.h"

namespace pellwin::LowPowerMode {

bool platformProfileIsLowPower(const std::filesystem::path& sysRoot) {
  if (readAttribute(sysRoot / "firmware/acpi/platform_profile") == "low-power") return true;
  for (const auto& profile : listFolder(sysRoot / "class/platform-profile")) {
    if (readAttribute(profile / "profile") == "low-power") return true;
  }
  return false;
}

}  // namespace pellwin::LowPowerMode
