// Whether the machine runs in its power-saving profile: the firmware's platform profile
// "low-power" (sysRoot/firmware/acpi/platform_profile, or a profile under
// sysRoot/class/platform-profile on newer kernels). Stateless; safe from any thread.
#pragma once

#include <filesystem>

namespace pellwin::LowPowerMode {

[[nodiscard]] bool platformProfileIsLowPower(const std::filesystem::path& sysRoot);

}  // namespace pellwin::LowPowerMode
