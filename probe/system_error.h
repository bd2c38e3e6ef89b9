// A failed system call as a value: what was being done, the path it named and the errno it
// gave. It is made once, right where the call fails, and `sentence` is the one place where it
// becomes words a user reads. A plain value; safe to copy between threads.
#pragma once

#include <string>
#include <string_view>

namespace pellwin {

struct SystemError {
  // A short verb for what failed: "open", "read", "lstat", "stat", "mkdir", "unlink",
  // "rename", "write", "create", "flush", "replace", "trash" (moving an item into a trash
  // folder, or finding no trash on its disk that can take it), or "kill" (signalling a
  // process; no path).
  std::string operation{};
  std::string path{};    // the path the call named, spelled as the caller knows it
  int code = 0;          // errno
  std::string target{};  // the second path of a call that names two (a rename's new name)
  friend bool operator==(const SystemError&, const SystemError&) = default;

  // The errno of the call that has just failed, naming `path`. Call it straight after that
  // call, with arguments that are already built: errno is read before anything is copied, but
  // a path computed in the argument list (which may allocate, and so touch errno) is built
  // first. Where the path must be computed, read errno into `code` yourself first.
  [[nodiscard]] static SystemError fromErrno(std::string_view operation, std::string_view path);

  // ENOENT or ESRCH: the file, or the process behind it, is not there. That is a normal
  // outcome for something that vanished meanwhile, not a failure.
  [[nodiscard]] bool isGone() const;
};

// How much of the error its sentence names besides the reason. Each is wording users already
// read in some place.
enum class ErrorWording {
  reason,           // "Permission denied": the words around it name the item already
  reasonAndPath,    // "Permission denied (Caches/a)", or "(/a to /b)" for a rename
  reasonAndStep,    // "Permission denied (writing /data/space-map.json.x1Y2z3)"
  pathAfterReason,  // "No such file or directory: /x"
};

// The reason is the system's description of the errno, except where the product has its own
// sentence for the case (a trash that cannot take an item from another disk).
[[nodiscard]] std::string sentence(const SystemError& error, ErrorWording wording);

}  // namespace pellwin
