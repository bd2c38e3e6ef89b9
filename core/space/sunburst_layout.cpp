#include "core/space/sunburst_layout.h"

#include <algorithm>

#include "core/base/checked_math.h"

namespace pellwin {

std::string SunburstArc::id() const { return std::string(rawValue(kind)) + ":" + path; }

namespace SunburstLayout {
namespace {

struct Placement {
  const SizeNode* node;
  int ring;
  double start;
  double end;
};

// Lays one folder's children on `ring` between `start` and `end`; folders drawn there are
// returned so their own children go on the next ring.
void place(const Placement& at, double minDegrees, std::vector<SunburstArc>& out,
           std::vector<Placement>& next) {
  const SizeNode& node = *at.node;
  const double span = at.end - at.start;
  std::size_t lockedCount = 0;
  std::uint64_t total = node.restBytes;
  for (const SizeNode& child : node.children) {
    if (child.isLocked) {
      ++lockedCount;
    } else {
      total = checkedAdd(total, child.bytes, "ring total");
    }
  }
  // Locked arcs together never take more than half of the span.
  const double lockedSweep =
      lockedCount == 0 ? 0
                       : std::min(span / (2.0 * static_cast<double>(lockedCount)), lockedDegrees);
  const double shared = span - lockedSweep * static_cast<double>(lockedCount);
  auto sweepOf = [&](std::uint64_t bytes) {
    return total == 0 ? 0.0 : shared * static_cast<double>(bytes) / static_cast<double>(total);
  };

  double angle = at.start;
  std::int64_t thinCount = 0;
  std::uint64_t thinBytes = 0;
  double thinSweep = 0;
  for (const SizeNode& child : node.children) {
    if (child.isLocked) continue;
    const double sweep = sweepOf(child.bytes);
    if (sweep < minDegrees) {
      ++thinCount;
      thinBytes = checkedAdd(thinBytes, child.bytes, "ring total");
      thinSweep += sweep;
      continue;
    }
    out.push_back({.path = child.path,
                   .ring = at.ring,
                   .startDegrees = angle,
                   .endDegrees = angle + sweep,
                   .kind = SunburstKind::node,
                   .name = child.name,
                   .bytes = child.bytes,
                   .category = child.category,
                   .isLocked = false});
    if (child.isDirectory) next.push_back({&child, at.ring + 1, angle, angle + sweep});
    angle += sweep;
  }
  if (thinCount > 0) {
    out.push_back({.path = node.path,
                   .ring = at.ring,
                   .startDegrees = angle,
                   .endDegrees = angle + thinSweep,
                   .kind = SunburstKind::other,
                   .name = thinCount == 1 ? "Other" : std::to_string(thinCount) + " small items",
                   .bytes = thinBytes,
                   .category = StorageCategory::other,
                   .isLocked = false});
    angle += thinSweep;
  }
  if (node.restBytes > 0) {
    const double sweep = sweepOf(node.restBytes);
    out.push_back({.path = node.path,
                   .ring = at.ring,
                   .startDegrees = angle,
                   .endDegrees = angle + sweep,
                   .kind = SunburstKind::rest,
                   .name = std::to_string(node.restCount) + " more, each smaller",
                   .bytes = node.restBytes,
                   .category = node.category,
                   .isLocked = false});
    angle += sweep;
  }
  for (const SizeNode& child : node.children) {
    if (!child.isLocked) continue;
    out.push_back({.path = child.path,
                   .ring = at.ring,
                   .startDegrees = angle,
                   .endDegrees = angle + lockedSweep,
                   .kind = SunburstKind::node,
                   .name = child.name,
                   .bytes = 0,
                   .category = child.category,
                   .isLocked = true});
    angle += lockedSweep;
  }
}

}  // namespace

std::vector<SunburstArc> arcs(const SizeNode& focus, int maxRings, double minDegrees) {
  std::vector<SunburstArc> out;
  std::vector<Placement> pending{{&focus, 1, 0.0, 360.0}};
  while (!pending.empty()) {
    const Placement at = pending.back();
    pending.pop_back();
    if (at.ring > maxRings) continue;
    place(at, minDegrees, out, pending);
  }
  std::stable_sort(out.begin(), out.end(), [](const SunburstArc& a, const SunburstArc& b) {
    if (a.ring != b.ring) return a.ring < b.ring;
    return a.startDegrees < b.startDegrees;
  });
  return out;
}

}  // namespace SunburstLayout
}  // namespace pellwin
