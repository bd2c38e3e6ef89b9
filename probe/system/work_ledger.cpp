#include "probe/system/work_ledger.h"

#include <algorithm>

#include "core/base/checked_math.h"

namespace pellwin {

namespace {

// Each field of `a` and `b` through `f`.
template <typename F>
Work fieldwise(const Work& a, const Work& b, F f) {
  return Work{.cpuTicks = f(a.cpuTicks, b.cpuTicks),
              .readBytes = f(a.readBytes, b.readBytes),
              .writeBytes = f(a.writeBytes, b.writeBytes),
              .switches = f(a.switches, b.switches)};
}

Work plus(const Work& a, const Work& b) {
  return fieldwise(a, b, [](std::uint64_t x, std::uint64_t y) { return saturatingAdd(x, y); });
}

Work minus(const Work& a, const Work& b) {
  return fieldwise(a, b, [](std::uint64_t x, std::uint64_t y) { return saturatingSubtract(x, y); });
}

}  // namespace

void WorkLedger::record(const Work& totals) {
  totals_ = totals;
  takenOffAtRecord_ = takenOff_;
  update();
}

void WorkLedger::takeOff(const Work& counted) {
  Work reaped = counted;
  reaped.switches = 0;  // never in the parent's totals
  takenOff_ = plus(takenOff_, reaped);
  update();
}

void WorkLedger::adopt(const Work& work) {
  adopted_ = plus(adopted_, work);
  update();
}

Work WorkLedger::handedOn() const {
  Work handed = plus(totals_, minus(takenOff_, takenOffAtRecord_));
  handed.switches = 0;
  return handed;
}

void WorkLedger::update() {
  const Work counted = minus(plus(totals_, adopted_), takenOff_);
  reported_ = fieldwise(reported_, counted,
                        [](std::uint64_t x, std::uint64_t y) { return std::max(x, y); });
}

}  // namespace pellwin
