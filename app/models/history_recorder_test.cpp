#include "app/models/history_recorder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <iterator>

#include "testing/owner_loop.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

using testing::fileBytes;
using testing::OwnerLoop;
using testing::ScratchFolder;

constexpr double kStart = 1'717'416'000;  // a whole minute; 3 June 2024 12:00 UTC

struct Fixture {
  OwnerLoop loop;
  std::atomic<double> clock{kStart};

  HistoryRecorderSetup setup(const std::filesystem::path& url) {
    return HistoryRecorderSetup{.url = url,
                                .post = loop.poster(),
                                .now = [this] { return clock.load(); },
                                .calendar = [](double) { return Calendar(); }};
  }
  // Waits until everything queued so far has run and its outcome has been applied.
  void settle(HistoryRecorder& recorder) {
    bool done = false;
    recorder.read<std::int64_t>([](const HistoryStore&) { return SQLiteResult<std::int64_t>(0); },
                                [&](std::expected<std::int64_t, HistoryFailure>) { done = true; });
    ASSERT_TRUE(loop.runUntil([&] { return done; }));
  }
  template <class T>
  std::expected<T, HistoryFailure> read(HistoryRecorder& recorder,
                                        std::function<SQLiteResult<T>(const HistoryStore&)> body) {
    std::optional<std::expected<T, HistoryFailure>> result;
    recorder.read<T>(std::move(body), [&](std::expected<T, HistoryFailure> r) { result = r; });
    EXPECT_TRUE(loop.runUntil([&] { return result.has_value(); }));
    return result.value_or(std::unexpected(HistoryFailure{"no answer"}));
  }
};

Snapshot snapshotAt(double time) {
  Snapshot snapshot;
  snapshot.timestamp = time;
  snapshot.interval = 5;
  snapshot.memory.swapInBytesPerSecond = 3e7;
  return snapshot;
}

const std::map<Resource, Health> kMemoryRed = {{Resource::memory, Health::problem}};

TEST(HistoryRecorder, StoreURLTakesTheSwitchOrTheDataFolder) {
  EXPECT_EQ(HistoryRecorder::storeURL(std::nullopt, "/home/me/.local/share/Tovrin"),
            "/home/me/.local/share/Tovrin/history.sqlite");
  EXPECT_EQ(HistoryRecorder::storeURL("/tmp/x.sqlite", "/home/me/.local/share/Tovrin"),
            "/tmp/x.sqlite");
}

TEST(HistoryRecorder, RecordsBatchesAndReportsRevisionAndUnreadAlerts) {
  ScratchFolder scratch;
  Fixture f;
  HistoryRecorder recorder(f.setup(scratch / "data/history.sqlite"));
  f.settle(recorder);
  EXPECT_EQ(recorder.failure(), std::nullopt);
  EXPECT_EQ(recorder.revision(), 0);

  // A 2-second tick does not complete a sample: nothing to write, nothing changes.
  Snapshot tick = snapshotAt(kStart);
  tick.interval = 2;
  recorder.record(tick, kMemoryRed, {}, {});
  f.settle(recorder);
  EXPECT_EQ(recorder.revision(), 0);

  int changes = 0;
  recorder.onChange([&] { ++changes; });
  for (int i = 1; i <= 3; ++i) recorder.record(snapshotAt(kStart + 5 * i), kMemoryRed, {}, {});
  recorder.record(snapshotAt(kStart + 20), kMemoryRed, {},
                  {{.resource = Resource::memory, .message = "Memory is full"}});
  f.settle(recorder);
  EXPECT_EQ(recorder.revision(), 4);
  EXPECT_EQ(recorder.unreadAlerts(), 1);
  EXPECT_EQ(changes, 4);

  auto samples = f.read<std::int64_t>(
      recorder, [](const HistoryStore& s) { return s.rowCount(HistoryTable::samples); });
  EXPECT_EQ(samples, 4) << "a read queued after records sees their rows";

  recorder.markAlertsRead();
  EXPECT_EQ(recorder.unreadAlerts(), 0) << "at once";
  auto unread =
      f.read<std::int64_t>(recorder, [](const HistoryStore& s) { return s.unreadAlertCount(); });
  EXPECT_EQ(unread, 0);

  recorder.logClean("Browser caches", 1000, 2000, 3);
  f.settle(recorder);
  EXPECT_EQ(recorder.revision(), 5) << "a logged cleanup is a change to history";
  EXPECT_EQ(changes, 6);
  std::optional<std::expected<void, HistoryFailure>> cleared;
  recorder.clearAll([&](std::expected<void, HistoryFailure> r) { cleared = r; });
  ASSERT_TRUE(f.loop.runUntil([&] { return cleared.has_value(); }));
  EXPECT_TRUE(cleared->has_value());
  EXPECT_EQ(recorder.revision(), 6);
  auto cleans = f.read<std::int64_t>(
      recorder, [](const HistoryStore& s) { return s.rowCount(HistoryTable::cleans); });
  EXPECT_EQ(cleans, 1) << "the cleanup log survives clearing";
}

