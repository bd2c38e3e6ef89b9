#include "probe/system/process_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>

#include "core/base/checked_math.h"
#include "core/base/path_text.h"
#include "core/monitor/macos_app_paths.h"
#include "probe/file_descriptor.h"
#include "probe/key_value_text.h"
#include "probe/proc_file.h"
#include "probe/system/cgroup_unit.h"
#include "probe/system/command_program.h"
#include "probe/system/cpu_reader.h"
#include "probe/text_number.h"

namespace pellwin {

namespace {

struct DirectoryCloser {
  void operator()(DIR* dir) const { ::closedir(dir); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

std::optional<std::int32_t> pidFromName(const char* name) {
  const auto value = parseUnsigned(name);
  if (!value || *value < 1 || *value > INT32_MAX) return std::nullopt;
  return static_cast<std::int32_t>(*value);
}

// ticks × 10⁹ ÷ ticksPerSecond without overflowing on the way; 0 when the result cannot fit.
std::uint64_t ticksToNanos(std::uint64_t ticks, std::uint64_t ticksPerSecond) {
  constexpr std::uint64_t nanosPerSecond = 1'000'000'000;
  const auto whole = checkedProduct(ticks / ticksPerSecond, nanosPerSecond);
  const std::uint64_t part = (ticks % ticksPerSecond) * nanosPerSecond / ticksPerSecond;
  const auto sum = whole ? checkedSum(*whole, part) : std::nullopt;
  return sum.value_or(0);
}

std::uint64_t clockTicksPerSecond() {
  const long ticks = ::sysconf(_SC_CLK_TCK);
  return ticks > 0 ? static_cast<std::uint64_t>(ticks) : 100;
}

// An executable replaced on disk while it runs (an upgrade) reads "/usr/bin/x (deleted)".
std::string withoutDeletedMark(std::string path) {
  constexpr std::string_view mark = " (deleted)";
  if (path.ends_with(mark)) path.resize(path.size() - mark.size());
  return path;
}

bool isMemoryFile(std::string_view path) { return path.starts_with("/memfd:"); }

// How far up a parent chain the reader looks; real trees are a dozen deep.
constexpr int maxAncestors = 64;

// Init waits for every orphan of the machine; what they did is none of its own work.
constexpr std::int32_t initPid = 1;

bool sameApp(const std::optional<AppIdentity>& a, const std::optional<AppIdentity>& b) {
  return a.has_value() == b.has_value() && (!a || a->id == b->id);
}

}  // namespace

ProcessReader::ProcessReader(std::filesystem::path procRoot, std::uint64_t ticksPerSecond,
                             BundleIdentifierCache* apps,
                             std::vector<std::filesystem::path> searchPath)
    : procRoot_(std::move(procRoot)),
      ticksPerSecond_(ticksPerSecond > 0 ? ticksPerSecond : clockTicksPerSecond()),
      apps_(apps),
      searchPath_(std::move(searchPath)) {}

const char* ProcessReader::pidPath(std::int32_t pid, const char* file) {
  char* const end = pathBuffer_ + sizeof pathBuffer_;
  char* at = std::to_chars(pathBuffer_, end, pid).ptr;
  *at++ = '/';
  const std::size_t length =
      std::min<std::size_t>(std::strlen(file), static_cast<std::size_t>(end - at) - 1);
  std::memcpy(at, file, length);
  at[length] = '\0';
  return pathBuffer_;
}

std::optional<double> ProcessReader::bootTime() {
  if (!bootTime_) {
    if (const auto text = readTextFile(procRoot_ / "stat")) bootTime_ = parseBootTime(*text);
  }
  return bootTime_;
}

std::vector<ProcessSample> ProcessReader::read(double now) {
  ++round_;
  now_ = now;
  const std::uint64_t generation = apps_ ? apps_->generation(now) : 0;
  std::vector<ProcessSample> samples;
  std::optional<std::uint64_t> uptime;
  firstRead_.clear();
  const Directory dir(::opendir(procRoot_.c_str()));
  if (dir) {
    const int procFd = ::dirfd(dir.get());
    // Before the listing, so that a process missing from it started after this uptime.
    if (const auto text = readFileAt(procFd, "uptime", otherBuffer_, ReadExtent::oneRecord)) {
      uptime = parseUptimeTicks(*text, ticksPerSecond_);
    }
    listProcesses(dir.get());
    samples.reserve(pids_.size());
    for (const auto& [pid, known] : pids_) {
      const auto statText =
          readFileAt(procFd, pidPath(pid, "stat"), statBuffer_, ReadExtent::oneRecord);
      if (!statText) continue;
      const auto stat = parseProcessStat(*statText);
      if (!stat) continue;
      Tracked& tracked = trackedFor(procFd, pid, *stat, known);
      std::optional<Usage> usage;
      if (needsUsage(*stat, tracked)) {
        usage = readUsage(procFd, pid);
        if (!usage) continue;  // gone between stat and status
      }
      tracked.inPreviousReading = tracked.seenRound != 0 && tracked.seenRound + 1 == round_;
      tracked.seenRound = round_;
      tracked.parent = stat->parent;
      if (!tracked.counted) firstRead_.push_back(&tracked);
      if (apps_ && !tracked.facts.kernelThread) recheckApp(procFd, pid, generation, tracked);
      updateCounters(procFd, pid, *stat, usage, tracked);

      tracked.sampleIndex = samples.size();
      ProcessSample& sample = samples.emplace_back(tracked.facts);
      fillCounters(tracked, sample);
      sample.parentPid = stat->parent;
    }
    adoptNewborns(samples);
  }
  previousUptime_ = uptime;
  prune();
  return samples;
}

void ProcessReader::fillCounters(const Tracked& tracked, ProcessSample& sample) const {
  const Work& work = tracked.work.reported();
  sample.footprintBytes = tracked.footprintBytes;
  sample.cpuTimeNanos = ticksToNanos(work.cpuTicks, ticksPerSecond_);
  sample.diskReadBytes = work.readBytes;
  sample.diskWriteBytes = work.writeBytes;
  sample.wakeups = work.switches;
}

void ProcessReader::listProcesses(DIR* dir) {
  pids_.clear();
  while (const dirent* entry = ::readdir(dir)) {
    const auto pid = pidFromName(entry->d_name);
    if (!pid) continue;
    Tracked* known = nullptr;
    if (const auto found = tracked_.find(*pid); found != tracked_.end()) {
      known = &found->second;
      known->listedRound = round_;
    }
    pids_.emplace_back(*pid, known);
  }
  // Children that went away before this reading are credited before any parent is read, so
  // the totals the kernel just added to a parent are taken off in this very reading.
  for (auto& [pid, tracked] : tracked_) {
    if (tracked.listedRound != round_) creditParent(tracked);
  }
}

bool ProcessReader::needsUsage(const ProcessStat& stat, const Tracked& tracked) const {
  // Memory, disk bytes and context switches change only while a process runs (swapping a
  // page out moves it from RssAnon to VmSwap, leaving the footprint as it was), or, for disk
  // bytes, when it reaps a child. A process whose CPU time, reaped CPU time, page faults and
  // thread count stand still, and that is not running now, keeps its last figures; stat's CPU
  // time moves in steps of one tick, so a process that runs only briefly is read again at
  // least every `usageRefresh` seconds.
  const auto ownTicks = checkedSum(stat.userTicks, stat.systemTicks).value_or(0);
  const auto childTicks = checkedSum(stat.childUserTicks, stat.childSystemTicks).value_or(0);
  return !tracked.counted || stat.state == 'R' || ownTicks != tracked.usageOwnTicks ||
         childTicks != tracked.usageChildTicks ||
         stat.minorFaults != tracked.minorFaults || stat.majorFaults != tracked.majorFaults ||
         stat.threads != tracked.threads || now_ < tracked.usageReadAt ||
         now_ - tracked.usageReadAt >= usageRefresh;
}

std::optional<ProcessReader::Usage> ProcessReader::readUsage(int procFd, std::int32_t pid) {
  const auto statusText =
      readFileAt(procFd, pidPath(pid, "status"), statusBuffer_, ReadExtent::oneRecord);
  if (!statusText) return std::nullopt;
  ProcessIO io;
  if (const auto ioText =
          readFileAt(procFd, pidPath(pid, "io"), ioBuffer_, ReadExtent::oneRecord)) {
    io = parseProcessIO(*ioText);
  } else if (ioText.error().isGone() && ::faccessat(procFd, pidPath(pid, "stat"), F_OK, 0) != 0) {
    // Gone between stat and io. (A kernel without I/O accounting has no io file at all; its
    // processes stay, with 0 bytes.)
    return std::nullopt;
  }
  return Usage{.status = parseProcessStatus(*statusText), .io = io};
}

ProcessReader::Tracked& ProcessReader::trackedFor(int procFd, std::int32_t pid,
                                                  const ProcessStat& stat, Tracked* known) {
  const bool kernelThread = (stat.flags & kernelThreadFlag) != 0;
  if (known && known->startTicks == stat.startTicks) {
    Tracked& tracked = *known;
    if (tracked.comm == stat.comm) return tracked;
    // A new comm: either exec (a new program in the same process) or a rename through
    // prctl, as kernel workers do with every job. Only a new executable is a new identity.
    if (kernelThread) {
      tracked.comm = stat.comm;
      tracked.facts.name = tracked.comm;
      return tracked;
    }
    auto executable = readLinkAt(procFd, pidPath(pid, "exe")).value_or("");
    if (!executable.empty() && executable == tracked.executable) {
      tracked.comm = stat.comm;
      return tracked;
    }
    makeIdentity(procFd, pid, stat, std::move(executable), tracked);
    return tracked;
  }
  if (known) {
    // The pid now belongs to a new process: the old one went away like any other.
    creditParent(*known);
    *known = Tracked{.listedRound = round_};
  }
  Tracked& tracked = tracked_[pid];
  std::string executable;
  if (!kernelThread) executable = readLinkAt(procFd, pidPath(pid, "exe")).value_or("");
  makeIdentity(procFd, pid, stat, std::move(executable), tracked);
  return tracked;
}

void ProcessReader::makeIdentity(int procFd, std::int32_t pid, const ProcessStat& stat,
                                 std::string executable, Tracked& tracked) {
  tracked.startTicks = stat.startTicks;
  tracked.comm = stat.comm;
  tracked.executable = std::move(executable);
  tracked.parent = stat.parent;

  ProcessSample facts;
  facts.pid = pid;
  facts.kernelThread = (stat.flags & kernelThreadFlag) != 0;
  facts.path = withoutDeletedMark(tracked.executable);
  // A program run from memory (memfd_create, then execveat) has no file: its exe link and
  // its comm both name the memfd, so only its first argument says what it is.
  const bool fromMemory = isMemoryFile(facts.path);
  if (fromMemory) facts.path.clear();
  facts.name = facts.path.empty() ? tracked.comm : std::string(lastPathComponent(facts.path));
  if (const auto boot = bootTime()) {
    facts.startTime =
        *boot + static_cast<double>(stat.startTicks) / static_cast<double>(ticksPerSecond_);
  }
  // Apps are known by their bundle, command-line programs by their command line.
  if (!facts.kernelThread && !MacosAppPaths::isInBundle(facts.path)) {
    if (const auto text = readFileAt(procFd, pidPath(pid, "cmdline"), otherBuffer_)) {
      facts.arguments = parseCommandLine(*text);
    }
    facts.workingDirectory = readLinkAt(procFd, pidPath(pid, "cwd"));
    if (auto app = MacosAppPaths::signingCloneTarget(facts.path, facts.arguments)) {
      facts.path = std::move(*app);
    }
    if (fromMemory && !facts.arguments.empty() && !facts.arguments.front().empty()) {
      facts.name = std::string(lastPathComponent(facts.arguments.front()));
    }
    // Another user's process: its exe link is not ours to read, its command line is.
    if (tracked.executable.empty()) {
      CommandProgram program = commandProgram(facts.arguments, tracked.comm, searchPath_);
      facts.path = std::move(program.path);
      facts.name = std::move(program.name);
    }
  }
  tracked.facts = std::move(facts);
  tracked.appFacts = ProcessFacts{.controllingTerminal = stat.terminal != 0};
  if (apps_ && !tracked.facts.kernelThread) identifyApp(procFd, pid, tracked);
}

namespace {

// "[Application]\nname=org.gnome.Builder\n...": the app id of a Flatpak sandbox.
std::string flatpakAppId(std::string_view info) {
  bool inApplication = false;
  std::string id;
  forEachLine(info, [&](std::string_view line) {
    if (line.starts_with("[")) inApplication = line == "[Application]";
    if (inApplication && id.empty() && line.starts_with("name=")) id = line.substr(5);
  });
  return id;
}

// The value of NAME in a NUL-separated environment.
std::string environmentValue(std::string_view environment, std::string_view name) {
  for (const auto& entry : parseCommandLine(environment)) {
    if (entry.size() > name.size() && entry.starts_with(name) && entry[name.size()] == '=') {
      return entry.substr(name.size() + 1);
    }
  }
  return {};
}

}  // namespace

void ProcessReader::identifyApp(int procFd, std::int32_t pid, Tracked& tracked) {
  ProcessFacts& facts = tracked.appFacts;
  facts.executable =
      tracked.executable.empty() ? tracked.facts.path : withoutDeletedMark(tracked.executable);
  facts.arguments = tracked.facts.arguments;
  facts.comm = tracked.comm;
  facts.workingDirectory = tracked.facts.workingDirectory;
  if (const auto text = readFileAt(procFd, pidPath(pid, "cgroup"), otherBuffer_)) {
    facts.cgroup = parseCgroupPath(*text);
  }
  if (const auto info = readFileAt(procFd, pidPath(pid, "root/.flatpak-info"), otherBuffer_)) {
    facts.flatpakId = flatpakAppId(*info);
  }
  // An AppImage runs from its own mount; only its environment names the image file.
  if (facts.executable.starts_with("/tmp/.mount_")) {
    if (const auto environment = readFileAt(procFd, pidPath(pid, "environ"), otherBuffer_)) {
      facts.appImage = environmentValue(*environment, "APPIMAGE");
    }
  }
  facts.parentApp = parentApp(tracked);
  tracked.appGeneration = apps_->generation();
  tracked.facts.app = apps_->identity(facts, now_);
}

void ProcessReader::recheckApp(int procFd, std::int32_t pid, std::uint64_t generation,
                               Tracked& tracked) {
  const bool young = tracked.facts.startTime && now_ >= *tracked.facts.startTime &&
                     now_ - *tracked.facts.startTime < youngAge;
  if (young) {
    const auto text = readFileAt(procFd, pidPath(pid, "cgroup"), otherBuffer_);
    const std::string cgroup = text ? parseCgroupPath(*text) : tracked.appFacts.cgroup;
    if (cgroup != tracked.appFacts.cgroup) {
      tracked.appFacts.cgroup = cgroup;
      tracked.appGeneration = generation;
      tracked.facts.app = apps_->identity(tracked.appFacts, now_);
      return;
    }
  }
  // A process that owes its app to its parent follows the parent's; the parent chain is
  // cheap to look at, the lookup is asked only when it changed.
  const auto& fromParent = parentApp(tracked);
  if (!sameApp(fromParent, tracked.appFacts.parentApp)) {
    tracked.appFacts.parentApp = fromParent;
    tracked.appGeneration = generation;
    tracked.facts.app = apps_->identity(tracked.appFacts, now_);
    return;
  }
  if (!tracked.facts.app && tracked.appGeneration != generation) {
    tracked.appGeneration = generation;
    tracked.facts.app = apps_->identity(tracked.appFacts, now_);
  }
}

std::uint64_t ProcessReader::threadSwitches(int procFd, std::int32_t pid) {
  const FileDescriptor taskFd(
      ::openat(procFd, pidPath(pid, "task"), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!taskFd.valid()) return 0;
  // fdopendir takes the descriptor over, so it gets a duplicate of its own.
  const Directory tasks(::fdopendir(::dup(taskFd.get())));
  if (!tasks) return 0;
  std::uint64_t sum = 0;
  char taskPath[300];
  while (const dirent* entry = ::readdir(tasks.get())) {
    if (!pidFromName(entry->d_name)) continue;
    std::snprintf(taskPath, sizeof taskPath, "%s/status", entry->d_name);
    if (const auto text = readFileAt(taskFd.get(), taskPath, otherBuffer_, ReadExtent::oneRecord)) {
      sum = checkedSum(sum, parseContextSwitches(*text)).value_or(sum);
    }
  }
  return sum;
}

void ProcessReader::updateCounters(int procFd, std::int32_t pid, const ProcessStat& stat,
                                   const std::optional<Usage>& usage, Tracked& tracked) {
  tracked.ownTicks = checkedSum(stat.userTicks, stat.systemTicks).value_or(tracked.ownTicks);
  tracked.childTicks =
      checkedSum(stat.childUserTicks, stat.childSystemTicks).value_or(tracked.childTicks);
  if (usage) readUsageCounters(procFd, pid, stat, *usage, tracked);
  const std::uint64_t reaped = pid == initPid ? 0 : tracked.childTicks;
  tracked.work.record(Work{.cpuTicks = saturatingAdd(tracked.ownTicks, reaped),
                           .readBytes = tracked.readBytes,
                           .writeBytes = tracked.writeBytes,
                           .switches = tracked.switches});
}

void ProcessReader::readUsageCounters(int procFd, std::int32_t pid, const ProcessStat& stat,
                                      const Usage& usage, Tracked& tracked) {
  const bool ran = !tracked.counted || tracked.ownTicks != tracked.usageOwnTicks;
  tracked.usageReadAt = now_;
  tracked.usageOwnTicks = tracked.ownTicks;
  tracked.usageChildTicks = tracked.childTicks;
  tracked.minorFaults = stat.minorFaults;
  tracked.majorFaults = stat.majorFaults;
  tracked.threads = stat.threads;

  const auto anonKB = checkedSum(usage.status.rssAnonKB, usage.status.vmSwapKB);
  tracked.footprintBytes = anonKB ? checkedProduct(*anonKB, 1024).value_or(0) : 0;

  // status counts the switches of the main thread only. The other threads' are summed only
  // when the process used CPU since the last reading: an idle process cannot have woken up.
  std::uint64_t switches = tracked.rawSwitches;
  if (usage.status.threads <= 1) {
    switches =
        checkedSum(usage.status.voluntarySwitches, usage.status.involuntarySwitches).value_or(0);
  } else if (ran) {
    switches = threadSwitches(procFd, pid);
  }
  // Threads that end take their switches with them, so the sum may shrink; only growth counts.
  if (!tracked.counted) {
    tracked.switches = switches;
  } else if (switches > tracked.rawSwitches) {
    tracked.switches += switches - tracked.rawSwitches;
  }
  tracked.rawSwitches = switches;
  tracked.readBytes = usage.io.readBytes;
  tracked.writeBytes = usage.io.writeBytes;
  tracked.counted = true;
}

ProcessReader::Tracked* ProcessReader::parentOf(const Tracked& child) {
  const auto found = tracked_.find(child.parent);
  if (found == tracked_.end() || &found->second == &child) return nullptr;
  // A parent is never younger than its child; a younger one took a dead parent's pid.
  return found->second.startTicks <= child.startTicks ? &found->second : nullptr;
}

const std::optional<AppIdentity>& ProcessReader::parentApp(const Tracked& child) {
  static const std::optional<AppIdentity> none;
  const Tracked* parent = parentOf(child);
  return parent ? parent->facts.app : none;
}

void ProcessReader::creditParent(Tracked& gone) {
  if (gone.credited) return;
  gone.credited = true;
  Work handed = gone.work.handedOn();
  // A parent that went away too reaped this one first (had it not, the orphan would have gone
  // to init): what it hands on includes this work, so the take-off goes up with it.
  const Tracked* child = &gone;
  for (int step = 0; step < maxAncestors; ++step) {
    Tracked* parent = parentOf(*child);
    if (!parent) return;
    if (!parent->credited) {
      if (child->parent == initPid) handed.cpuTicks = 0;  // never in init's counted work
      parent->work.takeOff(handed);
      return;
    }
    child = parent;
  }
}

void ProcessReader::adoptNewborns(std::vector<ProcessSample>& samples) {
  if (!previousUptime_) return;  // the first reading: no rates, nothing to correct
  for (const Tracked* newborn : firstRead_) {
    // One tick of slack for the two clocks' rounding. An older process missing from the last
    // reading (a listing race, a pid over the limit) is not a newborn: its whole life is not
    // this interval's work.
    if (newborn->facts.kernelThread || newborn->startTicks + 1 < *previousUptime_) continue;
    const Tracked* at = newborn;
    for (int step = 0; step < maxAncestors; ++step) {
      if (at->parent <= initPid) break;
      Tracked* ancestor = parentOf(*at);
      if (!ancestor || ancestor->seenRound != round_) break;
      if (ancestor->inPreviousReading) {
        ancestor->work.adopt(newborn->work.reported());
        fillCounters(*ancestor, samples[ancestor->sampleIndex]);
        break;
      }
      at = ancestor;
    }
  }
}

void ProcessReader::prune() {
  for (auto& [pid, tracked] : tracked_) {
    if (tracked.seenRound != round_) creditParent(tracked);
  }
  std::erase_if(tracked_, [&](const auto& entry) { return entry.second.seenRound != round_; });
}

}  // namespace pellwin
