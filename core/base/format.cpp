#include "core/base/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace pellwin::Format {

// std::to_chars never consults the locale, unlike printf, and rounds the exact binary value
// the same way printf does.
std::string fixed(double value, int decimals) {
  if (!std::isfinite(value)) return std::isnan(value) ? "nan" : (value < 0 ? "-inf" : "inf");
  std::array<char, 400> buffer{};
  auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                    std::chars_format::fixed, decimals);
  if (error != std::errc{}) return "?";
  return std::string(buffer.data(), end);
}

// Thousands grouped with ",", whatever the locale, like the sizes beside it.
std::string count(std::uint64_t n) {
  std::string digits = std::to_string(n);
  for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3) {
    digits.insert(static_cast<std::size_t>(at), 1, ',');
  }
  return digits;
}

namespace {
constexpr double kMiB = 1048576.0;
constexpr double kGiB = 1073741824.0;

std::string counted(long long n, const char* one, const char* many) {
  return n == 1 ? std::string("1 ") + one : std::to_string(n) + " " + many;
}
}  // namespace

std::string memory(std::uint64_t bytes) {
  const double mb = static_cast<double>(bytes) / kMiB;
  if (std::round(mb) >= 1024) return fixed(static_cast<double>(bytes) / kGiB, 1) + " GB";
  return fixed(mb, 0) + " MB";
}

std::string ram(std::uint64_t bytes) { return fixed(static_cast<double>(bytes) / kGiB, 0) + " GB"; }

std::string disk(std::uint64_t bytes) {
  const double gb = static_cast<double>(bytes) / 1e9;
  if (std::round(gb * 10) >= 1000) return fixed(gb, 0) + " GB";
  if (std::round(gb * 1000) >= 1000) return fixed(gb, 1) + " GB";
  return fixed(gb * 1000, 0) + " MB";
}

std::string rate(double bytesPerSecond) {
  if (std::round(bytesPerSecond / 1000) >= 1000) return fixed(bytesPerSecond / 1e6, 0) + " MB/s";
  return fixed(bytesPerSecond / 1000, 0) + " KB/s";
}

std::string percent(double fraction) { return fixed(fraction * 100, 0) + "%"; }

std::string duration(double seconds) {
  // Clamped so the integer conversions below stay defined for any input.
  seconds = std::isfinite(seconds) ? std::clamp(seconds, -1e15, 1e15) : 0;
  const auto days = static_cast<long long>(std::trunc(seconds / 86400));
  if (days >= 1) return counted(days, "day", "days");
  const auto hours = static_cast<long long>(std::trunc(seconds / 3600));
  if (hours >= 1) return counted(hours, "hour", "hours");
  const auto minutes = std::max(static_cast<long long>(std::trunc(seconds / 60)), 1LL);
  return std::to_string(minutes) + " min";
}

std::string elapsed(double seconds) {
  const long long s = std::isfinite(seconds) && seconds > 0
                          ? static_cast<long long>(std::trunc(std::min(seconds, 1e15)))
                          : 0;
  if (s <= 59) return std::to_string(s) + " s";
  if (s <= 3599) return std::to_string(s / 60) + " min";
  const long long h = s / 3600;
  const long long m = (s / 60) % 60;
  if (m == 0) return std::to_string(h) + " h";
  return std::to_string(h) + " h " + std::to_string(m) + " min";
}

}  // namespace pellwin::Format
