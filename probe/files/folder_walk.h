// Descends a folder tree through open descriptors for the code that removes things. One
// descriptor is held at a time, so any depth works; names are always resolved relative to the
// open folder, so a folder swapped for a link during the walk is never followed; going back up
// re-opens ".." and checks it is the folder the walk came from. Not thread-safe per walk.
#pragma once

#include <sys/stat.h>

#include <expected>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "probe/file_descriptor.h"
#include "probe/files/file_identity.h"
#include "probe/system_error.h"

namespace pellwin {

// Opens an absolute path one component at a time with O_NOFOLLOW, so a symbolic link anywhere
// in it fails the open (ELOOP or ENOTDIR). Every folder on the way is opened with O_PATH, which
// needs no read permission; the last one with `lastFlags` (O_PATH or O_RDONLY; O_DIRECTORY,
// O_NOFOLLOW and O_CLOEXEC are added). The error names the part of the path that failed.
[[nodiscard]] std::expected<FileDescriptor, SystemError> openFolderWithoutLinks(
    std::string_view absolutePath, int lastFlags);

enum class WalkStep { skip, descend, stop };

struct FolderWalkVisitor {
  // Each entry of a listed folder, "." and ".." left out, after the whole folder was read.
  // `folderFd` is the open folder (O_RDONLY), `relativePath` is "a/b/name" below the root.
  // Returning `descend` for a folder enters it once the current folder's entries are done.
  std::function<WalkStep(int folderFd, const std::string& name, const std::string& relativePath,
                         const struct stat& info)>
      entry;
  // After everything below an entered folder was visited, with its parent open. Optional.
  std::function<WalkStep(int parentFd, const std::string& name, const std::string& relativePath)>
      leave;
  // A folder that could not be entered or listed, or an entry that could not be examined (an
  // entry that vanished is passed over); the error's path is the relative path. Optional; by
  // default the walk goes on.
  std::function<WalkStep(const SystemError& error)> failed;
};

// Walks everything below the open folder `rootFd` (kept open by the caller). Fails when the
// root cannot be listed or the tree moved under the walk, with a path relative to the root ("" for
// the root itself); a stop asked for by the visitor is not an error.
[[nodiscard]] std::expected<void, SystemError> walkFolder(int rootFd,
                                                          const FolderWalkVisitor& visitor);

// Removes the entry `name` of the open folder `parentFd`, and for a folder everything in it,
// without following a link and without entering a mount point (a disk or a bind-mounted folder
// inside stays, and so does every folder around it; a mount point itself is refused). Folders the
// user owns that lack write or search permission are opened up first, so that read-only caches can
// go. Whatever can be removed is; the first problem comes back as a sentence. An entry that is
// already gone is a success.
// A folder inside that is one of `kept` (moved in by someone meanwhile) stays, with the folders
// around it, and is named in the problem.
[[nodiscard]] std::expected<void, std::string> removeTree(
    int parentFd, const std::string& name, const std::vector<FileIdentity>& kept = {});

}  // namespace pellwin
