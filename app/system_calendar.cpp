#include "app/system_calendar.h"

#include <chrono>
#include <ctime>
#include <vector>

namespace pellwin {

namespace {

constexpr std::time_t kSpan = 400L * 86400;
// Zones change their offset at most a few times a year and never twice within six hours, so a
// scan at this step finds every change, which bisection then pins to the second.
constexpr std::time_t kStep = 6L * 3600;

long offsetAt(std::time_t time) {
  std::tm local{};
  if (::localtime_r(&time, &local) == nullptr) return 0;
  return local.tm_gmtoff;
}

}  // namespace

Calendar systemCalendar(double now) {
  const auto centre = static_cast<std::time_t>(now);
  std::time_t at = centre - kSpan;
  long offset = offsetAt(at);
  std::vector<Calendar::Offset> offsets = {
      {.from = static_cast<double>(at), .seconds = static_cast<int>(offset)}};
  for (std::time_t next = at + kStep; next <= centre + kSpan; at = next, next += kStep) {
    const long nextOffset = offsetAt(next);
    if (nextOffset == offset) continue;
    // The offset at `low` is the old one, at `high` the new one.
    std::time_t low = at;
    std::time_t high = next;
    while (high - low > 1) {
      const std::time_t middle = low + (high - low) / 2;
      (offsetAt(middle) == offset ? low : high) = middle;
    }
    offsets.push_back({.from = static_cast<double>(high), .seconds = static_cast<int>(nextOffset)});
    offset = nextOffset;
  }
  return Calendar(std::move(offsets));
}

double systemNow() {
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double>(since).count();
}

}  // namespace pellwin
