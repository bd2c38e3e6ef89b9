#include "app/removal_guards.h"

#include "core/base/data_folder.h"
#include "core/base/user_folders.h"
#include "probe/proc_file.h"

namespace pellwin {

RemovalGuards removalGuards(const Environment& environment) {
  const auto text = readTextFile(configHome(environment) + "/user-dirs.dirs");
  return RemovalGuards{
      .kept = DataFolder::protectedPaths(environment.home, applicationSupport(environment)),
      .mainFolders =
          text ? UserFolders::parse(*text, environment.home) : std::vector<std::string>{},
  };
}

}  // namespace pellwin
