// A stand-in for a multi-process browser, for live tests of app identity: a main process and
// helpers that rename themselves and rewrite their command lines as one line of blank-separated
// words without NULs, as Firefox's content processes and Chrome's helpers do. Test support
// only. Run it with a long second argument (the room its titles are written into); it runs
// until killed, and its helpers die with it.
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace {

// Writes `title` over the argument area. A NUL after it and a last byte that is not NUL is
// what setproctitle leaves: the kernel then shows the title alone (fs/proc/base.c).
void setTitle(int argc, char** argv, const std::string& title) {
  char* const start = argv[0];
  char* const end = argv[argc - 1] + std::strlen(argv[argc - 1]);
  const auto room = static_cast<std::size_t>(end - start);
  const std::size_t length = std::min(title.size(), room - 1);
  std::memcpy(start, title.data(), length);
  start[length] = '\0';
  std::fill(start + length + 1, end + 1, ' ');
}

[[noreturn]] void idle() {
  for (;;) ::pause();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const std::string self = argv[0];
  struct Helper {
    const char* comm;
    std::string title;
  };
  const Helper helpers[] = {
      {"Isolated Web Co", self + " -contentproc -isForBrowser 3 tab"},
      {"Web Content", self + " -contentproc -isForBrowser 4 tab"},
      {"forkserver", "forkserver"},
  };
  for (const Helper& helper : helpers) {
    if (::fork() != 0) continue;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    setTitle(argc, argv, helper.title);
    ::prctl(PR_SET_NAME, helper.comm);
    idle();
  }
  setTitle(argc, argv, self + " -P default");
  idle();
}
