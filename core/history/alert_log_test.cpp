#include "core/history/alert_log.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

using Displayed = std::map<Resource, Health>;

Snapshot snapshotAt(double time, std::set<Resource> unavailable = {}) {
  Snapshot snapshot;
  snapshot.timestamp = time;
  snapshot.interval = 2;
  snapshot.unavailable = std::move(unavailable);
  return snapshot;
}

const Displayed kMemoryRed = {{Resource::memory, Health::problem}};
const AlertNotice kMemoryNotice{.resource = Resource::memory,
                                .message = "Your Mac is slow because memory is full",
                                .cause = "Google Chrome 10.6 GB"};

TEST(AlertLog, RecordsTheNoticeWithTheStartOfItsRedStretchAndClearsItOnce) {
  AlertLog log;
  for (double t = 100; t < 220; t += 2)
    EXPECT_EQ(log.ingest(snapshotAt(t), kMemoryRed, {}), AlertLog::Output{});
  const auto sent = log.ingest(snapshotAt(220), kMemoryRed, {kMemoryNotice});
  EXPECT_EQ(sent.alerts, (std::vector<AlertRow>{{.id = 0,
                                                 .time = 220,
                                                 .started = 98,
                                                 .resource = Resource::memory,
                                                 .message = kMemoryNotice.message,
                                                 .cause = kMemoryNotice.cause,
                                                 .cleared = std::nullopt,
                                                 .read = false}}))
      << "the stretch began where the first red snapshot's interval began";
  EXPECT_TRUE(log.ingest(snapshotAt(222), kMemoryRed, {}).cleared.empty());
  const auto ended = log.ingest(snapshotAt(224), {{Resource::memory, Health::strain}}, {});
  EXPECT_EQ(ended.cleared, (std::vector<AlertClear>{{.resource = Resource::memory, .at = 222}}));
  EXPECT_TRUE(log.ingest(snapshotAt(226), {}, {}).cleared.empty()) << "exactly one clear";
}

TEST(AlertLog, ALostReadingOrAGapEndsTheRedStretch) {
  {
    SCOPED_TRACE("reading lost while shown red");
    AlertLog log;
    (void)log.ingest(snapshotAt(0), kMemoryRed, {kMemoryNotice});
    (void)log.ingest(snapshotAt(2), kMemoryRed, {});
    const auto lost = log.ingest(snapshotAt(4, {Resource::memory}), kMemoryRed, {});
    EXPECT_EQ(lost.cleared, (std::vector<AlertClear>{{.resource = Resource::memory, .at = 2}}));
  }
  {
    SCOPED_TRACE("31 s without snapshots");
    AlertLog log;
    const Displayed both = {{Resource::memory, Health::problem}, {Resource::cpu, Health::problem}};
    (void)log.ingest(snapshotAt(0), both,
                     {{.resource = Resource::cpu, .message = "c"}, kMemoryNotice});
    (void)log.ingest(snapshotAt(2), both, {});
    const auto afterGap = log.ingest(snapshotAt(33), both, {});
    EXPECT_EQ(afterGap.cleared, (std::vector<AlertClear>{{.resource = Resource::memory, .at = 2},
                                                         {.resource = Resource::cpu, .at = 2}}));
    const auto again = log.ingest(snapshotAt(35), both, {kMemoryNotice});
    ASSERT_EQ(again.alerts.size(), 1u);
    EXPECT_EQ(again.alerts[0].started, 31) << "a new stretch began after the gap";
    EXPECT_EQ(log.closeOpen(), (std::vector<AlertClear>{{.resource = Resource::memory, .at = 35}}));
    EXPECT_TRUE(log.closeOpen().empty());
  }
}

}  // namespace
}  // namespace pellwin
