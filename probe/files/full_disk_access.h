// Whether the program may read the folders that the system keeps private, worked out from
// three probe folders, and which root a space-map scan starts from as a result. On Linux the
// probe folders do not exist, so the state is `unknown` and scans start at home; the whole
// disk ("/") is the other root on offer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin {

namespace FullDiskAccess {

enum class State { granted, denied, unknown };

[[nodiscard]] constexpr EnumTable<State::unknown> textTable(State) {
  return {{
      {State::granted, "granted"},
      {State::denied, "denied"},
      {State::unknown, "unknown"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(State state) { return enumText(state); }
[[nodiscard]] constexpr std::optional<State> stateFromRawValue(std::string_view raw) {
  return parseEnum<State>(raw);
}

// Lists "Library/Mail", "Library/Safari" and "Library/Messages" under `home` in turn: the first
// readable one gives `granted`; otherwise `denied` if any was private, else `unknown`.
[[nodiscard]] State state(const std::string& home);

}  // namespace FullDiskAccess

struct ScanRoot {
  std::string path{};
  std::optional<std::string> stripPrefix{};
  friend bool operator==(const ScanRoot&, const ScanRoot&) = default;

  // The whole disk. Linux has no separate data volume, so this is "/" shown as it is.
  [[nodiscard]] static ScanRoot wholeDisk() { return {.path = "/", .stripPrefix = std::nullopt}; }

  // `granted` scans the whole disk; `denied` and `unknown` scan home.
  [[nodiscard]] static ScanRoot forAccess(FullDiskAccess::State state, const std::string& home);
};

}  // namespace pellwin
