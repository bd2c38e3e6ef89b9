#include "app/desktop/login_item.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "probe/file_descriptor.h"
#include "probe/proc_file.h"
#include "probe/system/desktop_entry.h"

namespace pellwin {
namespace {

// Characters that make an Exec argument need double quotes (Desktop Entry Specification,
// "The Exec key").
constexpr std::string_view reserved = " \t\"'\\><~|&;$*?#()`";
// Inside double quotes these four still need a backslash.
constexpr std::string_view escapedInQuotes = "\"`$\\";

std::string quotedArgument(std::string_view argument) {
  const bool quote = argument.find_first_of(reserved) != std::string_view::npos;
  std::string out = quote ? "\"" : "";
  for (const char c : argument) {
    if (quote && escapedInQuotes.find(c) != std::string_view::npos) out += '\\';
    if (c == '%') out += '%';  // a lone % would start a field code
    out += c;
  }
  if (quote) out += '"';
  return out;
}

// The string type's own escape runs before the Exec quoting is read, so every backslash of
// the quoted argument is doubled once more in the file.
std::string stringValue(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '\\') out += '\\';
    out += c;
  }
  return out;
}

std::expected<void, SystemError> writeWhole(const std::string& path, std::string_view text) {
  FileDescriptor fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  if (!fd.valid()) return std::unexpected(SystemError::fromErrno("create", path));
  while (!text.empty()) {
    const ssize_t n = ::write(fd.get(), text.data(), text.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return std::unexpected(SystemError::fromErrno("write", path));
    text.remove_prefix(static_cast<std::size_t>(n));
  }
  if (::close(fd.release()) != 0) return std::unexpected(SystemError::fromErrno("flush", path));
  return {};
}

}  // namespace

std::optional<std::string> execValue(std::string_view program) {
  if (!program.starts_with('/')) return std::nullopt;
  for (const char c : program) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) return std::nullopt;
  }
  return stringValue(quotedArgument(program));
}

std::optional<std::string> autostartEntryText(std::string_view program) {
  const auto exec = execValue(program);
  if (!exec) return std::nullopt;
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Tovrin\n"
         "Comment=Tells why the computer is slow right now and which app is behind it\n"
         "Exec=" +
         *exec +
         "\n"
         "Terminal=false\n"
         "Categories=System;Monitor;\n"
         "X-GNOME-Autostart-enabled=true\n";
}

std::filesystem::path LoginItem::entryPath(const Environment& environment) {
  return std::filesystem::path(configHome(environment)) / "autostart" / fileName;
}

LoginItem::LoginItem(std::filesystem::path entry, std::string program)
    : entry_(std::move(entry)), program_(std::move(program)) {}

LoginItemStatus LoginItem::status() const {
  std::error_code error;
  if (!std::filesystem::exists(std::filesystem::symlink_status(entry_, error))) {
    return LoginItemStatus::notRegistered;
  }
  const auto text = readTextFile(entry_);
  if (!text) return LoginItemStatus::unknown;
  const auto parsed = parseDesktopEntry(*text, "");
  if (!parsed) return LoginItemStatus::unknown;
  // Desktops switch an autostart entry off by writing Hidden=true over it.
  return parsed->hidden ? LoginItemStatus::notRegistered : LoginItemStatus::enabled;
}

std::expected<void, SystemError> LoginItem::enable() const {
  const auto text = autostartEntryText(program_);
  if (!text) {
    return std::unexpected(
        SystemError{.operation = "create", .path = entry_.string(), .code = EINVAL});
  }
  std::error_code error;
  std::filesystem::create_directories(entry_.parent_path(), error);
  if (error) {
    return std::unexpected(SystemError{
        .operation = "mkdir", .path = entry_.parent_path().string(), .code = error.value()});
  }
  // A desktop that reads the folder while we write must see the old entry or the new one.
  const std::string temporary = entry_.string() + ".new";
  if (auto written = writeWhole(temporary, *text); !written) {
    ::unlink(temporary.c_str());
    return written;
  }
  if (::rename(temporary.c_str(), entry_.c_str()) != 0) {
    const SystemError problem = SystemError::fromErrno("replace", entry_.string());
    ::unlink(temporary.c_str());
    return std::unexpected(problem);
  }
  return {};
}

std::expected<void, SystemError> LoginItem::disable() const {
  if (::unlink(entry_.c_str()) != 0 && errno != ENOENT) {
    return std::unexpected(SystemError::fromErrno("unlink", entry_.string()));
  }
  return {};
}

}  // namespace pellwin
