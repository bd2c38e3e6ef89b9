#include "app/system_roots.h"

#include <algorithm>
#include <string_view>

namespace pellwin {

namespace {

void addAbsolute(std::vector<std::filesystem::path>& list, std::string_view folder) {
  while (folder.size() > 1 && folder.ends_with('/')) folder.remove_suffix(1);
  if (!folder.starts_with('/')) return;
  const std::filesystem::path path(folder);
  if (std::find(list.begin(), list.end(), path) == list.end()) list.push_back(path);
}

void addEach(std::vector<std::filesystem::path>& list, std::string_view colonSeparated) {
  while (!colonSeparated.empty()) {
    const auto colon = colonSeparated.find(':');
    addAbsolute(list, colonSeparated.substr(0, colon));
    if (colon == std::string_view::npos) break;
    colonSeparated.remove_prefix(colon + 1);
  }
}

}  // namespace

SystemReader::Roots systemReaderRoots(const Environment& environment) {
  SystemReader::Roots roots{
      .proc = environment.procRoot,
      .sys = environment.sysRoot,
      .volume = "/",
      .locale = environment.messagesLocale,
  };
  addAbsolute(roots.dataDirs, applicationSupport(environment));
  const std::string dataDirs = environment.xdgDataDirs.value_or("");
  addEach(roots.dataDirs, dataDirs.empty() ? "/usr/local/share:/usr/share" : dataDirs);
  // Desktop sessions add these through profile scripts that a terminal or a service may not
  // have run.
  addAbsolute(roots.dataDirs, applicationSupport(environment) + "/flatpak/exports/share");
  addAbsolute(roots.dataDirs, "/var/lib/flatpak/exports/share");
  addAbsolute(roots.dataDirs, "/var/lib/snapd/desktop");

  addEach(roots.searchPath, environment.searchPath);
  addEach(roots.searchPath,
          "/usr/local/bin:/usr/bin:/bin:/usr/local/sbin:/usr/sbin:/sbin:"
          "/usr/games:/snap/bin");
  return roots;
}

}  // namespace pellwin
