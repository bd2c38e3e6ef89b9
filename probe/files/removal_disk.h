// The disk operations the trash mover needs, behind a small interface so that its decisions
// are tested with a fake, and with a fake that fails, as well as on the live disk.
#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "probe/files/file_identity.h"
#include "probe/system_error.h"

namespace pellwin {

class RemovalDisk {
 public:
  using Identity = FileIdentity;

  struct Entry {
    bool isSymlink = false;
    bool isDirectory = false;
    bool isMountPoint = false;  // another disk, or a folder bound there from elsewhere
    Identity identity{};
  };

  // A folder met below the folder being checked.
  struct Subfolder {
    std::string path{};  // the folder's path, spelled from the checked folder's path
    std::string name{};
    bool isMountPoint = false;  // another disk, or a folder bound there from elsewhere
    Identity identity{};
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

  // Moves the item at `path` (no link anywhere in it: a link on the way fails the move) to the
  // Trash, only while it is still the file `expected`; returns where it now is. A sentence on
  // failure.
  [[nodiscard]] virtual std::expected<std::string, std::string> moveToTrash(
      const std::string& path, const Identity& expected) = 0;

  // Undoes a move: the item at `trashed` (as moveToTrash returned it) goes back to `path`,
  // never replacing anything there, and its Trash entry is dropped. A sentence on failure.
  [[nodiscard]] virtual std::expected<void, std::string> putBack(const std::string& trashed,
                                                                 const std::string& path) = 0;

  // Removes the item at `path` (no link anywhere in it) for good, only while it is still the
  // file `expected`, and never any folder inside that is one of `kept`; a sentence on failure.
  [[nodiscard]] virtual std::expected<void, std::string> removeForGood(
      const std::string& path, const Identity& expected, const std::vector<Identity>& kept) = 0;
};

}  // namespace pellwin
