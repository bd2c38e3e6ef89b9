#include "app/removal_guards.h"

#include "core/data_folder.h"
#include "core/user_folders.h"
#include "probe/proc_file.h"

namespace pellwin {

RemovalGuards removalGuards(const Environment& environment) {
  const auto& variable = environment.xdgConfigHome;
  const std::string configHome = variable && variable->starts_with('/')
                                     ? *variable
                                     : environment.home + "/.config";
  const auto text = readTextFile(configHome + "/user-dirs.dirs");
  return RemovalGuards{
      .kept = DataFolder::protectedPaths(environment.home, applicationSupport(environment)),
      .mainFolders = text ? UserFolders::parse(*text, environment.home) : std::vector<std::string>{},
  };
}

}  // namespace pellwin
