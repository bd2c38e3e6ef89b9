#include "probe/system/process_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "testing/proc_fixture.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::FakeProcess;
using testing::ProcFolder;
using testing::writeProcess;

constexpr std::uint64_t hz = 100;

const ProcessSample* find(const std::vector<ProcessSample>& samples, int pid) {
  const auto it = std::find_if(samples.begin(), samples.end(),
                               [&](const ProcessSample& s) { return s.pid == pid; });
  return it == samples.end() ? nullptr : &*it;
}

TEST(ProcessReader, ReadsEveryProcessWithItsCountersAndIdentity) {
  ProcFolder folder;
  writeProcess(folder.root, {.pid = 100,
                             .comm = "worker",
                             .parent = 77,
                             .userTicks = 150,
                             .systemTicks = 50,
                             .startTicks = 5000,
                             .rssAnonKB = 1000,
                             .vmSwapKB = 24,
                             .voluntary = 7,
                             .involuntary = 3,
                             .readBytes = 4096,
                             .writeBytes = 8192,
                             .exe = "/usr/bin/worker",
                             .arguments = {"worker", "--fast"},
                             .cwd = "/home/user/src"});
  writeProcess(folder.root, {.pid = 200, .comm = "Web (Content) ) (x", .exe = ""});
  writeProcess(folder.root, {.pid = 300, .comm = "thing", .exe = "/opt/app/bin/thing (deleted)"});
  writeProcess(folder.root, {.pid = 400,
                             .comm = "memfd:sealed-91",
                             .exe = "/memfd:sealed-91173221 (deleted)",
                             .arguments = {"tools/backend", "--uid", "0"}});
  writeProcess(folder.root, {.pid = 2,
                             .comm = "kworker/0:1-events",
                             .parent = 0,
                             .flags = 0x00208040,
                             .exe = "",
                             .arguments = {},
                             .cwd = ""});
  folder.root.write("proc/self/stat", "not a process folder");
  folder.root.write("proc/sys/kernel", "");

  ProcessReader reader(folder.proc(), hz);
  const auto samples = reader.read(0);
  ASSERT_EQ(samples.size(), 5u);

  const ProcessSample* worker = find(samples, 100);
  ASSERT_NE(worker, nullptr);
  EXPECT_EQ(worker->name, "worker");
  EXPECT_EQ(worker->path, "/usr/bin/worker");
  EXPECT_EQ(worker->footprintBytes, 1024u * 1024u);  // RssAnon + VmSwap, not VmRSS
  EXPECT_EQ(worker->cpuTimeNanos, 2'000'000'000u);   // 200 ticks at 100 Hz
  EXPECT_EQ(worker->diskReadBytes, 4096u);
  EXPECT_EQ(worker->diskWriteBytes, 8192u);
  EXPECT_EQ(worker->wakeups, 10u);
  EXPECT_EQ(worker->arguments, (std::vector<std::string>{"worker", "--fast"}));
  EXPECT_EQ(worker->workingDirectory, "/home/user/src");
  EXPECT_EQ(worker->startTime, 1700000050.0);  // btime + 5000 ticks
  EXPECT_EQ(worker->parentPid, 77);
  EXPECT_FALSE(worker->kernelThread);

  const ProcessSample* unnamed = find(samples, 200);
  ASSERT_NE(unnamed, nullptr);
  EXPECT_EQ(unnamed->name, "Web (Content) ) (x");  // no executable: the comm
  EXPECT_EQ(unnamed->path, "");

  ASSERT_NE(find(samples, 300), nullptr);
  EXPECT_EQ(find(samples, 300)->path, "/opt/app/bin/thing");

  // Run from memory: no file to show, and its first argument is the only real name it has.
  const ProcessSample* fromMemory = find(samples, 400);
  ASSERT_NE(fromMemory, nullptr);
  EXPECT_EQ(fromMemory->name, "backend");
  EXPECT_EQ(fromMemory->path, "");

  const ProcessSample* kernel = find(samples, 2);
  ASSERT_NE(kernel, nullptr);
  EXPECT_TRUE(kernel->kernelThread);
  EXPECT_EQ(kernel->name, "kworker/0:1-events");
  EXPECT_TRUE(kernel->arguments.empty());
  EXPECT_FALSE(kernel->workingDirectory.has_value());
}

TEST(ProcessReader, BadFilesLeaveFieldsAtDefaultsOrSkipTheProcess) {
  ProcFolder folder;
  writeProcess(folder.root,
               {.pid = 10, .comm = "io-is-a-folder", .userTicks = 5, .readBytes = std::nullopt});
  fs::create_directories(folder.root / "proc/10/io");
  writeProcess(folder.root,
               {.pid = 11, .comm = "no-io-file", .rssAnonKB = 4, .readBytes = std::nullopt});
  writeProcess(folder.root, {.pid = 12, .comm = "truncated-stat"});
  folder.root.write("proc/12/stat", "12 (truncated-stat) S 1");
  writeProcess(folder.root, {.pid = 13, .comm = "empty-stat"});
  folder.root.write("proc/13/stat", "");
  writeProcess(folder.root, {.pid = 14, .comm = "vanished"});
  fs::remove(folder.root / "proc/14/status");  // gone between stat and status
  writeProcess(folder.root, {.pid = 15,
                             .comm = "overflow",
                             .userTicks = 18446744073709551615u,
                             .systemTicks = 1,
                             .rssAnonKB = 18446744073709551615u});
  writeProcess(folder.root, {.pid = 16, .comm = "damaged-status", .vmSwapKB = 8});
  folder.root.write("proc/16/status", "Name:\tx\nRssAnon:\t12x kB\nVmSwap:\t8 kB\n");
  writeProcess(folder.root, {.pid = 17, .comm = "empty-cmdline", .exe = "", .arguments = {}});

  ProcessReader reader(folder.proc(), hz);
  std::vector<ProcessSample> samples;
  ASSERT_NO_THROW(samples = reader.read(0));

  const struct {
    const char* why;
    int pid;
    bool present;
    std::uint64_t cpuNanos, footprint;
  } cases[] = {
      {"an io that cannot be read gives 0 bytes, the process stays", 10, true, 50'000'000, 0},
      {"no io file at all (no I/O accounting)", 11, true, 0, 4096},
      {"stat cut short: counters 0", 12, true, 0, 0},
      {"empty stat: not readable", 13, false, 0, 0},
      {"vanished mid-read: skipped", 14, false, 0, 0},
      {"overflowing counters read as 0", 15, true, 0, 0},
      {"a damaged status line reads as 0", 16, true, 0, 8192},
      {"an empty command line", 17, true, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const ProcessSample* sample = find(samples, c.pid);
    ASSERT_EQ(sample != nullptr, c.present);
    if (!sample) continue;
    EXPECT_EQ(sample->cpuTimeNanos, c.cpuNanos);
    EXPECT_EQ(sample->footprintBytes, c.footprint);
    EXPECT_EQ(sample->diskReadBytes, 0u);
  }
  EXPECT_TRUE(find(samples, 17)->arguments.empty());

  ProcessReader missing(folder.root / "no-such-proc", hz);
  EXPECT_TRUE(missing.read(0).empty());
}

TEST(ProcessReader, ReadsIdentityOncePerProcessLife) {
  ProcFolder folder;
  FakeProcess p{.pid = 100,
                .comm = "worker",
                .userTicks = 1,
                .exe = "/usr/bin/worker",
                .arguments = {"worker", "a"},
                .cwd = "/first"};
  writeProcess(folder.root, p);
  ProcessReader reader(folder.proc(), hz);
  ASSERT_EQ(reader.read(0).size(), 1u);

  // Same pid and start time: the facts stay, only the counters move.
  FakeProcess changed = p;
  changed.userTicks = 3;
  changed.arguments = {"worker", "b"};
  changed.cwd = "/second";
  writeProcess(folder.root, changed);
  auto samples = reader.read(2);
  ASSERT_EQ(samples.size(), 1u);
  EXPECT_EQ(samples[0].arguments, (std::vector<std::string>{"worker", "a"}));
  EXPECT_EQ(samples[0].workingDirectory, "/first");
  EXPECT_EQ(samples[0].cpuTimeNanos, 30'000'000u);

  // Its parent went away: the process now hangs under another one, which each reading says.
  changed.parent = 2000;
  writeProcess(folder.root, changed);
  EXPECT_EQ(reader.read(3)[0].parentPid, 2000);

  // A rename without exec (same executable) keeps the identity.
  changed.comm = "renamed";
  writeProcess(folder.root, changed);
  EXPECT_EQ(reader.read(4)[0].arguments, (std::vector<std::string>{"worker", "a"}));

  // exec: a new comm and a new executable give a fresh identity.
  changed.comm = "tool";
  changed.exe = "/usr/bin/tool";
  changed.arguments = {"tool", "x"};
  writeProcess(folder.root, changed);
  samples = reader.read(6);
  EXPECT_EQ(samples[0].name, "tool");
  EXPECT_EQ(samples[0].arguments, (std::vector<std::string>{"tool", "x"}));

  // The pid reused by another process (another start time) gets a fresh identity.
  FakeProcess reused{.pid = 100,
                     .comm = "other",
                     .startTicks = 9000,
                     .exe = "/usr/bin/other",
                     .arguments = {"other"},
                     .cwd = "/third"};
  writeProcess(folder.root, reused);
  samples = reader.read(8);
  EXPECT_EQ(samples[0].name, "other");
  EXPECT_EQ(samples[0].workingDirectory, "/third");
  EXPECT_EQ(samples[0].startTime, 1700000090.0);
}

TEST(ProcessReader, ForgetsProcessesThatEnded) {
  ProcFolder folder;
  for (int pid : {100, 101, 102}) writeProcess(folder.root, {.pid = pid});
  ProcessReader reader(folder.proc(), hz);
  EXPECT_EQ(reader.read(0).size(), 3u);
  fs::remove_all(folder.root / "proc/101");
  EXPECT_EQ(reader.read(2).size(), 2u);
  EXPECT_EQ(reader.trackedCount(), 2u);
  fs::remove_all(folder.root / "proc");
  EXPECT_TRUE(reader.read(4).empty());
  EXPECT_EQ(reader.trackedCount(), 0u);
}

TEST(ProcessReader, ReadsMemoryDiskAndSwitchesAgainOnlyAfterTheProcessRan) {
  ProcFolder folder;
  FakeProcess p{.pid = 100, .userTicks = 10, .rssAnonKB = 100, .voluntary = 5, .readBytes = 10};
  writeProcess(folder.root, p);
  ProcessReader reader(folder.proc(), hz);
  const double start = 1000;
  EXPECT_EQ(reader.read(start)[0].footprintBytes, 100u * 1024);

  // Figures that cannot change without running; the fixture changes them anyway to see when
  // they are read.
  p.rssAnonKB = 200;
  p.voluntary = 6;
  p.readBytes = 20;
  writeProcess(folder.root, p);
  auto sample = reader.read(start + 2)[0];
  EXPECT_EQ(sample.footprintBytes, 100u * 1024);
  EXPECT_EQ(sample.wakeups, 5u);
  EXPECT_EQ(sample.diskReadBytes, 10u);

  p.userTicks = 11;
  writeProcess(folder.root, p);
  sample = reader.read(start + 4)[0];
  EXPECT_EQ(sample.footprintBytes, 200u * 1024);
  EXPECT_EQ(sample.wakeups, 6u);
  EXPECT_EQ(sample.diskReadBytes, 20u);
  EXPECT_EQ(sample.cpuTimeNanos, 110'000'000u);  // stat itself is read every time

  p.rssAnonKB = 300;
  writeProcess(folder.root, p);
  EXPECT_EQ(reader.read(start + 4 + ProcessReader::usageRefresh - 0.5)[0].footprintBytes,
            200u * 1024);
  EXPECT_EQ(reader.read(start + 4 + ProcessReader::usageRefresh)[0].footprintBytes, 300u * 1024);
}

TEST(ProcessReader, TakesAnySignOfRunningAsCauseToReadUsageAgain) {
  const struct {
    const char* why;
    void (*change)(FakeProcess&);
    bool readAgain;
  } cases[] = {
      {"nothing moved", [](FakeProcess&) {}, false},
      {"CPU time", [](FakeProcess& p) { p.systemTicks += 1; }, true},
      {"a minor page fault", [](FakeProcess& p) { p.minorFaults += 1; }, true},
      {"a major page fault", [](FakeProcess& p) { p.majorFaults += 1; }, true},
      {"a new thread", [](FakeProcess& p) { p.threads = 2; }, true},
      {"running right now", [](FakeProcess& p) { p.state = 'R'; }, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    ProcFolder folder;
    FakeProcess p{.pid = 100, .rssAnonKB = 100};
    writeProcess(folder.root, p);
    ProcessReader reader(folder.proc(), hz);
    ASSERT_EQ(reader.read(1000).size(), 1u);
    p.rssAnonKB = 200;
    c.change(p);
    writeProcess(folder.root, p);
    EXPECT_EQ(reader.read(1002)[0].footprintBytes, (c.readAgain ? 200u : 100u) * 1024);
  }
}

TEST(ProcessReader, SumsWakeupsOverThreadsOnlyWhenTheProcessRan) {
  ProcFolder folder;
  FakeProcess p{.pid = 100, .userTicks = 10, .threads = 3, .voluntary = 8, .involuntary = 2};
  writeProcess(folder.root, p);
  auto task = [&](int tid, int switches) {
    folder.root.write("proc/100/task/" + std::to_string(tid) + "/status",
                      "Name:\tt\nvoluntary_ctxt_switches:\t" + std::to_string(switches) +
                          "\nnonvoluntary_ctxt_switches:\t0\n");
  };
  task(100, 10);
  task(101, 5);
  task(102, 7);
  ProcessReader reader(folder.proc(), hz);
  EXPECT_EQ(reader.read(0)[0].wakeups, 22u);

  task(101, 50);  // no CPU used since: the threads are not read again
  EXPECT_EQ(reader.read(2)[0].wakeups, 22u);

  p.userTicks = 11;
  writeProcess(folder.root, p);
  EXPECT_EQ(reader.read(4)[0].wakeups, 67u);

  // A thread ends: its switches leave the sum, but the count never goes back.
  fs::remove_all(folder.root / "proc/100/task/102");
  p.userTicks = 12;
  writeProcess(folder.root, p);
  EXPECT_EQ(reader.read(6)[0].wakeups, 67u);  // the sum fell from 67 to 60
  task(101, 55);
  p.userTicks = 13;
  writeProcess(folder.root, p);
  EXPECT_EQ(reader.read(8)[0].wakeups, 72u);
}

TEST(ProcessReader, KeepsTheBundleRulesForAppPaths) {
  ProcFolder folder;
  writeProcess(folder.root, {.pid = 100,
                             .exe = "/opt/Foo.app/Contents/MacOS/Foo",
                             .arguments = {"Foo", "--x"},
                             .cwd = "/tmp"});
  writeProcess(folder.root, {.pid = 101,
                             .exe = "/var/code_sign_clone/abc/Bar",
                             .arguments = {"/opt/Bar.app/Contents/MacOS/Bar"}});
  ProcessReader reader(folder.proc(), hz);
  const auto samples = reader.read(0);
  const ProcessSample* app = find(samples, 100);
  ASSERT_NE(app, nullptr);
  EXPECT_TRUE(app->arguments.empty());
  EXPECT_FALSE(app->workingDirectory.has_value());
  ASSERT_NE(find(samples, 101), nullptr);
  EXPECT_EQ(find(samples, 101)->path, "/opt/Bar.app/Contents/MacOS/Bar");
}

TEST(ProcessReader, NamesAppsOncePerLifeButFollowsAYoungProcessIntoItsScope) {
  ProcFolder folder;
  folder.root.write(
      "share/applications/org.gnome.TextEditor.desktop",
      "[Desktop Entry]\nType=Application\nName=Text Editor\nExec=gnome-text-editor\n");
  folder.root.write("share/applications/org.gnome.Builder.desktop",
                    "[Desktop Entry]\nType=Application\nName=Builder\nExec=gnome-builder\n");
  BundleIdentifierCache apps(DesktopSources{.dataDirs = {folder.root / "share"}});
  ProcessReader reader(folder.proc(), hz, &apps);
  const std::string scope = "/user.slice/app.slice/app-gnome-org.gnome.TextEditor-77.scope";
  // Started at btime + 50 s; the launcher has not moved it into its scope yet.
  FakeProcess editor{
      .pid = 300, .startTicks = 5000, .exe = "/usr/bin/tool", .cgroup = "/user.slice"};
  writeProcess(folder.root, editor);
  FakeProcess old{.pid = 301, .startTicks = 100, .exe = "/usr/bin/other", .cgroup = scope};
  writeProcess(folder.root, old);
  FakeProcess boxed{.pid = 302, .exe = "/app/bin/builder"};
  writeProcess(folder.root, boxed);
  folder.root.write("proc/302/root/.flatpak-info",
                    "[Application]\nname=org.gnome.Builder\nruntime=x\n[Instance]\nname=y\n");
  FakeProcess kernel{.pid = 2, .flags = 0x00208040, .exe = "", .cgroup = scope};
  writeProcess(folder.root, kernel);

  const double start = 1'700'000'050;
  auto samples = reader.read(start + 1);
  EXPECT_FALSE(find(samples, 300)->app.has_value());
  ASSERT_TRUE(find(samples, 301)->app.has_value());
  EXPECT_EQ(find(samples, 301)->app->name, "Text Editor");
  ASSERT_TRUE(find(samples, 302)->app.has_value());
  EXPECT_EQ(find(samples, 302)->app->name, "Builder");
  EXPECT_FALSE(find(samples, 2)->app.has_value());  // kernel threads belong to no app

  editor.cgroup = scope;
  writeProcess(folder.root, editor);
  old.cgroup = "/user.slice";
  writeProcess(folder.root, old);
  samples = reader.read(start + 2);
  ASSERT_TRUE(find(samples, 300)->app.has_value());  // young: its cgroup is read again
  EXPECT_EQ(find(samples, 300)->app->id, "org.gnome.TextEditor");
  EXPECT_TRUE(find(samples, 301)->app.has_value());  // old: the identity stands

  editor.cgroup = "/user.slice";
  writeProcess(folder.root, editor);
  samples = reader.read(start + ProcessReader::youngAge + 1);
  EXPECT_TRUE(find(samples, 300)->app.has_value());  // no longer young: not read again
}

TEST(ProcessReader, AsksAgainAboutProcessesWithoutAppWhenAppsAreInstalled) {
  ProcFolder folder;
  fs::create_directories(folder.root / "share/applications");
  BundleIdentifierCache apps(DesktopSources{.dataDirs = {folder.root / "share"}});
  ProcessReader reader(folder.proc(), hz, &apps);
  writeProcess(folder.root,
               {.pid = 400, .comm = "gimp", .startTicks = 100, .exe = "/opt/gimp/gimp"});
  EXPECT_FALSE(reader.read(1'700'001'000)[0].app.has_value());
  folder.root.write("share/applications/gimp.desktop",
                    "[Desktop Entry]\nType=Application\nName=GIMP\nExec=gimp\n");
  const auto samples = reader.read(1'700'001'000 + BundleIdentifierCache::refreshInterval);
  ASSERT_TRUE(samples[0].app.has_value());
  EXPECT_EQ(samples[0].app->name, "GIMP");
}

TEST(ProcessReader, NamesAnotherUsersProcessesFromWhatEveryoneMayRead) {
  ProcFolder folder;
  const fs::path browser = folder.root.write("opt/fakefox/fakefox", "\x7f" "ELF");
  const fs::path compiler = folder.root.write("bin/x86_64-linux-gnu-g++-12", "\x7f" "ELF");
  for (const auto& program : {browser, compiler}) {
    fs::permissions(program, fs::perms::owner_all | fs::perms::others_exec);
  }
  fs::create_symlink(compiler, folder.root / "bin/c++");
  fs::create_directories(folder.root / "share/applications");
  BundleIdentifierCache apps(DesktopSources{.dataDirs = {folder.root / "share"}});
  ProcessReader reader(folder.proc(), hz, &apps, {folder.root / "bin"});
  const std::string path = fs::canonical(browser).string();
  // Exe links another user may not read; command lines rewritten as one line with blanks.
  writeProcess(folder.root,
               {.pid = 100, .comm = "fakefox", .exe = "", .arguments = {path + " -P default"}});
  writeProcess(folder.root, {.pid = 101,
                             .comm = "Isolated Web Co",
                             .parent = 100,
                             .exe = "",
                             .arguments = {path + " -contentproc 3 tab"}});
  writeProcess(folder.root, {.pid = 102,
                             .comm = "forkserver",
                             .parent = 101,
                             .exe = "",
                             .arguments = {"forkserver"}});
  writeProcess(folder.root, {.pid = 103,
                             .comm = "bash",
                             .parent = 100,
                             .terminal = 34816,
                             .exe = "",
                             .arguments = {"bash"}});
  writeProcess(folder.root, {.pid = 104, .comm = "c++", .exe = "", .arguments = {"c++", "-c"}});
  writeProcess(folder.root, {.pid = 105, .comm = "c++", .exe = compiler.string()});

  auto samples = reader.read(1'700'001'000);
  EXPECT_EQ(find(samples, 101)->name, "fakefox");
  EXPECT_EQ(find(samples, 101)->path, path);
  EXPECT_EQ(find(samples, 102)->name, "forkserver");  // its command line names no file
  EXPECT_EQ(find(samples, 104)->name, find(samples, 105)->name);
  EXPECT_EQ(find(samples, 104)->path, find(samples, 105)->path);
  for (int pid : {100, 101, 102, 103}) EXPECT_FALSE(find(samples, pid)->app.has_value());

  // Installed: the browser is known by the executable its command line names, and a helper
  // with nothing of its own to tell by its parent's app; a terminal's shell stays apart.
  folder.root.write("share/applications/fakefox.desktop",
                    "[Desktop Entry]\nType=Application\nName=Fakefox\nExec=" + path + " %u\n");
  // The kernel lists parents before their children (by pid, unless pids wrapped); a fixture
  // folder may not, and then a child learns its parent's new app one reading later.
  samples = reader.read(1'700'001'000 + BundleIdentifierCache::refreshInterval);
  samples = reader.read(1'700'001'002 + BundleIdentifierCache::refreshInterval);
  for (int pid : {100, 101, 102}) {
    SCOPED_TRACE(pid);
    ASSERT_TRUE(find(samples, pid)->app.has_value());
    EXPECT_EQ(find(samples, pid)->app->id, "fakefox");
  }
  EXPECT_FALSE(find(samples, 103)->app.has_value());
}

}  // namespace
}  // namespace pellwin
