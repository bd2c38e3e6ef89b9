// Moves the data folder from its former name to its current one on disk, once per start.
// Safe to call from any thread; it touches only the two paths under `applicationSupport`.
#pragma once

#include <expected>
#include <string>

#include "core/base/data_folder.h"

namespace pellwin::AppDataFolder {

// Carries out DataFolder::move. The former folder counts only when it is a directory (a plain
// file of that name is ignored); the current name counts when anything at all is there, a
// dangling link included (lstat, links not followed). A failed rename is returned as a sentence.
[[nodiscard]] std::expected<DataFolderMove, std::string> migrate(const std::string& applicationSupport);

}  // namespace pellwin::AppDataFolder
