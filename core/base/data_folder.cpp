#include "core/base/data_folder.h"

namespace pellwin {

namespace DataFolder {

std::string applicationSupport(std::string_view home, std::optional<std::string_view> xdgDataHome) {
  // The XDG base directory rules say a relative value is invalid and must be ignored.
  if (xdgDataHome && !xdgDataHome->empty() && xdgDataHome->front() == '/') {
    return std::string(*xdgDataHome);
  }
  return std::string(home) + "/.local/share";
}

std::string path(std::string_view applicationSupport) {
  return std::string(applicationSupport) + "/" + std::string(name);
}

std::string formerPath(std::string_view applicationSupport) {
  return std::string(applicationSupport) + "/" + std::string(formerName);
}

std::vector<std::string> protectedPaths(std::string_view home,
                                        std::string_view applicationSupport) {
  const std::string macSupport = std::string(home) + "/Library/Application Support";
  return {path(macSupport), formerPath(macSupport), path(applicationSupport),
          formerPath(applicationSupport)};
}

DataFolderMove move(bool currentExists, bool formerExists) {
  if (!formerExists) return DataFolderMove::nothingToMove;
  return currentExists ? DataFolderMove::keepBoth : DataFolderMove::move;
}

}  // namespace DataFolder
}  // namespace pellwin
