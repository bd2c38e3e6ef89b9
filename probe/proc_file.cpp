#include "probe/proc_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "probe/file_descriptor.h"

namespace pellwin {

namespace {

constexpr std::size_t initialCapacity = 4096;

}  // namespace

std::expected<std::string_view, SystemError> readFileAt(int dirFd, const char* relative,
                                                        std::string& buffer, ReadExtent extent) {
  const FileDescriptor file(::openat(dirFd, relative, O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file.valid()) return std::unexpected(SystemError::fromErrno("open", relative));
  if (buffer.size() < initialCapacity) buffer.resize(initialCapacity);
  std::size_t used = 0;
  for (;;) {
    if (used == buffer.size()) buffer.resize(buffer.size() * 2);
    const ssize_t got = ::read(file.get(), buffer.data() + used, buffer.size() - used);
    if (got < 0) {
      if (errno == EINTR) continue;
      return std::unexpected(SystemError::fromErrno("read", relative));
    }
    if (got == 0) break;
    const bool filled = used + static_cast<std::size_t>(got) == buffer.size();
    used += static_cast<std::size_t>(got);
    if (extent == ReadExtent::oneRecord && !filled) break;
  }
  return std::string_view(buffer.data(), used);
}

std::optional<std::string> readTextFile(const std::filesystem::path& path) {
  std::string buffer;
  auto text = readFileAt(AT_FDCWD, path.c_str(), buffer);
  if (!text) return std::nullopt;
  buffer.resize(text->size());
  return buffer;
}

std::optional<std::string> readAttribute(const std::filesystem::path& path) {
  auto text = readTextFile(path);
  if (!text) return std::nullopt;
  if (const auto end = text->find('\n'); end != std::string::npos) text->resize(end);
  return text;
}

std::vector<std::filesystem::path> listFolder(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> entries;
  std::error_code error;
  for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
       it.increment(error)) {
    entries.push_back(it->path());
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

std::optional<std::string> readLinkAt(int dirFd, const char* relative) {
  std::string target(256, '\0');
  for (;;) {
    const ssize_t got = ::readlinkat(dirFd, relative, target.data(), target.size());
    if (got < 0) return std::nullopt;
    // A result that fills the buffer may have been cut short: grow and ask again.
    if (static_cast<std::size_t>(got) < target.size()) {
      target.resize(static_cast<std::size_t>(got));
      return target;
    }
    if (target.size() >= 65536) return std::nullopt;
    target.resize(target.size() * 4);
  }
}

}  // namespace pellwin
