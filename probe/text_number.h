// Numbers from kernel text: the whole field must be digits (no sign, no spaces, no suffix),
// and a value that does not fit gives nothing rather than a wrapped or clamped one.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace pellwin {

[[nodiscard]] inline std::optional<std::uint64_t> parseUnsigned(std::string_view field) {
  std::uint64_t value = 0;
  const char* end = field.data() + field.size();
  const auto [stop, error] = std::from_chars(field.data(), end, value);
  if (field.empty() || error != std::errc() || stop != end) return std::nullopt;
  return value;
}

// Accepts a leading "-", as in a signed sysfs attribute ("-1", a power in µW of either sign).
[[nodiscard]] inline std::optional<std::int64_t> parseSigned(std::string_view field) {
  std::int64_t value = 0;
  const char* end = field.data() + field.size();
  const auto [stop, error] = std::from_chars(field.data(), end, value);
  if (field.empty() || error != std::errc() || stop != end) return std::nullopt;
  return value;
}

}  // namespace pellwin
