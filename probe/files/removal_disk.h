// The disk operations the trash mover needs, behind a small interface so that its decisions
// are tested with a fake, and with a fake that fails, as well as on the live disk.
#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <string>

#include "probe/system_error.h"

namespace pellwin {

class RemovalDisk {
 public:
  struct Entry {
    bool isSymlink = false;
    bool isDirectory = false;
    bool isMountPoint = false;  // another disk, or a folder bound there from elsewhere
  };

  // A folder met below the folder being checked.
  struct Subfolder {
    std::string path{};  // the folder's path, spelled from the checked folder's path
    std::string name{};
    bool isMountPoint = false;  // another disk, or a folder bound there from elsewhere
  };

  virtual ~RemovalDisk() = default;

  // lstat: what is at the path, never following a link there.
  [[nodiscard]] virtual std::expected<Entry, SystemError> inspect(const std::string& path) = 0;

  // realpath: the path with every link resolved, or nothing when it cannot be resolved.
  [[nodiscard]] virtual std::optional<std::string> resolve(const std::string& path) = 0;

  // Every folder below `folder`, depth first, links not followed, until `isProtected` says yes;
  // returns that folder, or nothing. A folder below that cannot be read is passed over; an error
  // means `folder` itself could not be searched.
  [[nodiscard]] virtual std::expected<std::optional<Subfolder>, SystemError> findSubfolder(
      const std::string& folder, const std::function<bool(const Subfolder&)>& isProtected) = 0;

  // Moves the item at `path` (resolved: no link anywhere in it) to the Trash; a sentence on
  // failure.
  [[nodiscard]] virtual std::expected<void, std::string> moveToTrash(const std::string& path) = 0;

  // Removes the item at `path` (resolved) for good; a sentence on failure.
  [[nodiscard]] virtual std::expected<void, std::string> removeForGood(const std::string& path) = 0;
};

}  // namespace pellwin
