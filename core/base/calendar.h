// Local calendar days and clock times for one time zone, without reading a clock or the
// system's zone files: the caller hands in the zone as a table of UTC offsets (the app builds
// it from the system time zone, tests build fixed ones). Times are seconds since 1970 (UTC).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

// A local date and wall-clock time. `weekday` 0 is Sunday.
struct LocalTime {
  int year = 1970;
  int month = 1;  // 1 to 12
  int day = 1;    // 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;
  int weekday = 4;
  friend bool operator==(const LocalTime&, const LocalTime&) = default;
};

class Calendar {
 public:
  // From `from` on (seconds since 1970), local time is UTC plus `seconds`.
  struct Offset {
    double from = 0;
    int seconds = 0;
    friend bool operator==(const Offset&, const Offset&) = default;
  };

  // UTC.
  Calendar() = default;
  // A zone whose offset never changes.
  [[nodiscard]] static Calendar fixed(int utcOffsetSeconds);
  // `offsets` in any order; the earliest also applies before its `from`. Empty means UTC.
  explicit Calendar(std::vector<Offset> offsets);

  [[nodiscard]] int utcOffset(double time) const;
  [[nodiscard]] LocalTime local(double time) const;
  // The local date as "%04d-%02d-%02d"; text order is date order.
  [[nodiscard]] std::string dayKey(double time) const;
  // The key of the local date before the one `time` falls on (whatever length that day had).
  [[nodiscard]] std::string dayBeforeKey(double time) const;
  // The first moment of the local date `key` names: its midnight, or, when a change of offset
  // skips midnight, the moment the clocks jump into the day. Absent when `key` is no date.
  [[nodiscard]] std::optional<double> startOfDay(std::string_view key) const;

  [[nodiscard]] const std::vector<Offset>& offsets() const { return offsets_; }
  friend bool operator==(const Calendar&, const Calendar&) = default;

 private:
  std::vector<Offset> offsets_;  // sorted by `from`
};

// "EEE d MMM" in the en_US_POSIX locale, such as "Mon 3 Jun".
[[nodiscard]] std::string dateLabel(const LocalTime& time);
// "h:mm a" in the en_US_POSIX locale, such as "9:05 AM".
[[nodiscard]] std::string clockLabel(const LocalTime& time);

// The date `days` after the one `key` names ("%04d-%02d-%02d"); negative goes back. Pure date
// arithmetic, the same in every zone. Absent when `key` is no date.
[[nodiscard]] std::optional<std::string> addingDays(std::string_view key, int days);

}  // namespace pellwin
