// One finished cleanup as the cleanup log keeps it: what was cleaned and how much space it
// gave back. Times are seconds since 1970; byte counts as stored (at most the signed maximum).
#pragma once

#include <cstdint>
#include <string>

namespace pellwin {

struct CleanRow {
  std::int64_t id = 0;
  double time = 0;
  std::string rules{};  // names what was cleaned
  std::int64_t bytesDeleted = 0;
  std::int64_t bytesTrashed = 0;
  std::int64_t items = 0;
  friend bool operator==(const CleanRow&, const CleanRow&) = default;
};

}  // namespace pellwin
