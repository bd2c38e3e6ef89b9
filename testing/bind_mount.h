// Test support only: a folder bind-mounted onto another for the life of the object, the way a
// user's `mount --bind ~/Documents/photos ~/.cache/bound` makes the same files appear twice on
// one device. The mount is made in a mount namespace of this test process alone, so nothing
// leaks to the machine even when a test dies. Production code never includes it.
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace pellwin::testing {

class BindMount {
 public:
  // Binds `source` onto `target` (made when missing). When this process may not mount (not
  // root, no namespace rights), `mounted()` is false and `failure()` says why: tests skip.
  // On destruction every mount below `cleanupRoot` is detached, wherever the code under test
  // moved it, so that removing the scratch folder afterwards never reaches through one.
  BindMount(const std::string& source, const std::string& target, std::string cleanupRoot)
      : cleanupRoot_(std::move(cleanupRoot)) {
    std::filesystem::create_directories(target);
    if (::geteuid() != 0) {
      failure_ = "bind mounts need root";
      return;
    }
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
      failure_ = std::string("no private mount namespace: ") + std::strerror(errno);
      return;
    }
    if (::mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) != 0) {
      failure_ = std::string("mount --bind failed: ") + std::strerror(errno);
      return;
    }
    mounted_ = true;
  }
  ~BindMount() {
    if (!mounted_) return;
    std::vector<std::string> points = mountsBelow(cleanupRoot_);
    // Deepest first, so a mount on top of another comes off before it.
    std::ranges::sort(
        points, [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
    for (const std::string& point : points) ::umount2(point.c_str(), MNT_DETACH);
  }
  BindMount(const BindMount&) = delete;
  BindMount& operator=(const BindMount&) = delete;

  [[nodiscard]] bool mounted() const { return mounted_; }
  [[nodiscard]] const std::string& failure() const { return failure_; }

  // Mount points of this process at or below `root`, from the kernel's mount table.
  [[nodiscard]] static std::vector<std::string> mountsBelow(const std::string& root) {
    std::vector<std::string> found;
    std::ifstream table("/proc/self/mountinfo");
    std::string line;
    while (std::getline(table, line)) {
      std::istringstream fields(line);
      std::string id, parent, device, within, point;
      fields >> id >> parent >> device >> within >> point;
      const std::string decoded = unescape(point);
      if (decoded == root || decoded.starts_with(root + "/")) found.push_back(decoded);
    }
    return found;
  }

 private:
  // The table writes a space, tab, newline and backslash as a three-digit octal escape.
  static std::string unescape(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto octal = [&](std::size_t at) { return text[at] >= '0' && text[at] <= '7'; };
      if (text[i] == '\\' && i + 3 < text.size() && octal(i + 1) && octal(i + 2) && octal(i + 3)) {
        out.push_back(static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 +
                                        (text[i + 3] - '0')));
        i += 3;
        continue;
      }
      out.push_back(text[i]);
    }
    return out;
  }

  std::string cleanupRoot_;
  std::string failure_;
  bool mounted_ = false;
};

}  // namespace pellwin::testing
