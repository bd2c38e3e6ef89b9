#include "core/space/rebuild_plan.h"

#include "core/base/checked_math.h"
#include "core/space/size_node.h"

namespace pellwin {

std::string RebuildItem::displayPath(std::string_view folder) const {
  if (path == folder || !pathIsWithin(path, folder)) return path;
  std::string_view rest = std::string_view(path).substr(folder.size());
  if (rest.starts_with('/')) rest.remove_prefix(1);
  return std::string(rest);
}

std::uint64_t RebuildPlan::totalBytes() const {
  std::uint64_t total = 0;
  for (const auto& item : items) total = checkedAdd(total, item.bytes, "rebuild plan total");
  for (const auto& model : models) total = checkedAdd(total, model.bytes, "rebuild plan total");
  return total;
}

}  // namespace pellwin
