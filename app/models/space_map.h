// The space map put together for this computer: the disk scanner on a low-priority scan task,
// the scan cache in the data folder, the access probe, and removal through quick clean's trash
// mover, so the same rules, guards and Trash apply to both tools. The screen starts here.
#pragma once

#include <functional>
#include <memory>

#include "app/environment.h"
#include "app/models/space_map_model.h"
#include "probe/files/scan_cache.h"

namespace pellwin {

// The cache file in the environment's data folder.
[[nodiscard]] ScanCache spaceMapCache(const Environment& environment);

// The model's services on this computer; `post` runs a step on the owner's thread.
[[nodiscard]] SpaceMapModel::Services spaceMapServices(
    const Environment& environment, std::function<void(std::function<void()>)> post);

// Blocking: reads the user's folders to learn what else to guard.
[[nodiscard]] std::unique_ptr<SpaceMapModel> makeSpaceMapModel(
    const Environment& environment, std::function<void(std::function<void()>)> post);

}  // namespace pellwin
