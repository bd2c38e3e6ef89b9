#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "app/models/quick_clean.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

// The live process list of this machine, read through the real reader: a tool run by an
// interpreter shows up under the name its user typed.
TEST(QuickClean, ARunningScriptIsSeenByItsOwnNameInTheLiveProcessList) {
  testing::ScratchFolder scratch;
  const auto script = scratch.write("bin/pip3", "sleep 30\n");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::setpgid(0, 0);  // its own group, so the sleep it starts ends with it
    ::execl("/bin/sh", "sh", script.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  // The child shows the script only once it has exec'd: look again for a while.
  RunningSet running;
  for (int tries = 0; tries < 200 && !running.names.contains("pip3"); ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    running = readRunningSet(Environment{.procRoot = "/proc"}, 0);
  }
  // The shell would wait out its sleep before acting on a polite signal.
  ::kill(-child, SIGKILL);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_TRUE(running.names.contains("pip3"));
  EXPECT_TRUE(running.names.contains("pellwin_app_live_tests"));
}

}  // namespace
}  // namespace pellwin
