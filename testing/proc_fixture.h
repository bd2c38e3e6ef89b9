// Builds fake /proc process folders inside a scratch folder, with the fields the readers use
// at hand-chosen values. Test support only: production code never includes it.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "testing/scratch_folder.h"

namespace pellwin::testing {

struct FakeProcess {
  int pid = 100;
  std::string comm = "worker";
  int parent = 1;
  long terminal = 0;
  char state = 'S';
  std::uint64_t flags = 0x00400100;
  std::uint64_t minorFaults = 120;
  std::uint64_t majorFaults = 3;
  std::uint64_t userTicks = 0;
  std::uint64_t systemTicks = 0;
  std::uint64_t childUserTicks = 0;  // cutime: of the children it reaped
  std::uint64_t childSystemTicks = 0;
  std::uint64_t startTicks = 5000;
  std::uint64_t rssAnonKB = 0;
  std::uint64_t vmSwapKB = 0;
  std::uint64_t threads = 1;
  std::uint64_t voluntary = 0;
  std::uint64_t involuntary = 0;
  std::optional<std::uint64_t> readBytes = 0;  // absent: no io file
  std::uint64_t writeBytes = 0;
  std::string exe = "/usr/bin/worker";  // empty: no exe link
  std::vector<std::string> arguments = {"worker"};
  std::string cwd = "/home/user";  // empty: no cwd link
  std::string cgroup = "/";        // the unified hierarchy's path
};

inline std::string statLine(const FakeProcess& p) {
  return std::to_string(p.pid) + " (" + p.comm + ") " + p.state + " " + std::to_string(p.parent) +
         " " + std::to_string(p.pid) + " " + std::to_string(p.pid) + " " +
         std::to_string(p.terminal) + " -1 " + std::to_string(p.flags) + " " +
         std::to_string(p.minorFaults) + " 0 " + std::to_string(p.majorFaults) + " 0 " +
         std::to_string(p.userTicks) + " " + std::to_string(p.systemTicks) + " " + std::to_string(p.childUserTicks) + " " +
         std::to_string(p.childSystemTicks) + " 20 0 " +
         std::to_string(p.threads) + " 0 " + std::to_string(p.startTicks) +
         " 1000000 250 18446744073709551615 1 1 0 0 0 0 0 0 0 0 0 0 0 0 17 1 0 0 0 0 0\n";
}

inline std::string statusText(const FakeProcess& p) {
  return "Name:\t" + p.comm + "\nUmask:\t0022\nState:\tS (sleeping)\nPid:\t" +
         std::to_string(p.pid) + "\nPPid:\t" + std::to_string(p.parent) +
         "\nVmRSS:\t   9999 kB\nRssAnon:\t" + std::to_string(p.rssAnonKB) +
         " kB\nRssFile:\t    777 kB\nVmSwap:\t" + std::to_string(p.vmSwapKB) + " kB\nThreads:\t" +
         std::to_string(p.threads) + "\nvoluntary_ctxt_switches:\t" + std::to_string(p.voluntary) +
         "\nnonvoluntary_ctxt_switches:\t" + std::to_string(p.involuntary) + "\n";
}

inline std::string ioText(std::uint64_t readBytes, std::uint64_t writeBytes) {
  return "rchar: 99999\nwchar: 88888\nsyscr: 10\nsyscw: 20\nread_bytes: " +
         std::to_string(readBytes) + "\nwrite_bytes: " + std::to_string(writeBytes) +
         "\ncancelled_write_bytes: 0\n";
}

// Writes proc/<pid>/{stat,status,io,cmdline,exe,cwd} below `root`, replacing what was there.
inline void writeProcess(const ScratchFolder& root, const FakeProcess& p) {
  namespace fs = std::filesystem;
  const std::string dir = "proc/" + std::to_string(p.pid) + "/";
  root.write(dir + "stat", statLine(p));
  root.write(dir + "status", statusText(p));
  std::error_code ignored;
  fs::remove(root / (dir + "io"), ignored);
  if (p.readBytes) root.write(dir + "io", ioText(*p.readBytes, p.writeBytes));
  std::string cmdline;
  for (const auto& argument : p.arguments) cmdline += argument + '\0';
  root.write(dir + "cmdline", cmdline);
  root.write(dir + "cgroup", "0::" + p.cgroup + "\n");
  for (const auto& [name, target] : {std::pair{"exe", p.exe}, std::pair{"cwd", p.cwd}}) {
    fs::remove(root / (dir + name), ignored);
    if (!target.empty()) fs::create_symlink(target, root / (dir + name));
  }
}

// A scratch /proc with the system-wide stat the process reader needs (boot at 1700000000).
struct ProcFolder {
  ScratchFolder root;
  ProcFolder() { root.write("proc/stat", "cpu  1 2 3 4\ncpu0 1 2 3 4\nbtime 1700000000\n"); }
  std::filesystem::path proc() const { return root / "proc"; }
  void write(const FakeProcess& p) const { writeProcess(root, p); }
  void remove(int pid) const {
    std::filesystem::remove_all(root / ("proc/" + std::to_string(pid)));
  }
};

}  // namespace pellwin::testing
