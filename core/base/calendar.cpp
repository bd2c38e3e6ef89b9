#include "core/base/calendar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace pellwin {

namespace {

constexpr long long kSecondsPerDay = 86400;

struct CivilDate {
  int year;
  int month;
  int day;
};

// Days since 1970-01-01 to the proleptic Gregorian date (H. Hinnant's civil_from_days), exact
// for every day a double of seconds can name.
CivilDate civilFromDays(long long days) {
  days += 719468;
  const long long era = (days >= 0 ? days : days - 146096) / 146097;
  const long long dayOfEra = days - era * 146097;
  const long long yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const long long shiftedMonth = (5 * dayOfYear + 2) / 153;
  const long long day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
  const long long month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
  const long long year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  return {static_cast<int>(year), static_cast<int>(month), static_cast<int>(day)};
}

// The inverse of civilFromDays (H. Hinnant's days_from_civil).
long long daysFromCivil(const CivilDate& date) {
  const long long year = date.year - (date.month <= 2 ? 1 : 0);
  const long long era = (year >= 0 ? year : year - 399) / 400;
  const long long yearOfEra = year - era * 400;
  const long long shiftedMonth = date.month > 2 ? date.month - 3 : date.month + 9;
  const long long dayOfYear = (153 * shiftedMonth + 2) / 5 + date.day - 1;
  const long long dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

bool parseField(std::string_view text, int& value) {
  if (text.empty()) return false;
  value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  return true;
}

// Days since 1970 of a "%04d-%02d-%02d" key; a day that its month does not have is refused.
std::optional<long long> daysOfKey(std::string_view key) {
  if (key.size() != 10 || key[4] != '-' || key[7] != '-') return std::nullopt;
  CivilDate date{};
  if (!parseField(key.substr(0, 4), date.year) || !parseField(key.substr(5, 2), date.month) ||
      !parseField(key.substr(8, 2), date.day) || date.month < 1 || date.month > 12 ||
      date.day < 1) {
    return std::nullopt;
  }
  const long long days = daysFromCivil(date);
  const CivilDate back = civilFromDays(days);
  if (back.month != date.month || back.day != date.day) return std::nullopt;
  return days;
}

long long floorDiv(long long a, long long b) {
  return a / b - ((a % b != 0 && (a < 0) != (b < 0)) ? 1 : 0);
}

std::string keyOf(const CivilDate& date) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", date.year, date.month, date.day);
  return text.data();
}

}  // namespace

Calendar Calendar::fixed(int utcOffsetSeconds) {
  return Calendar({Offset{.from = 0, .seconds = utcOffsetSeconds}});
}

Calendar::Calendar(std::vector<Offset> offsets) : offsets_(std::move(offsets)) {
  std::stable_sort(offsets_.begin(), offsets_.end(),
                   [](const Offset& a, const Offset& b) { return a.from < b.from; });
}

int Calendar::utcOffset(double time) const {
  if (offsets_.empty()) return 0;
  auto after = std::upper_bound(offsets_.begin(), offsets_.end(), time,
                                [](double t, const Offset& o) { return t < o.from; });
  if (after == offsets_.begin()) return offsets_.front().seconds;
  return std::prev(after)->seconds;
}

LocalTime Calendar::local(double time) const {
  const long long seconds = static_cast<long long>(std::floor(time)) + utcOffset(time);
  const long long days = floorDiv(seconds, kSecondsPerDay);
  const long long ofDay = seconds - days * kSecondsPerDay;
  const CivilDate date = civilFromDays(days);
  const long long weekday = (days % 7 + 11) % 7;  // 1970-01-01 was a Thursday
  return LocalTime{.year = date.year,
                   .month = date.month,
                   .day = date.day,
                   .hour = static_cast<int>(ofDay / 3600),
                   .minute = static_cast<int>(ofDay % 3600 / 60),
                   .second = static_cast<int>(ofDay % 60),
                   .weekday = static_cast<int>(weekday)};
}

std::string Calendar::dayKey(double time) const {
  const LocalTime t = local(time);
  return keyOf({t.year, t.month, t.day});
}

std::optional<double> Calendar::startOfDay(std::string_view key) const {
  const std::optional<long long> days = daysOfKey(key);
  if (!days) return std::nullopt;
  const double midnight = static_cast<double>(*days * kSecondsPerDay);  // as if local were UTC
  // Any zone's offset lies within a day of UTC, so the offsets in force within a day either
  // side hold every reading of this local midnight.
  std::optional<double> first;
  for (double probe : {midnight - kSecondsPerDay, midnight, midnight + kSecondsPerDay}) {
    const double candidate = midnight - utcOffset(probe);
    if (utcOffset(candidate) == utcOffset(probe) && (!first || candidate < *first)) {
      first = candidate;
    }
  }
  if (first) return first;
  // Midnight was skipped: the day begins at the change of offset that skipped it.
  for (const Offset& offset : offsets_) {
    if (offset.from > midnight - kSecondsPerDay && dayKey(offset.from) == key) return offset.from;
  }
  return midnight;
}

std::string dateLabel(const LocalTime& time) {
  static constexpr std::array<const char*, 7> weekdays = {"Sun", "Mon", "Tue", "Wed",
                                                          "Thu", "Fri", "Sat"};
  static constexpr std::array<const char*, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  return std::string(weekdays[static_cast<std::size_t>(time.weekday)]) + " " +
         std::to_string(time.day) + " " + months[static_cast<std::size_t>(time.month - 1)];
}

std::string clockLabel(const LocalTime& time) {
  const int hour12 = time.hour % 12 == 0 ? 12 : time.hour % 12;
  std::string label = std::to_string(hour12);
  label.append(time.minute < 10 ? ":0" : ":").append(std::to_string(time.minute));
  return label.append(time.hour < 12 ? " AM" : " PM");
}

std::optional<std::string> addingDays(std::string_view key, int days) {
  const std::optional<long long> start = daysOfKey(key);
  if (!start) return std::nullopt;
  return keyOf(civilFromDays(*start + days));
}

std::string Calendar::dayBeforeKey(double time) const {
  const long long seconds = static_cast<long long>(std::floor(time)) + utcOffset(time);
  return keyOf(civilFromDays(floorDiv(seconds, kSecondsPerDay) - 1));
}

}  // namespace pellwin
