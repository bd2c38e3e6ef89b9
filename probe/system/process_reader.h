// Every readable process of the machine with its cumulative usage counters, read from the
// proc root. Thread: the sampler thread only (the identity map and buffers are not locked).
// Units are those of ProcessSample: footprint and disk in bytes, CPU time in nanoseconds,
// wake-ups as a count of context switches, start time in seconds since 1970.
//
// Facts that do not change while a process runs (name, executable, command line, working
// directory, start time, cgroup and app identity) are read once per process life, keyed by
// pid and start time. Each read() reads stat of every process, and status and io of those
// that ran since their last reading or were last read `usageRefresh` seconds ago. Two
// exceptions: the cgroup of a process younger than `youngAge` seconds is read again each time
// (launchers move a new process into its app's scope just after starting it), and a process
// without an app is asked about again when the app lookup learned something new or its
// parent's app changed.
//
// Work is counted once and not lost to short lives: a process's counters include the CPU time
// and disk bytes of the children it reaped, less what those children had shown while they
// lived (see WorkLedger); and what a process did before its first reading, which gives it no
// rate, goes to its nearest ancestor that was in the previous reading. Init's reaped work is
// left out: it adopts every orphan, whose work is no doing of its own.
#pragma once

#include <dirent.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/monitor/readings.h"
#include "probe/system/bundle_identifier_cache.h"
#include "probe/system/process_files.h"
#include "probe/system/work_ledger.h"

namespace pellwin {

class ProcessReader {
 public:
  // `ticksPerSecond` is the kernel's USER_HZ; 0 asks the running kernel. `apps`, when given,
  // names each process's app and must outlive the reader. `searchPath` is where a bare program
  // name on the command line of a process whose exe link is not ours to read is looked up.
  explicit ProcessReader(std::filesystem::path procRoot, std::uint64_t ticksPerSecond = 0,
                         BundleIdentifierCache* apps = nullptr,
                         std::vector<std::filesystem::path> searchPath = {});

  // The processes in the order the proc root lists them. A process that cannot be read, or
  // ends while being read, is left out without a word. Never fails as a whole: an unreadable
  // proc root gives an empty list. `now` is the time of the reading, seconds since 1970.
  [[nodiscard]] std::vector<ProcessSample> read(double now);

  // How many processes the reader remembers: the live set of the last read().
  [[nodiscard]] std::size_t trackedCount() const { return tracked_.size(); }

  static constexpr double youngAge = 10.0;
  // status and io of a process that has not run since are read again after this long.
  static constexpr double usageRefresh = 10.0;

 private:
  // What the reader keeps about one live process between readings.
  struct Tracked {
    std::uint64_t startTicks = 0;     // with the pid, tells this process from a later one
    std::string comm{};               // a change means the process ran exec
    std::string executable{};         // the exe link as read, to tell a real exec from a rename
    ProcessSample facts{};            // the identity fields; the counters are filled per reading
    ProcessFacts appFacts{};          // what the app lookup was told
    std::uint64_t appGeneration = 0;  // the lookup's generation when it was asked
    std::int32_t parent = 0;
    std::uint64_t listedRound = 0;
    std::uint64_t seenRound = 0;
    bool inPreviousReading = false;  // seen by the reading before this one
    std::size_t sampleIndex = 0;     // its place in this reading's samples
    bool credited = false;           // its work was handed on to its parent already
    WorkLedger work{};
    // What status and io said when last read, and stat every time.
    std::uint64_t readBytes = 0, writeBytes = 0;
    // Wake-ups: the sum over all threads, refreshed only when the process used CPU, and the
    // count built from its growth (threads that end take their switches with them).
    std::uint64_t rawSwitches = 0;
    std::uint64_t switches = 0;
    std::uint64_t ownTicks = 0;    // utime + stime
    std::uint64_t childTicks = 0;  // cutime + cstime
    std::uint64_t footprintBytes = 0;
    // When status and io were last read, and what stat said then (see needsUsage).
    double usageReadAt = 0;
    std::uint64_t usageOwnTicks = 0;
    std::uint64_t usageChildTicks = 0;
    std::uint64_t minorFaults = 0;
    std::uint64_t majorFaults = 0;
    std::uint64_t threads = 0;
    bool counted = false;  // the counters above hold a first reading
  };

  // status and io of one process.
  struct Usage {
    ProcessStatus status{};
    ProcessIO io{};
  };

  void listProcesses(DIR* dir);
  [[nodiscard]] bool needsUsage(const ProcessStat& stat, const Tracked& tracked) const;
  [[nodiscard]] std::optional<Usage> readUsage(int procFd, std::int32_t pid);
  // `known` is what the listing found under the pid, if anything.
  [[nodiscard]] Tracked& trackedFor(int procFd, std::int32_t pid, const ProcessStat& stat,
                                    Tracked* known);
  void makeIdentity(int procFd, std::int32_t pid, const ProcessStat& stat, std::string executable,
                    Tracked& tracked);
  void identifyApp(int procFd, std::int32_t pid, Tracked& tracked);
  void recheckApp(int procFd, std::int32_t pid, std::uint64_t generation, Tracked& tracked);
  [[nodiscard]] std::uint64_t threadSwitches(int procFd, std::int32_t pid);
  void updateCounters(int procFd, std::int32_t pid, const ProcessStat& stat,
                      const std::optional<Usage>& usage, Tracked& tracked);
  void readUsageCounters(int procFd, std::int32_t pid, const ProcessStat& stat,
                         const Usage& usage, Tracked& tracked);
  // The live parent of `child` (not a later process that took the parent's pid), if tracked.
  [[nodiscard]] Tracked* parentOf(const Tracked& child);
  [[nodiscard]] const std::optional<AppIdentity>& parentApp(const Tracked& child);
  // A process that went away: its parent reaps its work (see WorkLedger).
  void creditParent(Tracked& gone);
  // Newborns' work from before their first reading, to their nearest ancestor that was in
  // the previous reading; the ancestors' samples are brought up to date.
  void adoptNewborns(std::vector<ProcessSample>& samples);
  void fillCounters(const Tracked& tracked, ProcessSample& sample) const;
  void prune();
  [[nodiscard]] std::optional<double> bootTime();
  [[nodiscard]] const char* pidPath(std::int32_t pid, const char* file);

  std::filesystem::path procRoot_;
  std::uint64_t ticksPerSecond_;
  BundleIdentifierCache* apps_;
  std::vector<std::filesystem::path> searchPath_;
  double now_ = 0;  // the time of the reading under way
  std::optional<double> bootTime_;
  std::unordered_map<std::int32_t, Tracked> tracked_;
  std::uint64_t round_ = 0;
  // This reading's listing with what was known under each pid, reused. Elements of tracked_
  // stay where they are until prune() erases them at the end of the reading.
  std::vector<std::pair<std::int32_t, Tracked*>> pids_;
  // This reading's processes read for the first time, and the uptime at the previous reading:
  // a newborn started after it.
  std::vector<Tracked*> firstRead_;
  std::optional<std::uint64_t> previousUptime_;
  // Reused for every process; each file has its own so a parsed view stays valid.
  std::string statBuffer_, statusBuffer_, ioBuffer_, otherBuffer_;
  char pathBuffer_[64] = {};  // "PID/file", relative to the proc root
};

}  // namespace pellwin
