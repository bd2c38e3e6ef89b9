// Moves the data folder from its former name to its current one on disk, once per start.
// Safe to call from any thread; it touches only the two paths under `applicationSupport`.
#pragma once

#include <expected>
#include <string>

#include "core/base/data_folder.h"
#include "probe/system_error.h"

namespace pellwin::AppDataFolder {

// Carries out DataFolder::move. The former folder counts only when it is a directory (a plain
// file of that name is ignored); the current name counts when anything at all is there, a
// dangling link included (lstat, links not followed). A failed rename names both paths, and reads
// best with ErrorWording::reasonAndPath.
[[nodiscard]] std::expected<DataFolderMove, SystemError> migrate(
    const std::string& applicationSupport);

}  // namespace pellwin::AppDataFolder
