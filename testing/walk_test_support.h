// Test support only: building disk fixtures for the space map's walk (allocated files, deep
// chains), running `du` as an independent oracle, and running a check as an unprivileged user
// so that folder permissions bite even when the tests run as root. Production code never
// includes it.
#pragma once

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "probe/files/folder_walk.h"

namespace pellwin::testing {

// A file whose blocks are really allocated (no data written, so it is quick).
inline void allocateFile(const std::filesystem::path& path, std::uint64_t bytes) {
  std::filesystem::create_directories(path.parent_path());
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) std::abort();
  if (bytes > 0 && ::posix_fallocate(fd, 0, static_cast<off_t>(bytes)) != 0) std::abort();
  ::close(fd);
}

inline std::uint64_t allocatedOf(const std::filesystem::path& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return 0;
  return static_cast<std::uint64_t>(info.st_blocks) * 512;
}

// What `du -sxB1` says: everything under the path on its volume, hard links once.
inline std::optional<std::uint64_t> duBytes(const std::string& path) {
  const std::string command = "du -sxB1 '" + path + "' 2>/dev/null";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return std::nullopt;
  std::array<char, 256> line{};
  const bool read = std::fgets(line.data(), line.size(), pipe) != nullptr;
  ::pclose(pipe);
  if (!read) return std::nullopt;
  std::uint64_t bytes = 0;
  const char* end = line.data() + std::char_traits<char>::length(line.data());
  if (std::from_chars(line.data(), end, bytes).ec != std::errc{}) return std::nullopt;
  return bytes;
}

// Runs `check` in a child process as the user nobody when this process is root (root ignores
// folder permissions), or directly otherwise; returns what it returned, or "child failed".
inline std::string runUnprivileged(const std::function<std::string()>& check) {
  if (::geteuid() != 0) return check();
  int pipeFds[2];
  if (::pipe(pipeFds) != 0) return "pipe failed";
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(pipeFds[0]);
    if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(2);
    const std::string result = check();
    if (::write(pipeFds[1], result.data(), result.size()) < 0) ::_exit(3);
    ::_exit(0);
  }
  ::close(pipeFds[1]);
  std::string result;
  std::array<char, 4096> buffer{};
  ssize_t got = 0;
  while ((got = ::read(pipeFds[0], buffer.data(), buffer.size())) > 0) {
    result.append(buffer.data(), static_cast<std::size_t>(got));
  }
  ::close(pipeFds[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return "child failed";
  return result;
}

// Makes `levels` nested folders named `name` under `base`, each opened relative to the last,
// so the chain may be far longer than PATH_MAX; returns the descriptor of the deepest.
inline FileDescriptor makeChain(const std::string& base, int levels, const char* name) {
  FileDescriptor at(::open(base.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < levels && at.valid(); ++i) {
    if (::mkdirat(at.get(), name, 0755) != 0) std::abort();
    at = FileDescriptor(::openat(at.get(), name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  return at;
}

}  // namespace pellwin::testing
