// The figure a resource's tile shows for one snapshot: a short value ("13.4 GB", "62%") and
// the words under it ("of 16 GB", "busy across 8 cores"). A resource the snapshot could not
// measure shows a dash and no words.
#pragma once

#include <string>

#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

struct ResourceFigure {
  std::string value{};
  std::string detail{};
  friend bool operator==(const ResourceFigure&, const ResourceFigure&) = default;
};

[[nodiscard]] ResourceFigure resourceFigure(Resource resource, const Snapshot& snapshot);

}  // namespace pellwin
