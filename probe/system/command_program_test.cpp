#include "probe/system/command_program.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

TEST(ProgramWords, OffersTheFirstArgumentAndTheFirstWordOfARewrittenTitle) {
  const struct {
    const char* why;
    std::vector<std::string> arguments;
    std::vector<std::string_view> words;
  } cases[] = {
      {"plain", {"/usr/bin/tool", "-x"}, {"/usr/bin/tool"}},
      {"a title with blanks", {"/opt/b/chrome --type=renderer --x"},
       {"/opt/b/chrome --type=renderer --x", "/opt/b/chrome"}},
      {"a login shell", {"-bash"}, {"bash"}},
      {"a zombie", {}, {}},
      {"empty first argument", {"", "x"}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(programWords(c.arguments), c.words);
  }
}

TEST(CommandProgram, ResolvesTheProgramAsItsExeLinkWouldShowIt) {
  ScratchFolder root;
  const fs::path real = root.write("opt/browser/browser-main-process", "\x7f" "ELF");
  fs::permissions(real, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
  fs::create_directories(root / "bin");
  fs::create_symlink(real, root / "bin/browser");
  const fs::path plain = root.write("bin/bash", "#!");
  fs::permissions(plain, fs::perms::owner_all);
  root.write("bin/notes.txt", "not a program");
  const std::vector<fs::path> searchPath = {root / "empty", root / "bin"};
  const std::string realPath = fs::canonical(real).string();
  const std::string link = (root / "bin/browser").string();

  const struct {
    const char* why;
    std::vector<std::string> arguments;
    std::string_view comm;
    CommandProgram expected;
  } cases[] = {
      {"an absolute link", {link, "-P"}, "Isolated Web Co",
       {.path = realPath, .name = "browser-main-process"}},
      {"a bare name on the search path", {"browser"}, "browser",
       {.path = realPath, .name = "browser-main-process"}},
      {"a rewritten title", {link + " --type=renderer --lang=en"}, "browser",
       {.path = realPath, .name = "browser-main-process"}},
      {"a login shell", {"-bash"}, "bash",
       {.path = fs::canonical(plain).string(), .name = "bash"}},
      {"not executable", {(root / "bin/notes.txt").string()}, "notes", {.name = "notes.txt"}},
      {"a path in another mount namespace", {"/app/lib/firefox/firefox", "-contentproc"},
       "Web Content", {.name = "firefox"}},
      {"a relative path needs the working directory", {"./build/tool"}, "tool", {.name = "tool"}},
      {"a title without a path", {"sshd: user@pts/0"}, "sshd", {.name = "sshd"}},
      {"a name the kernel cut", {"gnome-session-binary-x"}, "gnome-session-b",
       {.name = "gnome-session-binary-x"}},
      {"a comm that is no cut", {"shortcut"}, "short", {.name = "short"}},
      {"a zombie's empty command line", {}, "zombie", {.name = "zombie"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(commandProgram(c.arguments, c.comm, searchPath), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
