// The freedesktop.org Trash on Linux. An item goes to the home trash ($XDG_DATA_HOME/Trash)
// when it lies on the same volume, else to its own volume's trash: "$topdir/.Trash/$uid" when
// "$topdir/.Trash" is a real folder with the sticky bit, otherwise "$topdir/.Trash-$uid". An item
// is only ever renamed, never copied, so one that no trash on its volume can take stays where
// it is. The ".trashinfo" is created first with O_EXCL, and the rename never replaces anything,
// so two programs trashing the same name at once both keep their item.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "probe/files/file_identity.h"

namespace pellwin {

class FreedesktopTrash {
 public:
  struct Entry {
    std::string trashDirectory{};  // $trash, holding files/ and info/
    std::string name{};            // files/<name>, with info/<name>.trashinfo beside it
    std::string originalPath{};    // absolute, decoded
    std::string deletionDate{};    // as written in the info file
    friend bool operator==(const Entry&, const Entry&) = default;
  };

  // `dataHome` is the XDG data home (absolute); `uid` names the volume trashes.
  FreedesktopTrash(std::string dataHome, uid_t uid);

  [[nodiscard]] std::string homeTrash() const { return dataHome_ + "/Trash"; }

  // Moves the item at `path` into the trash of its volume, creating that trash when missing.
  // `path` must be absolute with no symbolic link anywhere in it (as realpath gives); the open
  // fails otherwise. The item itself must not be a link, nor a mount point, and when `expected`
  // is given it must still be that file. Errors are sentences for the user.
  [[nodiscard]] std::expected<Entry, std::string> moveToTrash(
      const std::string& path, std::optional<FileIdentity> expected = std::nullopt) const;

  // Undoes a move: the entry's item goes back to its original path (whose folders must hold no
  // link), never replacing anything there, and the entry's info file and size line go.
  [[nodiscard]] static std::expected<void, std::string> putBack(const Entry& entry);

  // The entries of one trash directory, read from its info files, in no particular order.
  [[nodiscard]] static std::vector<Entry> entries(const std::string& trashDirectory);

  // Removes one entry for good: its item, its info file and its line in "directorysizes"
  // (the file goes when no line is left).
  [[nodiscard]] static std::expected<void, std::string> erase(const Entry& entry);

  // The folder where the file system holding `path` is mounted ($topdir), found by walking up
  // until the mount-root attribute is set or the device changes. `path` must exist.
  [[nodiscard]] static std::string mountTop(const std::string& path);

 private:
  std::string dataHome_;
  uid_t uid_;
};

}  // namespace pellwin
