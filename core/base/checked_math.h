// Size arithmetic that must never wrap. An overflow here means a broken invariant, not bad
// input, so it is a fatal error: the message goes to standard error and the process aborts.
#pragma once

#include <cstdint>
#include <string_view>

namespace pellwin {

// Writes "Fatal error: " + message to standard error and aborts.
[[noreturn]] void fatalError(std::string_view message);

// a + b, or a fatal error naming `what` when the sum does not fit in 64 bits.
[[nodiscard]] std::uint64_t checkedAdd(std::uint64_t a, std::uint64_t b, std::string_view what);

// a − b floored at 0: totals that drifted must shrink to nothing, never wrap to a huge number.
[[nodiscard]] constexpr std::uint64_t saturatingSubtract(std::uint64_t a, std::uint64_t b) {
  return a > b ? a - b : 0;
}

}  // namespace pellwin
