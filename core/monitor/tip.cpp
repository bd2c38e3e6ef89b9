#include "core/monitor/tip.h"

#include "core/base/format.h"

namespace pellwin {

std::string Tip::text() const {
  switch (kind) {
    case TipKind::longUptime:
      return "On for " + std::to_string(days) +
             " days. A restart clears memory that spilled to disk";
    case TipKind::idleSwap:
      return Format::memory(bytes) +
             " of memory that spilled to disk is idle. Harmless now, and a restart clears it";
    case TipKind::lowPowerMode: return "Low Power Mode is on, which caps speed";
  }
  return "";
}

std::string_view Tip::symbol() const {
  switch (kind) {
    case TipKind::longUptime: return "arrow.clockwise";
    case TipKind::idleSwap: return "memorychip";
    case TipKind::lowPowerMode: return "battery.25";
  }
  return "";
}

}  // namespace pellwin
