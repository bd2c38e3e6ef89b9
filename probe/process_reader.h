// Every readable process of the machine with its cumulative usage counters, read from the
// proc root. Thread: the sampler thread only (the identity map and buffers are not locked).
// Units are those of ProcessSample: footprint and disk in bytes, CPU time in nanoseconds,
// wake-ups as a count of context switches, start time in seconds since 1970.
//
// Facts that do not change while a process runs (name, executable, command line, working
// directory, start time, cgroup and app identity) are read once per process life, keyed by
// pid and start time; each read() reads only stat, status and io of every process. Two
// exceptions: the cgroup of a process younger than `youngAge` seconds is read again each time
// (launchers move a new process into its app's scope just after starting it), and a process
// without an app is asked about again when the app lookup learned something new.
#pragma once

#include <dirent.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/readings.h"
#include "probe/bundle_identifier_cache.h"
#include "probe/process_files.h"

namespace pellwin {

class ProcessReader {
 public:
  // `ticksPerSecond` is the kernel's USER_HZ; 0 asks the running kernel. `apps`, when given,
  // names each process's app and must outlive the reader.
  explicit ProcessReader(std::filesystem::path procRoot, std::uint64_t ticksPerSecond = 0,
                         BundleIdentifierCache* apps = nullptr);

  // The processes in the order the proc root lists them. A process that cannot be read, or
  // ends while being read, is left out without a word. Never fails as a whole: an unreadable
  // proc root gives an empty list. `now` is the time of the reading, seconds since 1970.
  [[nodiscard]] std::vector<ProcessSample> read(double now);

  // How many processes the reader remembers: the live set of the last read().
  [[nodiscard]] std::size_t trackedCount() const { return tracked_.size(); }

  static constexpr double youngAge = 10.0;

 private:
  // What the reader keeps about one live process between readings.
  struct Tracked {
    std::uint64_t startTicks = 0;  // with the pid, tells this process from a later one
    std::string comm{};              // a change means the process ran exec
    std::string executable{};        // the exe link as read, to tell a real exec from a rename
    ProcessSample facts{};           // the identity fields; the counters are filled per reading
    ProcessFacts appFacts{};         // what the app lookup was told
    std::uint64_t appGeneration = 0; // the lookup's generation when it was asked
    std::int32_t parent = 0;
    std::uint64_t listedRound = 0;
    std::uint64_t seenRound = 0;
    bool credited = false;  // its totals went to its parent already
    // Disk: the kernel adds a reaped child's totals to its parent's io, so the totals of
    // children that went away are kept here and taken off the parent's counters.
    std::uint64_t rawRead = 0, rawWrite = 0;
    std::uint64_t reapedRead = 0, reapedWrite = 0;
    std::uint64_t reportedRead = 0, reportedWrite = 0;
    // Wake-ups: the sum over all threads, refreshed only when the process used CPU.
    std::uint64_t cpuTicks = 0;
    std::uint64_t rawSwitches = 0;
    std::uint64_t reportedSwitches = 0;
    bool counted = false;  // the counters above hold a first reading
  };

  struct Files {
    ProcessStat stat{};
    ProcessStatus status{};
    ProcessIO io{};
  };

  void listProcesses(DIR* dir);
  [[nodiscard]] std::optional<Files> readFiles(int procFd, std::int32_t pid);
  [[nodiscard]] Tracked& trackedFor(int procFd, std::int32_t pid, const ProcessStat& stat);
  void makeIdentity(int procFd, std::int32_t pid, const ProcessStat& stat, std::string executable,
                    Tracked& tracked);
  void identifyApp(int procFd, std::int32_t pid, Tracked& tracked);
  void recheckApp(int procFd, std::int32_t pid, std::uint64_t generation, Tracked& tracked);
  [[nodiscard]] std::uint64_t threadSwitches(int procFd, std::int32_t pid);
  void updateCounters(int procFd, std::int32_t pid, const Files& files, Tracked& tracked);
  // A process that went away: its parent's io now holds its totals (see Tracked).
  void creditParent(Tracked& gone);
  void prune();
  [[nodiscard]] std::optional<double> bootTime();
  [[nodiscard]] const char* pidPath(std::int32_t pid, const char* file);

  std::filesystem::path procRoot_;
  std::uint64_t ticksPerSecond_;
  BundleIdentifierCache* apps_;
  double now_ = 0;  // the time of the reading under way
  std::optional<double> bootTime_;
  std::unordered_map<std::int32_t, Tracked> tracked_;
  std::uint64_t round_ = 0;
  std::vector<std::int32_t> pids_;  // this reading's listing, reused
  // Reused for every process; each file has its own so a parsed view stays valid.
  std::string statBuffer_, statusBuffer_, ioBuffer_, otherBuffer_;
  char pathBuffer_[64] = {};  // "PID/file", relative to the proc root
};

}  // namespace pellwin
