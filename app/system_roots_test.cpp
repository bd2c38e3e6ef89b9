#include "app/system_roots.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

using Paths = std::vector<std::filesystem::path>;

TEST(SystemReaderRoots, ListsDataFoldersInPrecedenceOrder) {
  Environment environment{.home = "/home/ada",
                          .procRoot = "/p",
                          .sysRoot = "/s",
                          .searchPath = "/home/ada/bin:relative:/usr/bin/",
                          .messagesLocale = "de_DE.UTF-8"};
  auto roots = systemReaderRoots(environment);
  EXPECT_EQ(roots.proc, "/p");
  EXPECT_EQ(roots.sys, "/s");
  EXPECT_EQ(roots.locale, "de_DE.UTF-8");
  EXPECT_EQ(roots.dataDirs, (Paths{"/home/ada/.local/share", "/usr/local/share", "/usr/share",
                                   "/home/ada/.local/share/flatpak/exports/share",
                                   "/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"}));
  ASSERT_GE(roots.searchPath.size(), 3u);
  EXPECT_EQ(roots.searchPath[0], "/home/ada/bin");
  EXPECT_EQ(roots.searchPath[1], "/usr/bin");  // no relative entry, no duplicate
  EXPECT_EQ(std::count(roots.searchPath.begin(), roots.searchPath.end(), "/usr/bin"), 1);

  environment.xdgDataHome = "/data";
  environment.xdgDataDirs = "/var/lib/flatpak/exports/share:/opt/share:";
  roots = systemReaderRoots(environment);
  EXPECT_EQ(roots.dataDirs, (Paths{"/data", "/var/lib/flatpak/exports/share", "/opt/share",
                                   "/data/flatpak/exports/share", "/var/lib/snapd/desktop"}));
}

}  // namespace
}  // namespace pellwin
