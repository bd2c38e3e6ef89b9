#include "core/history/minute_row.h"

namespace pellwin {

std::string_view rawValue(AppRank rank) {
  switch (rank) {
    case AppRank::cpu: return "cpu";
    case AppRank::memory: return "memory";
  }
  return "";
}

std::optional<AppRank> appRankFromOrdinal(long long ordinal) {
  if (ordinal == 0) return AppRank::cpu;
  if (ordinal == 1) return AppRank::memory;
  return std::nullopt;
}

}  // namespace pellwin
