#include "probe/files/app_data_folder.h"

#include <sys/stat.h>

#include <cstdio>

namespace pellwin::AppDataFolder {

std::expected<DataFolderMove, SystemError> migrate(const std::string& applicationSupport) {
  const std::string current = DataFolder::path(applicationSupport);
  const std::string former = DataFolder::formerPath(applicationSupport);

  struct stat info {};
  const bool formerExists = ::stat(former.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
  const bool currentExists = ::lstat(current.c_str(), &info) == 0;

  const DataFolderMove decision = DataFolder::move(currentExists, formerExists);
  if (decision != DataFolderMove::move) return decision;
  if (::rename(former.c_str(), current.c_str()) != 0) {
    SystemError failure = SystemError::fromErrno("rename", former);
    failure.target = current;
    return std::unexpected(std::move(failure));
  }
  return decision;
}

}  // namespace pellwin::AppDataFolder
