// The allocated bytes of a path and everything below it, for callers that want one number and
// no tree. Blocking.
#pragma once

#include <cstdint>
#include <string>

namespace pellwin::FolderSize {

// lstat's blocks of the path itself (a link there is not followed), plus, for a folder,
// everything below it on the same volume, each hard-linked file counted once. Folders that
// cannot be read add nothing beyond their own blocks; a path that does not exist is 0.
[[nodiscard]] std::uint64_t allocatedBytes(const std::string& path);

}  // namespace pellwin::FolderSize
