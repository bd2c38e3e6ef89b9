// A program a test starts and owns: killed with SIGKILL and reaped when the owner goes away, so
// a failed assertion never leaves it running. Test support only.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace pellwin::testing {

class ChildProcess {
 public:
  // Starts `arguments` (the program is searched in $PATH like a shell does); its standard
  // output goes to /dev/null. `pid()` is -1 when it could not be started.
  explicit ChildProcess(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    if (argv.size() < 2 ||
        ::posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
      pid_ = -1;
    }
    ::posix_spawn_file_actions_destroy(&actions);
  }
  ~ChildProcess() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  pid_t pid_ = -1;
};

}  // namespace pellwin::testing
