#include "probe/system/work_ledger.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

Work cpu(std::uint64_t ticks) { return Work{.cpuTicks = ticks}; }

TEST(WorkLedger, CountsAReapedChildOnlyForWhatItDidAfterItsLastReading) {
  WorkLedger parent, child;
  parent.record(cpu(100));
  child.record(cpu(30));  // the child's line shows these 30

  // The child ran 5 more ticks and was reaped: the kernel adds all 35 to the parent.
  parent.takeOff(child.handedOn());
  parent.record(cpu(100 + 35));
  EXPECT_EQ(parent.reported().cpuTicks, 105u);

  // A child never seen adds all of its work.
  parent.record(cpu(135 + 12));
  EXPECT_EQ(parent.reported().cpuTicks, 117u);
}

TEST(WorkLedger, HandsOnWhatItsOwnVanishedChildrenHadCounted) {
  // Grandchild seen at 20, child at 50 (its own work); between two readings the grandchild
  // does 5 more and is reaped by the child, which does 1 more and is reaped by the parent.
  WorkLedger parent, child, grandchild;
  parent.record(cpu(10));
  child.record(cpu(50));
  grandchild.record(cpu(20));
  child.takeOff(grandchild.handedOn());
  parent.takeOff(child.handedOn());
  parent.record(cpu(10 + 51 + 25));
  EXPECT_EQ(parent.reported().cpuTicks, 10u + 1 + 5);

  // Once read again, the child's totals hold what it reaped: nothing more is handed on.
  WorkLedger reread;
  reread.record(cpu(50));
  reread.takeOff(cpu(20));
  reread.record(cpu(75));
  EXPECT_EQ(reread.handedOn().cpuTicks, 75u);
}

TEST(WorkLedger, NeverGoesBackAndNeverTakesOffSwitches) {
  WorkLedger parent;
  parent.record(Work{.cpuTicks = 100, .readBytes = 1000, .switches = 40});
  // Read after the child's exit but before its reaping: the take-off comes first.
  parent.takeOff(Work{.cpuTicks = 30, .readBytes = 400, .switches = 99});
  EXPECT_EQ(parent.reported(), (Work{.cpuTicks = 100, .readBytes = 1000, .switches = 40}));
  parent.record(Work{.cpuTicks = 132, .readBytes = 1400, .switches = 41});
  EXPECT_EQ(parent.reported(), (Work{.cpuTicks = 102, .readBytes = 1000, .switches = 41}));

  WorkLedger child;
  child.record(Work{.cpuTicks = 5, .switches = 7});
  EXPECT_EQ(child.handedOn(), (Work{.cpuTicks = 5}));

  // A newborn's first reading adopted: counted at once, kept through later readings.
  parent.adopt(Work{.cpuTicks = 8, .switches = 2});
  EXPECT_EQ(parent.reported().cpuTicks, 110u);
  parent.record(Work{.cpuTicks = 133, .readBytes = 1400, .switches = 41});
  EXPECT_EQ(parent.reported().cpuTicks, 111u);
  EXPECT_EQ(parent.reported().switches, 43u);
}

}  // namespace
}  // namespace pellwin
