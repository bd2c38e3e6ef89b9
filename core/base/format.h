// Every number that reaches a user-visible text goes through these, so figures read the same
// everywhere. Memory in binary units, disk sizes and rates in decimal units. The decimal point
// is always ".", whatever locale the process has set.
#pragma once

#include <cstdint>
#include <string>

namespace pellwin::Format {

[[nodiscard]] std::string memory(std::uint64_t bytes);  // "954 MB", "1.0 GB"
[[nodiscard]] std::string ram(std::uint64_t bytes);     // installed memory, "16 GB"
[[nodiscard]] std::string disk(std::uint64_t bytes);    // "999 MB", "1.0 GB", "250 GB"
[[nodiscard]] std::string rate(double bytesPerSecond);  // "12 KB/s", "3 MB/s"
[[nodiscard]] std::string percent(double fraction);     // "42%"
[[nodiscard]] std::string duration(double seconds);     // "1 day", "3 hours", "1 min"
[[nodiscard]] std::string elapsed(double seconds);      // "59 s", "12 min", "1 h 1 min"
[[nodiscard]] std::string count(std::uint64_t n);       // "999", "121,012"

// A C-style "%.Nf" of `value` with "." as the decimal point in every locale.
[[nodiscard]] std::string fixed(double value, int decimals);

}  // namespace pellwin::Format
