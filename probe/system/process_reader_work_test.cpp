// Work that the kernel hands from child to parent: counted once, and never lost to a short
// life when the process that waited for it is in the reading.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "probe/system/process_reader.h"
#include "testing/proc_fixture.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::FakeProcess;
using testing::ProcFolder;
using testing::writeProcess;

constexpr std::uint64_t hz = 100;

// The machine's uptime, in ticks, as the next reading finds it.
void setUptime(const ProcFolder& folder, std::uint64_t ticks) {
  folder.root.write("proc/uptime", std::to_string(ticks / hz) + "." +
                                       std::to_string(ticks % hz / 10) +
                                       std::to_string(ticks % 10) + " 1.00\n");
}

// CPU ticks, read and written bytes and wake-ups of one process in a reading; all -1 when the
// reading has no such process.
struct Counted {
  long long ticks = -1, read = -1, written = -1, switches = -1;
  friend bool operator==(const Counted&, const Counted&) = default;
  friend void PrintTo(const Counted& c, std::ostream* out) {
    *out << "{ticks " << c.ticks << ", read " << c.read << ", written " << c.written
         << ", switches " << c.switches << "}";
  }
};

Counted counted(const std::vector<ProcessSample>& samples, int pid) {
  const auto it = std::find_if(samples.begin(), samples.end(),
                               [&](const ProcessSample& s) { return s.pid == pid; });
  if (it == samples.end()) return {};
  return Counted{.ticks = static_cast<long long>(it->cpuTimeNanos / (1'000'000'000 / hz)),
                 .read = static_cast<long long>(it->diskReadBytes),
                 .written = static_cast<long long>(it->diskWriteBytes),
                 .switches = static_cast<long long>(it->wakeups)};
}

TEST(ProcessReaderWork, AChildSeenThenReapedAddsWhatItDidAfterItsLastReading) {
  ProcFolder folder;
  FakeProcess make{.pid = 10, .comm = "make", .userTicks = 100, .readBytes = 1000};
  folder.write(make);
  folder.write({.pid = 11,
                .comm = "cc1",
                .parent = 10,
                .userTicks = 20,
                .systemTicks = 10,
                .readBytes = 500,
                .writeBytes = 50});
  ProcessReader reader(folder.proc(), hz);
  EXPECT_EQ(counted(reader.read(0), 11), (Counted{30, 500, 50, 0}));

  // The child ran 5 ticks more, read 100 bytes more and was reaped: the kernel adds all of
  // it to its parent, which itself ran 1 tick and read 200 bytes.
  folder.remove(11);
  make.userTicks = 101;
  make.childUserTicks = 25;
  make.childSystemTicks = 10;
  make.readBytes = 1000 + 600 + 200;
  make.writeBytes = 50;
  folder.write(make);
  EXPECT_EQ(counted(reader.read(2), 10), (Counted{101 + 5, 1000 + 100 + 200, 0, 0}));

  // Reported totals never go back, even if the parent's counters were read too early.
  make.userTicks = 102;
  make.readBytes = 1700;
  folder.write(make);
  EXPECT_EQ(counted(reader.read(4), 10).read, 1300);
}

TEST(ProcessReaderWork, AChildNeverSeenAddsAllItsWork) {
  ProcFolder folder;
  FakeProcess shell{.pid = 10, .comm = "bash", .userTicks = 100, .readBytes = 1000};
  folder.write(shell);
  ProcessReader reader(folder.proc(), hz);
  ASSERT_EQ(counted(reader.read(0), 10).ticks, 100);

  // Started and reaped between two readings; the shell's own time did not move a tick, yet
  // its io is read again for the bytes the child handed on.
  shell.childUserTicks = 12;
  shell.readBytes = 1300;
  folder.write(shell);
  EXPECT_EQ(counted(reader.read(2), 10), (Counted{112, 1300, 0, 0}));
}

TEST(ProcessReaderWork, AGrandchildReapedByAChildThatIsThenReapedCountsOnce) {
  // Two families, the grandchild's pid below and above the child's, so the reader meets the
  // vanished child and grandchild in both orders.
  const struct {
    const char* why;
    int parent, child, grandchild;
  } cases[] = {{"grandchild pid above", 10, 11, 12}, {"grandchild pid below", 20, 23, 22}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    ProcFolder folder;
    FakeProcess parent{.pid = c.parent, .userTicks = 10};
    folder.write(parent);
    folder.write({.pid = c.child, .parent = c.parent, .userTicks = 50, .startTicks = 6000});
    folder.write({.pid = c.grandchild, .parent = c.child, .userTicks = 20, .startTicks = 7000});
    ProcessReader reader(folder.proc(), hz);
    ASSERT_EQ(reader.read(0).size(), 3u);

    // The grandchild ran 5 more and was reaped by the child, which ran 1 more and was reaped.
    folder.remove(c.child);
    folder.remove(c.grandchild);
    parent.childUserTicks = 51 + 25;
    folder.write(parent);
    EXPECT_EQ(counted(reader.read(2), c.parent).ticks, 10 + 1 + 5);
  }

  // The same, one reading apart: the child shows the grandchild's last 5 ticks, then hands
  // on only its own last tick.
  ProcFolder folder;
  FakeProcess parent{.pid = 10, .userTicks = 10};
  folder.write(parent);
  FakeProcess child{.pid = 11, .parent = 10, .userTicks = 50, .startTicks = 6000};
  folder.write(child);
  folder.write({.pid = 12, .parent = 11, .userTicks = 20, .startTicks = 7000});
  ProcessReader reader(folder.proc(), hz);
  ASSERT_EQ(reader.read(0).size(), 3u);
  folder.remove(12);
  child.childUserTicks = 25;
  folder.write(child);
  EXPECT_EQ(counted(reader.read(2), 11).ticks, 55);
  folder.remove(11);
  parent.childUserTicks = 51 + 25;
  folder.write(parent);
  EXPECT_EQ(counted(reader.read(4), 10).ticks, 11);
}

TEST(ProcessReaderWork, AReusedPidIsANewProcessAndItsPredecessorIsReaped) {
  ProcFolder folder;
  setUptime(folder, 5000);
  FakeProcess parent{.pid = 10, .userTicks = 100, .startTicks = 4000};
  folder.write(parent);
  folder.write({.pid = 11, .parent = 10, .userTicks = 30, .startTicks = 4500});
  ProcessReader reader(folder.proc(), hz);
  const auto first = reader.read(0);

  // pid 11 ended after 5 more ticks and was reaped; a new process took its pid and ran 2.
  setUptime(folder, 5200);
  parent.childUserTicks = 35;
  folder.write(parent);
  folder.write({.pid = 11, .parent = 10, .userTicks = 2, .startTicks = 5100});
  const auto second = reader.read(2);
  EXPECT_EQ(counted(second, 11).ticks, 2);
  // The predecessor's last 5 ticks, and the newcomer's 2 that its first reading cannot rate.
  EXPECT_EQ(counted(second, 10).ticks, 100 + 5 + 2);
  EXPECT_NE(std::find_if(first.begin(), first.end(), [](auto& s) { return s.pid == 11; })->startTime,
            std::find_if(second.begin(), second.end(), [](auto& s) { return s.pid == 11; })->startTime);
}

TEST(ProcessReaderWork, WorkOfAParentOutsideTheReadingIsLostNotMisplaced) {
  ProcFolder folder;
  setUptime(folder, 5000);
  FakeProcess grandparent{.pid = 5, .userTicks = 40, .startTicks = 100};
  folder.write(grandparent);
  folder.write({.pid = 10, .comm = "hidden", .parent = 5, .startTicks = 200});
  folder.root.write("proc/10/stat", "");  // not readable: not in the reading
  folder.write({.pid = 11, .parent = 10, .userTicks = 30, .startTicks = 4500});
  // Another user's: stat is everyone's to read, io is not.
  FakeProcess foreign{.pid = 20, .parent = 5, .userTicks = 7, .startTicks = 300, .readBytes = {}};
  folder.write(foreign);
  folder.write({.pid = 21, .parent = 20, .userTicks = 3, .startTicks = 4600, .readBytes = 900});
  ProcessReader reader(folder.proc(), hz);
  ASSERT_EQ(reader.read(0).size(), 4u);

  setUptime(folder, 5200);
  folder.remove(11);
  folder.remove(21);
  folder.write({.pid = 12, .parent = 10, .userTicks = 9, .startTicks = 5100});
  foreign.childUserTicks = 4;
  folder.write(foreign);
  const auto samples = reader.read(2);
  EXPECT_EQ(counted(samples, 5), (Counted{40, 0, 0, 0}));   // neither child nor newborn
  EXPECT_EQ(counted(samples, 12).ticks, 9);                 // its own, from now on
  EXPECT_EQ(counted(samples, 20), (Counted{7 + 1, 0, 0, 0}));  // CPU yes, bytes unknown
}

TEST(ProcessReaderWork, ANewbornsFirstWorkGoesToItsNearestAncestorFromThePreviousReading) {
  ProcFolder folder;
  setUptime(folder, 5000);
  FakeProcess ninja{.pid = 10, .comm = "ninja", .userTicks = 100, .startTicks = 1000};
  folder.write(ninja);
  folder.write({.pid = 1, .comm = "init", .parent = 0, .userTicks = 50, .startTicks = 1});
  ProcessReader reader(folder.proc(), hz);
  ASSERT_EQ(reader.read(0).size(), 2u);

  setUptime(folder, 5200);
  // Started since the last reading: a compiler driver and the compiler it runs.
  folder.write({.pid = 11,
                .comm = "c++",
                .parent = 10,
                .userTicks = 7,
                .startTicks = 5050,
                .voluntary = 4,
                .readBytes = 300});
  folder.write({.pid = 12, .comm = "cc1plus", .parent = 11, .userTicks = 3, .startTicks = 5060});
  // Older than the last reading, only missed by its listing: its whole life is not new work.
  folder.write({.pid = 13, .parent = 10, .userTicks = 500, .startTicks = 2000});
  // An orphan of init and a kernel thread: nobody's app waits for them.
  folder.write({.pid = 14, .parent = 1, .userTicks = 9, .startTicks = 5070});
  folder.write({.pid = 15, .parent = 2, .flags = 0x00208040, .userTicks = 9, .startTicks = 5080});
  auto samples = reader.read(2);
  EXPECT_EQ(counted(samples, 10), (Counted{100 + 7 + 3, 300, 0, 4}));
  EXPECT_EQ(counted(samples, 11), (Counted{7, 300, 0, 4}));  // its own line keeps its figures
  EXPECT_EQ(counted(samples, 1).ticks, 50);

  // From the second reading on, the newborns' work is their own.
  setUptime(folder, 5400);
  folder.write({.pid = 11, .comm = "c++", .parent = 10, .userTicks = 9, .startTicks = 5050,
                .voluntary = 4, .readBytes = 300});
  samples = reader.read(4);
  EXPECT_EQ(counted(samples, 11).ticks, 9);
  EXPECT_EQ(counted(samples, 10).ticks, 110);
}

TEST(ProcessReaderWork, InitKeepsOnlyItsOwnWork) {
  ProcFolder folder;
  FakeProcess init{.pid = 1, .comm = "init", .parent = 0, .userTicks = 50, .childUserTicks = 900,
                   .startTicks = 1};
  folder.write(init);
  folder.write({.pid = 30, .parent = 1, .userTicks = 20, .startTicks = 900});
  ProcessReader reader(folder.proc(), hz);
  EXPECT_EQ(counted(reader.read(0), 1).ticks, 50);
  folder.remove(30);
  init.userTicks = 51;
  init.childUserTicks = 900 + 25 + 400;
  folder.write(init);
  EXPECT_EQ(counted(reader.read(2), 1).ticks, 51);
}

}  // namespace
}  // namespace pellwin
