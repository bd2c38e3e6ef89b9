// Start at login, as an XDG autostart entry: the file $XDG_CONFIG_HOME/autostart/
// com.pellwin.Pellwin.desktop that the desktop reads at login. Registering writes it (replacing
// any earlier one at once), unregistering removes it. Plain file work; any thread.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "app/environment.h"
#include "core/base/enum_text.h"
#include "probe/system_error.h"

namespace pellwin {

// The login item's state in the launch check's words. This desktop needs no approval, so of
// those words only these can happen.
enum class LoginItemStatus {
  enabled,        // the entry is there and not hidden
  notRegistered,  // no entry, or one marked Hidden=true
  unknown,        // something is there that cannot be read
};

[[nodiscard]] constexpr EnumTable<LoginItemStatus::unknown> textTable(LoginItemStatus) {
  using enum LoginItemStatus;
  return {{{enabled, "enabled"}, {notRegistered, "notRegistered"}, {unknown, "unknown"}}};
}

class LoginItem {
 public:
  static constexpr std::string_view fileName = "com.pellwin.Pellwin.desktop";

  // The entry in the config home's "autostart" folder.
  [[nodiscard]] static std::filesystem::path entryPath(const Environment& environment);

  // `program` is the absolute path the entry starts.
  LoginItem(std::filesystem::path entry, std::string program);

  [[nodiscard]] LoginItemStatus status() const;
  // Writes the entry, creating the autostart folder when it is missing. Fails with "create"
  // (a program path a desktop entry cannot hold: one with a line break), or the call that
  // failed.
  [[nodiscard]] std::expected<void, SystemError> enable() const;
  // Removes the entry; an entry that is not there is no failure.
  [[nodiscard]] std::expected<void, SystemError> disable() const;

  [[nodiscard]] const std::filesystem::path& entry() const { return entry_; }

 private:
  std::filesystem::path entry_;
  std::string program_;
};

// The Exec value that runs `program` with no arguments, quoted and escaped as a desktop entry
// needs; absent for a path no entry can hold (a line break, or not absolute).
[[nodiscard]] std::optional<std::string> execValue(std::string_view program);

// The whole entry that starts `program` at login, or absent as for execValue.
[[nodiscard]] std::optional<std::string> autostartEntryText(std::string_view program);

}  // namespace pellwin
