#include "app/commands/seed_history.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <set>
#include <system_error>

#include "core/base/printable_text.h"
#include "core/history/alert_policy.h"
#include "core/history/rollup.h"
#include "core/monitor/diagnoser.h"
#include "core/monitor/snapshot_window.h"
#include "core/monitor/stabilizer.h"
#include "store/history_file_kind.h"

namespace pellwin::SeedHistory {

namespace {

// Both paths made absolute, normalised and with symbolic links resolved as far as they exist.
bool sameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code error;
  const auto left = std::filesystem::weakly_canonical(std::filesystem::absolute(a), error);
  if (error) return false;
  const auto right = std::filesystem::weakly_canonical(std::filesystem::absolute(b), error);
  if (error) return false;
  if (left == right) return true;
  return std::filesystem::equivalent(left, right, error) && !error;
}

void removeWithCompanions(const std::filesystem::path& path) {
  std::error_code ignored;
  for (const char* suffix : {"", "-wal", "-shm"}) {
    std::filesystem::remove(path.string() + suffix, ignored);
  }
}

// What the notification for a red resource said, as the alert log keeps it.
AlertNotice noticeFor(const ResourceVerdict& verdict) {
  AlertNotice notice{.resource = verdict.resource, .message = verdict.headline, .cause = {}};
  if (!verdict.contributors.empty()) {
    notice.cause = verdict.contributors.front().name + " " + verdict.contributors.front().value;
  }
  return notice;
}

// The live pipeline over the synthetic timeline, writing every batch.
SQLiteResult<void> runTimeline(const HistoryStore& store, const Calendar& calendar, double start) {
  SnapshotWindow window(600);
  const Diagnoser diagnoser;
  Stabilizer stabilizer(30);
  AlertPolicy policy{.redFor = 120, .cooldown = 3600};
  Rollup rollup(calendar, {});
  for (int i = 0; i < moments; ++i) {
    if (i >= gapFirst && i <= gapLast) continue;
    const double time = start + 5.0 * i;
    Snapshot snapshot = SeedHistory::snapshot(i, time);
    window.append(snapshot);
    const auto displayed = stabilizer.update(diagnoser.health(window), snapshot.unavailable, time);
    const std::optional<Verdict> verdict = diagnoser.verdict(window, displayed);
    std::vector<AlertNotice> alerted;
    for (Resource resource : policy.due(displayed, time)) {
      for (const ResourceVerdict& v : verdict->resources) {
        if (v.resource == resource && v.health == Health::problem) alerted.push_back(noticeFor(v));
      }
    }
    const RollupOutput output = rollup.ingest(snapshot, displayed, verdict->leads(), alerted);
    if (!output.isEmpty()) {
      if (auto written = store.write(output); !written) return written;
    }
  }
  return store.write(rollup.flush());
}

}  // namespace

SQLiteResult<void> writeEarlierDays(const HistoryStore& store,
                                    const std::vector<std::string>& timelineDays,
                                    const Calendar& calendar, double start) {
  const std::string first = *std::min_element(timelineDays.begin(), timelineDays.end());
  // Stepping back by quarter days finds every local date, whatever length its day had.
  std::set<std::string, std::greater<>> days;
  for (double t = start; days.size() < earlierDays; t -= 6 * 3600) {
    if (std::string day = calendar.dayKey(t); day < first) days.insert(std::move(day));
  }
  RollupOutput output;
  int offset = 1;
  for (const std::string& day : days) {
    for (DayRow& row : dayRows(offset++, day)) output.days.push_back(std::move(row));
  }
  return store.write(output);
}

int run(const std::filesystem::path& path, const std::filesystem::path& realStore, double now,
        const Calendar& calendar, std::ostream& out, std::ostream& err) {
  if (path.empty()) {
    err << "--seed-history needs a path\n";
    return 2;
  }
  if (sameFile(path, realStore)) {
    err << "--seed-history refuses the real history file; pass a scratch path\n";
    return 2;
  }
  // Seeding starts empty, but only by replacing what is safe to replace: a browser's
  // places.sqlite or any other program's file is never removed.
  const HistoryFileKind kind = historyFileKind(path);
  if (kind == HistoryFileKind::other) {
    err << "--seed-history refuses " << printableText(path.string())
        << ": it is neither empty nor a Tovrin history file; pass a scratch path\n";
    return 2;
  }
  if (path.extension() == ".sqlite") removeWithCompanions(path);
  auto store = HistoryStore::open(path);
  if (!store) {
    err << "seeding failed: " << description(store.error()) << "\n";
    return 1;
  }
  const double end = std::floor(now);
  const double start = end - 86395;
  auto seeded = runTimeline(*store, calendar, start);
  if (seeded) {
    seeded =
        writeEarlierDays(*store, {calendar.dayKey(start), calendar.dayKey(end)}, calendar, start);
  }
  const auto samples = store->rowCount(HistoryTable::samples);
  const auto episodes = store->rowCount(HistoryTable::episodes);
  const auto alerts = store->rowCount(HistoryTable::alerts);
  if (!seeded || !samples || !episodes || !alerts) {
    const SQLiteError error = !seeded     ? seeded.error()
                              : !samples  ? samples.error()
                              : !episodes ? episodes.error()
                                          : alerts.error();
    err << "seeding failed: " << error.description() << "\n";
    return 1;
  }
  out << "seeded " << *samples << " samples, " << *episodes << " episodes, " << *alerts
      << " alerts, gap " << static_cast<long long>(start + 40000) << "-"
      << static_cast<long long>(start + 42705) << "\n";
  return 0;
}

}  // namespace pellwin::SeedHistory