TEST(HistoryRecorder, OpeningClosesWhatTheLastRunLeftOpenAndContinuesToday) {
  ScratchFolder scratch;
  const auto path = scratch / "history.sqlite";
  {
    auto store = HistoryStore::open(path);
    ASSERT_TRUE(store.has_value());
    ASSERT_TRUE(
        store
            ->write(RollupOutput{.samples = {{.time = kStart - 100, .span = 5}},
                                 .episodes = {{.resource = Resource::cpu, .start = kStart - 500}},
                                 .alerts = {{.time = kStart - 400, .started = kStart - 500}},
                                 .days = {{.day = "2024-06-03",
                                           .resource = Resource::memory,
                                           .problemSeconds = 1000}}})
            .has_value());
  }
  Fixture f;
  {
    HistoryRecorder recorder(f.setup(path));
    f.settle(recorder);
    EXPECT_EQ(recorder.unreadAlerts(), 1);
    auto episodes = f.read<std::vector<EpisodeRow>>(
        recorder, [](const HistoryStore& s) { return s.episodes(0, kStart); });
    ASSERT_TRUE(episodes.has_value() && episodes->size() == 1);
    EXPECT_EQ((*episodes)[0].end, std::optional<double>(kStart - 100));
    // A red minute later today, then a closed minute: the day row goes on from 1000 s.
    for (double t = kStart; t <= kStart + 65; t += 5)
      recorder.record(snapshotAt(t), kMemoryRed, {}, {});
    f.settle(recorder);
  }
  auto store = HistoryStore::open(path);
  auto days = store->days("2024-06-03", "2024-06-03");
  ASSERT_TRUE(days.has_value() && !days->empty());
  EXPECT_EQ((*days)[0].problemSeconds, 1070) << "14 snapshots of 5 s, flushed at stop";
}

TEST(HistoryRecorder, PrunesAtOpenAndThenHourlyBySnapshotTime) {
  ScratchFolder scratch;
  const auto path = scratch / "history.sqlite";
  {
    auto store = HistoryStore::open(path);
    ASSERT_TRUE(store
                    ->write(RollupOutput{.samples = {{.time = kStart - 86401, .span = 5},
                                                     {.time = kStart - 86000, .span = 5},
                                                     {.time = kStart - 82000, .span = 5}}})
                    .has_value());
  }
  Fixture f;
  HistoryRecorder recorder(f.setup(path));
  auto count = [&] {
    return f.read<std::int64_t>(
        recorder, [](const HistoryStore& s) { return s.rowCount(HistoryTable::samples); });
  };
  EXPECT_EQ(count(), 2) << "the first prune runs at open";
  recorder.record(snapshotAt(kStart + 3599), {}, {}, {});
  EXPECT_EQ(count(), 3) << "no prune within the hour";
  recorder.record(snapshotAt(kStart + 3600), {}, {}, {});
  EXPECT_EQ(count(), 3) << "an hour after the last prune; its cutoff keeps the rest";
  recorder.record(snapshotAt(kStart + 4005), {}, {}, {});
  EXPECT_EQ(count(), 4) << "the next prune is due an hour after the last";
  recorder.record(snapshotAt(kStart + 7200), {}, {}, {});
  EXPECT_EQ(count(), 4);
}

// A store that cannot be opened: failure set, unread 0, records change nothing, reads fail.
void expectHistoryOff(Fixture& f, HistoryRecorder& recorder, const std::string& failure) {
  f.settle(recorder);
  EXPECT_EQ(recorder.failure(), failure);
  const auto revision = recorder.revision();
  for (double t = kStart; t < kStart + 200; t += 5) {
    recorder.record(snapshotAt(t), kMemoryRed, {},
                    {{.resource = Resource::memory, .message = "still red"}});
  }
  recorder.logClean("x", 1, 1, 1);
  f.settle(recorder);
  EXPECT_EQ(recorder.revision(), revision);
  EXPECT_EQ(recorder.unreadAlerts(), 0);
  EXPECT_EQ(recorder.failure(), failure);
  auto read =
      f.read<std::int64_t>(recorder, [](const HistoryStore& s) { return s.unreadAlertCount(); });
  EXPECT_EQ(read, std::unexpected(HistoryFailure{"History isn't open"}));
}

TEST(HistoryRecorder, AFileThatIsNotADatabaseTurnsHistoryOff) {
  ScratchFolder scratch;
  const auto path = scratch.write("history.sqlite", "this is a note, not a database\n");
  Fixture f;
  {
    HistoryRecorder recorder(f.setup(path));
    expectHistoryOff(f, recorder, "SQLite error 26: file is not a database");
  }
  EXPECT_EQ(fileBytes(path), "this is a note, not a database\n");
}

