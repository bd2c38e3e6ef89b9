// Which file something is, whatever it is called: the device and inode that lstat gives. A
// rename keeps them, so a guarded folder moved elsewhere is still recognised.
#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace pellwin {

struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;

  [[nodiscard]] static FileIdentity of(const struct stat& info) {
    return {.device = static_cast<std::uint64_t>(info.st_dev),
            .inode = static_cast<std::uint64_t>(info.st_ino)};
  }
};

}  // namespace pellwin
