#include "probe/system_error.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace pellwin {

SystemError SystemError::fromErrno(std::string_view operation, std::string_view path) {
  const int code = errno;
  return {.operation = std::string(operation), .path = std::string(path), .code = code};
}

bool SystemError::isGone() const { return code == ENOENT || code == ESRCH; }

namespace {

std::string reasonOf(const SystemError& error) {
  // Items are only ever renamed into a trash, never copied, so one on a disk whose trash
  // cannot be used stays where it is.
  if (error.operation == "trash" && error.code == EXDEV) {
    return "It's on a disk whose Trash Tovrin can't use, so it was left in place";
  }
  // The GNU strerror_r, which may return a static string instead of filling the buffer; unlike
  // strerror it is safe from any thread.
  char buffer[256];
  return ::strerror_r(error.code, buffer, sizeof buffer);
}

// "write" gives "writing", "flush" gives "flushing".
std::string gerund(const std::string& verb) {
  std::string stem = verb;
  if (stem.ends_with('e')) stem.pop_back();
  return stem + "ing";
}

}  // namespace

std::string sentence(const SystemError& error, ErrorWording wording) {
  std::string reason = reasonOf(error);
  switch (wording) {
    case ErrorWording::reason: return reason;
    case ErrorWording::reasonAndPath:
      if (error.target.empty()) return reason + " (" + error.path + ")";
      return reason + " (" + error.path + " to " + error.target + ")";
    case ErrorWording::reasonAndStep:
      return reason + " (" + gerund(error.operation) + " " + error.path + ")";
    case ErrorWording::pathAfterReason: return reason + ": " + error.path;
  }
  return reason;
}

}  // namespace pellwin
