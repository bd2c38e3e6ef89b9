// Lays a size tree out as rings around a centre: the focused folder in the middle, its
// children on the first ring, theirs on the second, each arc's angle in proportion to its
// bytes. Pure arithmetic; drawing the arcs is the screen's business.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/enum_text.h"
#include "core/space/size_node.h"
#include "core/space/storage_category.h"

namespace pellwin {

enum class SunburstKind {
  node,   // a kept folder or file
  rest,   // a folder's remainder of items under 1 MB
  other,  // children too thin to draw, merged
};

[[nodiscard]] constexpr EnumTable<SunburstKind::other> textTable(SunburstKind) {
  return {{
      {SunburstKind::node, "node"},
      {SunburstKind::rest, "rest"},
      {SunburstKind::other, "other"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(SunburstKind kind) { return enumText(kind); }
[[nodiscard]] constexpr std::optional<SunburstKind> sunburstKindFromRawValue(std::string_view raw) {
  return parseEnum<SunburstKind>(raw);
}

struct SunburstArc {
  std::string path{};  // the node's path; for `rest` and `other`, the folder they belong to
  int ring = 1;        // 1 for the ring next to the centre
  double startDegrees = 0;
  double endDegrees = 0;
  SunburstKind kind = SunburstKind::node;
  std::string name{};
  std::uint64_t bytes = 0;
  StorageCategory category = StorageCategory::other;
  bool isLocked = false;
  friend bool operator==(const SunburstArc&, const SunburstArc&) = default;

  [[nodiscard]] double sweepDegrees() const { return endDegrees - startDegrees; }
  // Unique within one layout: the kind's raw value, ":" and the path.
  [[nodiscard]] std::string id() const;
};

namespace SunburstLayout {

// The fixed angle of a locked folder (0 bytes, unreadable), so it stays visible and clickable.
inline constexpr double lockedDegrees = 2.0;

// What the screen shows for the two kinds of arc that are not one item.
inline constexpr std::string_view restDescription =
    "Files and folders under 1 MB each, too small to draw on their own";
inline constexpr std::string_view otherDescription = "Items too thin to draw at this size";

// The focus's children on ring 1 over the full circle, each folder's children on the next ring
// within its own arc, down to `maxRings`. On each ring a folder's arcs run: its children
// largest first, then one `other` arc for the children thinner than `minDegrees`, then its
// remainder, then its locked children. The list is sorted by ring, then by start angle.
[[nodiscard]] std::vector<SunburstArc> arcs(const SizeNode& focus, int maxRings, double minDegrees);

}  // namespace SunburstLayout
}  // namespace pellwin
