#include "core/base/user_folders.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(UserFolders, ReadsTheFoldersTheDesktopWrote) {
  const std::string text =
      "# This file is written by xdg-user-dirs-update\n"
      "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
      "  XDG_DOWNLOAD_DIR=\"$HOME/Downloads/\"\r\n"
      "XDG_TEMPLATES_DIR=\"$HOME/\"\n"                       // turned off: home itself
      "XDG_PUBLICSHARE_DIR=\"$HOME\"\n"                      // turned off too
      "XDG_DOCUMENTS_DIR=\"/data/ann/Dokumente\"\n"          // absolute
      "XDG_MUSIC_DIR=\"$HOME/Media/Meine \\\"Musik\\\"\"\n"  // nested, with escaped quotes
      "XDG_PICTURES_DIR=$HOME/Bilder\n"                      // unquoted: not the file's format
      "XDG_VIDEOS_DIR=\"$HOME/$OTHER/Videos\"\n"             // would need a shell
      "XDG_EXTRA_DIR=\"Relative/Folder\"\n"
      "XDG_HOMEWORK_DIR=\"$HOMEWORK/x\"\n"
      "PATH=\"/usr/bin\"\n"
      "XDG_BROKEN_DIR=\"$HOME/unclosed\n";
  const std::vector<std::string> expected = {"/home/ann/Schreibtisch", "/home/ann/Downloads",
                                             "/data/ann/Dokumente",
                                             "/home/ann/Media/Meine \"Musik\""};
  EXPECT_EQ(UserFolders::parse(text, "/home/ann"), expected);
  EXPECT_TRUE(UserFolders::parse("", "/home/ann").empty());
}

}  // namespace
}  // namespace pellwin
