#include "core/monitor/readings.h"

#include <algorithm>

namespace pellwin {

double MemoryReading::usedFraction() const {
  if (totalBytes == 0) return 0;
  return std::min(1.0, static_cast<double>(usedBytes) / static_cast<double>(totalBytes));
}

double DiskReading::freeFraction() const {
  if (totalBytes == 0) return 1.0;
  return static_cast<double>(freeBytes) / static_cast<double>(totalBytes);
}

}  // namespace pellwin
