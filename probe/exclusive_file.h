// Creating files the safe way: every file this program makes is created exclusively and without
// following a link, so a link or a hard link planted under the chosen name makes the call fail
// instead of writing through it to a file somewhere else. Blocking; any thread.
#pragma once

#include <sys/types.h>

#include <expected>
#include <string>
#include <string_view>

#include "probe/file_descriptor.h"
#include "probe/system_error.h"

namespace pellwin {

// Creates `name` in the open folder `folderFd` (AT_FDCWD for the working folder), open for
// writing. Anything already there, a link included, fails with EEXIST. `shownPath` names the
// file in a failure.
[[nodiscard]] std::expected<FileDescriptor, SystemError> createExclusive(
    int folderFd, const std::string& name, mode_t mode, const std::string& shownPath);

// Writes all of `text`, retrying short writes and EINTR.
[[nodiscard]] std::expected<void, SystemError> writeAll(int fd, std::string_view text,
                                                        const std::string& shownPath);

// The temporary name `replaceFileAt` tries on its `attempt`th try (1, 2, ...).
[[nodiscard]] std::string temporaryName(const std::string& name, int attempt);

// Replaces `name` in the open folder `folderFd` by a file holding `text`: written to a new
// temporary file created exclusively (a name taken by anything is passed over), then renamed
// over `name`, so readers see the old file or the new one, never half. A link at `name` is
// replaced as an entry, never followed. `shownFolder` names the folder in a failure.
[[nodiscard]] std::expected<void, SystemError> replaceFileAt(int folderFd, const std::string& name,
                                                             std::string_view text, mode_t mode,
                                                             const std::string& shownFolder);

}  // namespace pellwin
