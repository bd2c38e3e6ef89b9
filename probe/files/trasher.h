// The only code that removes anything from the disk. Whatever the caller decided earlier, each
// item is checked again on the live disk just before acting: lstat, realpath, the removal
// rules on both spellings, the cleanable test for deleting for good, and a search inside
// folders for anything protected. One result per item, in order; no error escapes.
// Blocking: run it off the user-interface thread. Keeps no state between calls.
#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "core/clean/clean_action.h"
#include "core/clean/linux_cleaner_catalog.h"
#include "core/space/removal_rules.h"
#include "core/space/trash_item.h"
#include "probe/files/removal_disk.h"

namespace pellwin {

class Trasher {
 public:
  // `guards` are what this machine protects beyond the fixed rules (at least the data
  // folders). `movedBases` are the XDG base folders the environment moved: a path inside one
  // is judged cleanable as if it were in the standard place. `disk` must outlive the trasher.
  Trasher(std::string home, RemovalGuards guards, RemovalDisk& disk,
          std::vector<MovedFolder> movedBases = {});

  // Moves each item to the Trash.
  [[nodiscard]] std::vector<TrashResult> trash(const std::vector<TrashItem>& items) const;

  // The same with the action chosen by the caller; deleting for good is only allowed where
  // the folder catalog marks the place cleanable.
  [[nodiscard]] std::vector<TrashResult> perform(const std::vector<TrashItem>& items,
                                                 CleanAction action) const;

  // The reason the rules alone (no look at the disk) refuse `action` on `path`: the removal
  // rules, and for deleting for good the cleanable test. What a plan may offer.
  [[nodiscard]] std::optional<std::string> ruleRefusal(const std::string& path,
                                                       CleanAction action) const;

  [[nodiscard]] const std::string& home() const { return home_; }
  [[nodiscard]] const std::string& resolvedHome() const { return resolvedHome_; }
  [[nodiscard]] const RemovalGuards& guards() const { return guards_; }

 private:
  [[nodiscard]] TrashResult act(const TrashItem& item, CleanAction action,
                                const std::vector<RemovalDisk::Identity>& guarded) const;
  // The files of the guarded folders as they are now (the kept ones, the main folders, the
  // security-key folders), so that one moved elsewhere is still known.
  [[nodiscard]] std::vector<RemovalDisk::Identity> guardedIdentities() const;
  // The reason the item at `path` (lstat `entry`, realpath `resolved`) may not go, if any.
  [[nodiscard]] std::optional<std::string> refusalOnDisk(
      const std::string& path, const RemovalDisk::Entry& entry, const std::string& resolved,
      const std::vector<RemovalDisk::Identity>& guarded, CleanAction action) const;
  // Why the folder may not go, from the first folder inside that must stay (a mount point, a
  // guarded folder and, with `byPath`, one the rules refuse by its path), or nothing; an error
  // when the folder could not be searched.
  [[nodiscard]] std::expected<std::optional<std::string>, SystemError> hazardInside(
      const std::string& folder, const std::vector<RemovalDisk::Identity>& guarded,
      bool byPath) const;
  // After a move to the Trash: why what arrived there is not what was checked, or nothing.
  [[nodiscard]] std::optional<std::string> checkMoved(
      const std::string& trashed, const RemovalDisk::Entry& checked,
      const std::vector<RemovalDisk::Identity>& guarded) const;
  // The path with home's spelling replaced by its resolved one: how the item is reached with
  // no link below home.
  [[nodiscard]] std::string physicalSpelling(const std::string& path) const;
  // Whether the folder catalog lets the path be deleted for good, in its standard place.
  [[nodiscard]] bool isCleanable(const std::string& path) const;
  // A resolved path inside the resolved home, spelled from `home` so the rules recognise it.
  [[nodiscard]] std::string homeSpelling(const std::string& resolved) const;

  std::string home_;
  std::string resolvedHome_;
  RemovalGuards guards_;
  RemovalGuards checkedGuards_;  // the guards and their resolved spellings
  std::vector<MovedFolder> movedBases_;
  std::vector<RemovalDisk::Identity> knownGuarded_;  // as they were when the trasher was made
  RemovalDisk& disk_;
};

}  // namespace pellwin
