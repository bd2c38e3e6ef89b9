// A hint beside the verdict: things that are not a problem now but worth knowing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin {

enum class TipKind { longUptime, idleSwap, lowPowerMode };

[[nodiscard]] constexpr EnumTable<TipKind::lowPowerMode> textTable(TipKind) {
  return {{
      {TipKind::longUptime, "longUptime"},
      {TipKind::idleSwap, "idleSwap"},
      {TipKind::lowPowerMode, "lowPowerMode"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(TipKind kind) { return enumText(kind); }
[[nodiscard]] constexpr std::optional<TipKind> tipKindFromRawValue(std::string_view raw) {
  return parseEnum<TipKind>(raw);
}

struct Tip {
  TipKind kind = TipKind::lowPowerMode;
  int days = 0;             // longUptime: whole days up
  std::uint64_t bytes = 0;  // idleSwap: swap in use

  [[nodiscard]] static Tip longUptime(int days) {
    return {.kind = TipKind::longUptime, .days = days};
  }
  [[nodiscard]] static Tip idleSwap(std::uint64_t bytes) {
    return {.kind = TipKind::idleSwap, .bytes = bytes};
  }
  [[nodiscard]] static Tip lowPowerMode() { return {.kind = TipKind::lowPowerMode}; }

  // Shown as a list item, so without a final full stop.
  [[nodiscard]] std::string text() const;
  // The name of the icon beside it.
  [[nodiscard]] std::string_view symbol() const;

  friend bool operator==(const Tip&, const Tip&) = default;
};

}  // namespace pellwin
