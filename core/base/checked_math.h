// The one home of integer arithmetic that must not wrap, in three flavours chosen by what a
// wrap would mean: `checked*` gives nothing (bad input: a counter the kernel cannot have
// given), `saturating*` stops at the type's ends (totals that drifted or a display that only
// needs "a lot"), and `checkedAdd` with a name is a fatal error (a broken invariant).
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>

namespace pellwin {

// Writes "Fatal error: " + message to standard error and aborts.
[[noreturn]] void fatalError(std::string_view message);

template <std::integral T>
[[nodiscard]] constexpr std::optional<T> checkedSum(T a, std::type_identity_t<T> b) {
  T sum{};
  if (__builtin_add_overflow(a, b, &sum)) return std::nullopt;
  return sum;
}

template <std::integral T>
[[nodiscard]] constexpr std::optional<T> checkedProduct(T a, std::type_identity_t<T> b) {
  T product{};
  if (__builtin_mul_overflow(a, b, &product)) return std::nullopt;
  return product;
}

template <std::unsigned_integral T>
[[nodiscard]] constexpr T saturatingAdd(T a, std::type_identity_t<T> b) {
  return checkedSum(a, b).value_or(std::numeric_limits<T>::max());
}

template <std::unsigned_integral T>
[[nodiscard]] constexpr T saturatingProduct(T a, std::type_identity_t<T> b) {
  return checkedProduct(a, b).value_or(std::numeric_limits<T>::max());
}

// a − b floored at 0: a counter that went backwards reads as no change, never as a huge number.
template <std::unsigned_integral T>
[[nodiscard]] constexpr T saturatingSubtract(T a, std::type_identity_t<T> b) {
  return a > b ? a - b : T{0};
}

// a + b, or a fatal error naming `what` when the sum does not fit in 64 bits.
[[nodiscard]] std::uint64_t checkedAdd(std::uint64_t a, std::uint64_t b, std::string_view what);

}  // namespace pellwin
