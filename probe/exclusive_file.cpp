#include "probe/exclusive_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace pellwin {

std::expected<FileDescriptor, SystemError> createExclusive(int folderFd, const std::string& name,
                                                           mode_t mode,
                                                           const std::string& shownPath) {
  // O_EXCL alone already refuses a link at the name (open(2): "symbolic links are not
  // followed"); O_NOFOLLOW says so twice for readers who do not know that.
  FileDescriptor fd(
      ::openat(folderFd, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
  if (!fd.valid()) return std::unexpected(SystemError::fromErrno("create", shownPath));
  return fd;
}

std::expected<void, SystemError> writeAll(int fd, std::string_view text,
                                          const std::string& shownPath) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = ::write(fd, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return std::unexpected(SystemError::fromErrno("write", shownPath));
    if (written == 0) {
      return std::unexpected(SystemError{.operation = "write", .path = shownPath, .code = EIO});
    }
    done += static_cast<std::size_t>(written);
  }
  return {};
}

std::string temporaryName(const std::string& name, int attempt) {
  return "." + name + ".tovrin-" + std::to_string(::getpid()) + "-" + std::to_string(attempt);
}

std::expected<void, SystemError> replaceFileAt(int folderFd, const std::string& name,
                                               std::string_view text, mode_t mode,
                                               const std::string& shownFolder) {
  const std::string shownFile = shownFolder + "/" + name;
  constexpr int attempts = 100;
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    const std::string temporary = temporaryName(name, attempt);
    auto fd = createExclusive(folderFd, temporary, mode, shownFolder + "/" + temporary);
    if (!fd && fd.error().code == EEXIST) continue;
    if (!fd) return std::unexpected(std::move(fd.error()));
    auto written = writeAll(fd->get(), text, shownFile);
    if (written && ::close(fd->release()) != 0) {
      written = std::unexpected(SystemError::fromErrno("write", shownFile));
    }
    if (written && ::renameat(folderFd, temporary.c_str(), folderFd, name.c_str()) != 0) {
      written = std::unexpected(SystemError::fromErrno("replace", shownFile));
    }
    if (!written) ::unlinkat(folderFd, temporary.c_str(), 0);
    return written;
  }
  return std::unexpected(SystemError{.operation = "create", .path = shownFile, .code = EEXIST});
}

}  // namespace pellwin