TEST(HistoryRecorder, AFileOfANewerVersionTurnsHistoryOffAndIsLeftAsItWas) {
  ScratchFolder scratch;
  const auto path = scratch / "history.sqlite";
  {
    auto db = SQLiteDatabase::open(path.string());
    ASSERT_TRUE(db->exec("CREATE TABLE t (x); PRAGMA user_version = 7").has_value());
  }
  const std::string before = fileBytes(path);
  Fixture f;
  {
    HistoryRecorder recorder(f.setup(path));
    expectHistoryOff(f, recorder, "History was written by a newer Tovrin (version 7)");
  }
  EXPECT_EQ(fileBytes(path), before);
}

// Runs the rest of a test in a private mount namespace, so mounts made by it are seen by this
// process only and vanish with it. Root only; false when the system does not allow it.
bool enterPrivateMountNamespace() {
  if (::geteuid() != 0) return false;
  if (::unshare(CLONE_NEWNS) != 0) return false;
  return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

TEST(HistoryRecorder, AReadOnlyFolderTurnsHistoryOff) {
  ScratchFolder scratch;
  const auto folder = scratch / "ro";
  std::filesystem::create_directories(folder);
  {
    // A history written while the folder could still be written to.
    auto store = HistoryStore::open(folder / "existing.sqlite");
    ASSERT_TRUE(store.has_value());
  }
  if (::geteuid() == 0) {
    // Root ignores permissions; a read-only bind mount stops even root.
    if (!enterPrivateMountNamespace() ||
        ::mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) != 0 ||
        ::mount(nullptr, folder.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
      GTEST_SKIP() << "cannot make a read-only folder as root here";
    }
  } else {
    std::filesystem::permissions(
        folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  }
  for (const char* name : {"new.sqlite", "existing.sqlite"}) {
    SCOPED_TRACE(name);
    Fixture f;
    HistoryRecorder recorder(f.setup(folder / name));
    f.settle(recorder);
    // A new file cannot be created; an existing one opens read-only at best and then
    // cannot be written: either way history goes off with SQLite's words.
    for (double t = kStart; t < kStart + 30; t += 5)
      recorder.record(snapshotAt(t), kMemoryRed, {}, {});
    f.settle(recorder);
    ASSERT_TRUE(recorder.failure().has_value());
    EXPECT_TRUE(recorder.failure()->starts_with("SQLite error ")) << *recorder.failure();
    const auto revision = recorder.revision();
    for (double t = kStart + 30; t < kStart + 100; t += 5)
      recorder.record(snapshotAt(t), kMemoryRed, {}, {});
    f.settle(recorder);
    EXPECT_EQ(recorder.revision(), revision);
  }
  if (::geteuid() == 0) ::umount2(folder.c_str(), MNT_DETACH);
}

TEST(HistoryRecorder, AFullDiskTurnsHistoryOffAndRecordingGoesOn) {
  ScratchFolder scratch;
  const auto disk = scratch / "small-disk";
  std::filesystem::create_directories(disk);
  if (!enterPrivateMountNamespace() ||
      ::mount("tovrin-test", disk.c_str(), "tmpfs", 0, "size=1m") != 0) {
    GTEST_SKIP() << "a small file system needs root and mount rights";
  }
  Fixture f;
  {
    HistoryRecorder recorder(f.setup(disk / "history.sqlite"));
    f.settle(recorder);
    ASSERT_EQ(recorder.failure(), std::nullopt);
    recorder.record(snapshotAt(kStart), kMemoryRed, {}, {});
    f.settle(recorder);
    EXPECT_EQ(recorder.revision(), 1) << "writes work while there is room";

    // Fill the disk to the last byte.
    {
      const int fd = ::open((disk / "filler").c_str(), O_WRONLY | O_CREAT, 0600);
      ASSERT_GE(fd, 0);
      const std::string chunk(4096, 'x');
      while (::write(fd, chunk.data(), chunk.size()) > 0) {
      }
      ::close(fd);
    }
    for (double t = kStart + 5; t < kStart + 400; t += 5)
      recorder.record(snapshotAt(t), kMemoryRed, {}, {});
    f.settle(recorder);
    EXPECT_EQ(recorder.failure(), "SQLite error 13: database or disk is full");
    const auto revision = recorder.revision();
    for (double t = kStart + 400; t < kStart + 600; t += 5)
      recorder.record(snapshotAt(t), kMemoryRed, {}, {});
    f.settle(recorder);
    EXPECT_EQ(recorder.revision(), revision) << "history stays off until the next start";
  }
  ::umount2(disk.c_str(), MNT_DETACH);
}

}  // namespace
}  // namespace pellwin
