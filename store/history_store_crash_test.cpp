// A writer killed in the middle of a batch leaves a file that opens, passes SQLite's integrity
// check, and holds every batch either whole or not at all.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "store/history_store.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

constexpr int kSamplesPerBatch = 20000;
constexpr double kBatchStride = 100000;

RollupOutput batch(int k) {
  RollupOutput output;
  for (int j = 0; j < kSamplesPerBatch; ++j) {
    output.samples.push_back(SampleRow{.time = k * kBatchStride + j,
                                       .span = 5,
                                       .values = {{HistoryMetric::cpuBusy, 0.5}},
                                       .health = {{Resource::cpu, Health::ok}}});
  }
  output.alerts.push_back(AlertRow{.time = k * kBatchStride, .message = std::to_string(k)});
  output.days.push_back(DayRow{.day = "batch " + std::to_string(k), .problemSeconds = 1});
  return output;
}

// Runs in the child: announces each batch before writing it ('B') and after its commit ('C').
[[noreturn]] void writeBatchesForever(const std::filesystem::path& path, int pipeOut) {
  auto store = HistoryStore::open(path);
  if (!store) _exit(3);
  for (int k = 0;; ++k) {
    const RollupOutput output = batch(k);
    if (::write(pipeOut, "B", 1) != 1) _exit(4);
    if (!store->write(output)) _exit(5);
    if (::write(pipeOut, "C", 1) != 1) _exit(4);
  }
}

TEST(HistoryStoreCrash, AKilledWriterLeavesOnlyWholeBatches) {
  testing::ScratchFolder scratch;
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    const auto path = scratch / ("history-" + std::to_string(round) + ".sqlite");
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(fds[0]);
      writeBatchesForever(path, fds[1]);
    }
    ::close(fds[1]);
    // Let two batches commit, then kill shortly after the third one begins.
    int begun = 0;
    char mark = 0;
    while (begun < 3 && ::read(fds[0], &mark, 1) == 1) {
      if (mark == 'B') ++begun;
    }
    ASSERT_EQ(begun, 3) << "the writer stopped early";
    std::this_thread::sleep_for(std::chrono::milliseconds(2 + 3 * round));
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    ::close(fds[0]);

    auto reopened = HistoryStore::open(path);
    ASSERT_TRUE(reopened.has_value()) << description(reopened.error());
    const SQLiteDatabase& db = reopened->database();
    auto integrity = db.query<std::string>("PRAGMA integrity_check", {},
                                           [](const SQLiteStatement& r) { return r.text(0); });
    EXPECT_EQ(integrity, std::vector<std::string>{"ok"});

    for (int k = 0; k < 3; ++k) {
      const auto samples = reopened->samples(k * kBatchStride, k * kBatchStride + kBatchStride - 1);
      ASSERT_TRUE(samples.has_value());
      auto alerts = db.query<std::int64_t>("SELECT COUNT(*) FROM alerts WHERE message = ?",
                                           std::vector<SQLiteValue>{std::to_string(k)},
                                           [](const SQLiteStatement& r) { return r.integer(0); });
      auto days = reopened->days("batch " + std::to_string(k), "batch " + std::to_string(k));
      ASSERT_TRUE(alerts.has_value() && days.has_value());
      const bool whole = samples->size() == kSamplesPerBatch && days->size() == 1;
      const bool none = samples->empty() && days->empty();
      EXPECT_TRUE(whole || none) << "batch " << k << " has " << samples->size() << " samples";
      EXPECT_EQ(alerts->front(), whole ? 1 : 0);
      if (k < 2) {
        EXPECT_TRUE(whole) << "batch " << k << " was committed";
      }
    }
  }
}

}  // namespace
}  // namespace pellwin
