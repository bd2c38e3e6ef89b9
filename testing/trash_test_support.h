// Test support only: a scratch home with its own XDG data home, trash-cli run against it, and a
// scratch tmpfs mount for other-volume cases. Production code never includes it.
#pragma once

#include <sys/mount.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "testing/scratch_folder.h"

namespace pellwin::testing {

// A home folder under a scratch folder, with the XDG data home inside it. Paths are canonical.
struct ScratchHome {
  ScratchFolder scratch;
  std::string home = std::filesystem::canonical(scratch.path()).string() + "/home";
  std::string dataHome = home + "/.local/share";

  ScratchHome() { std::filesystem::create_directories(home); }

  [[nodiscard]] std::string trash() const { return dataHome + "/Trash"; }

  // Runs a command with only this home's environment (HOME, XDG_DATA_HOME, PATH) from
  // `workingFolder`, feeding `input` on standard input; returns what it printed.
  [[nodiscard]] std::string run(const std::string& command, const std::string& input = "",
                                const std::string& workingFolder = "") const {
    const std::string inputFile = scratch.path().string() + "/stdin.txt";
    scratch.write("stdin.txt", input);
    const std::string line = "cd '" + (workingFolder.empty() ? home : workingFolder) +
                             "' && env -i HOME='" + home + "' XDG_DATA_HOME='" + dataHome +
                             "' LC_ALL=C.UTF-8 PATH=/usr/bin:/bin " + command + " < '" + inputFile +
                             "' 2>&1";
    std::string output;
    if (FILE* pipe = ::popen(line.c_str(), "r")) {
      std::array<char, 4096> buffer{};
      std::size_t got = 0;
      while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        output.append(buffer.data(), got);
      ::pclose(pipe);
    }
    return output;
  }
};

// A tmpfs mounted on a folder for the life of the object. `mounted()` is false when this
// process may not mount (not root, or no mount namespace rights): tests then skip.
class ScratchMount {
 public:
  explicit ScratchMount(const std::string& folder) : folder_(folder) {
    std::filesystem::create_directories(folder_);
    mounted_ = ::geteuid() == 0 &&
               ::mount("tovrin-test", folder_.c_str(), "tmpfs", 0, "size=16m,mode=0755") == 0;
  }
  ~ScratchMount() {
    if (mounted_) ::umount2(folder_.c_str(), MNT_DETACH);
  }
  ScratchMount(const ScratchMount&) = delete;
  ScratchMount& operator=(const ScratchMount&) = delete;

  [[nodiscard]] bool mounted() const { return mounted_; }

 private:
  std::string folder_;
  bool mounted_ = false;
};

}  // namespace pellwin::testing
