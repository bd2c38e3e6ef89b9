#include "app/models/history_recorder.h"

#include "store/retention.h"

namespace pellwin {

namespace {

// The history queue runs at utility priority: below the sampler and the screens.
constexpr int kUtilityNiceness = 5;

bool hasNewAlerts(const RollupOutput& output) { return !output.alerts.empty(); }

}  // namespace

std::filesystem::path HistoryRecorder::storeURL(const std::optional<std::string>& historyDatabase,
                                                const std::string& dataFolder) {
  if (historyDatabase) return *historyDatabase;
  return std::filesystem::path(dataFolder) / "history.sqlite";
}

void HistoryRecorder::Observed::apply(const HistoryOutcome& outcome) {
  if (outcome.failure) failure = outcome.failure;
  if (outcome.unread) unreadAlerts = *outcome.unread;
  if (outcome.wrote) ++revision;
  if (changed) changed();
}

HistoryRecorder::HistoryRecorder(HistoryRecorderSetup setup)
    : setup_(std::move(setup)),
      observed_(std::make_shared<Observed>()),
      worker_(std::make_unique<Worker>()),
      queue_(queueLabel, kUtilityNiceness) {
  queue_.async([this] {
    Worker& w = *worker_;
    HistoryOutcome outcome;
    auto fail = [&](std::string text) {
      w.store.reset();
      w.failure = text;
      outcome = HistoryOutcome{.wrote = false, .unread = std::nullopt, .failure = std::move(text)};
    };
    auto opened = HistoryStore::open(setup_.url);
    if (!opened) {
      fail(description(opened.error()));
    } else {
      w.store.emplace(std::move(*opened));
      const double now = setup_.now();
      const Calendar calendar = setup_.calendar(now);
      const std::string today = calendar.dayKey(now);
      auto step = [&]() -> SQLiteResult<std::int64_t> {
        auto last = w.store->lastSampleTime();
        if (!last) return std::unexpected(last.error());
        if (*last) {
          if (auto closed = w.store->closeDangling(**last); !closed) {
            return std::unexpected(closed.error());
          }
        }
        auto seed = w.store->days(today, today);
        if (!seed) return std::unexpected(seed.error());
        w.rollup.emplace(calendar, *seed);
        if (auto pruned = w.store->prune(now, Retention::defaultDays); !pruned) {
          return std::unexpected(pruned.error());
        }
        w.lastPrune = now;
        return w.store->unreadAlertCount();
      };
      if (auto unread = step(); unread) {
        outcome.unread = *unread;
      } else {
        fail(unread.error().description());
      }
    }
    deliver([outcome](Observed& observed) { observed.apply(outcome); });
  });
}

HistoryRecorder::~HistoryRecorder() {
  queue_.async([this] {
    Worker& w = *worker_;
    if (!w.store || !w.rollup) return;
    const RollupOutput rest = w.rollup->flush();
    // At shutdown there is no one left to tell of a failed write.
    if (!rest.isEmpty()) (void)w.store->write(rest);
  });
  // The queue's destructor runs the flush and everything before it, then joins.
}

void HistoryRecorder::deliver(std::function<void(Observed&)> work) const {
  setup_.post([weak = std::weak_ptr<Observed>(observed_), work = std::move(work)] {
    if (auto observed = weak.lock()) work(*observed);
  });
}

void HistoryRecorder::record(Snapshot snapshot, std::map<Resource, Health> displayed,
                             std::map<Resource, Lead> leads, std::vector<AlertNotice> alerted) {
  queue_.async([this, snapshot = std::move(snapshot), displayed = std::move(displayed),
                leads = std::move(leads), alerted = std::move(alerted)] {
    Worker& w = *worker_;
    HistoryOutcome outcome;
    if (!w.store || !w.rollup) {
      outcome.failure = w.failure;
    } else {
      const RollupOutput output = w.rollup->ingest(snapshot, displayed, leads, alerted);
      auto step = [&]() -> SQLiteResult<void> {
        if (!output.isEmpty()) {
          if (auto written = w.store->write(output); !written) return written;
        }
        if (snapshot.timestamp - w.lastPrune >= Retention::pruneEvery) {
          if (auto pruned = w.store->prune(snapshot.timestamp, Retention::defaultDays); !pruned) {
            return pruned;
          }
          w.lastPrune = snapshot.timestamp;
        }
        if (hasNewAlerts(output)) {
          auto unread = w.store->unreadAlertCount();
          if (!unread) return std::unexpected(unread.error());
          outcome.unread = *unread;
        }
        return {};
      };
      if (auto done = step(); done) {
        outcome.wrote = !output.isEmpty();
      } else {
        w.store.reset();
        w.failure = done.error().description();
        outcome = HistoryOutcome{.wrote = false, .unread = std::nullopt, .failure = w.failure};
      }
    }
    if (!outcome.wrote && !outcome.unread && !outcome.failure) return;
    deliver([outcome](Observed& observed) { observed.apply(outcome); });
  });
}

void HistoryRecorder::markAlertsRead() {
  observed_->unreadAlerts = 0;
  if (observed_->changed) observed_->changed();
  queue_.async([this] {
    // The badge is cleared already; alerts a failure leaves unread are counted again with the
    // next new alert.
    if (worker_->store) (void)worker_->store->markAllAlertsRead();
  });
}

void HistoryRecorder::logClean(std::string rules, std::uint64_t bytesDeleted,
                               std::uint64_t bytesTrashed, std::int64_t items) {
  queue_.async(
      [this, time = setup_.now(), rules = std::move(rules), bytesDeleted, bytesTrashed, items] {
        if (!worker_->store) return;
        // The clean is done either way; a failure only leaves it out of the history. A logged
        // one moves the revision, so an open report shows it without waiting for a sample.
        if (worker_->store->logClean(time, rules, bytesDeleted, bytesTrashed, items)) {
          deliver([](Observed& observed) { observed.apply(HistoryOutcome{.wrote = true}); });
        }
      });
}

void HistoryRecorder::clearAll(std::function<void(std::expected<void, HistoryFailure>)> then) {
  queue_.async([this, then = std::move(then)] {
    Worker& w = *worker_;
    std::expected<void, HistoryFailure> result;
    if (!w.store) {
      result = std::unexpected(HistoryFailure{"History isn't open"});
    } else if (auto cleared = w.store->clearAll(); !cleared) {
      result = std::unexpected(HistoryFailure{cleared.error().description()});
    } else {
      w.rollup.emplace(setup_.calendar(setup_.now()), std::vector<DayRow>{});
    }
    deliver([then, result](Observed& observed) {
      if (result) {
        observed.unreadAlerts = 0;
        ++observed.revision;
        if (observed.changed) observed.changed();
      }
      then(result);
    });
  });
}

}  // namespace pellwin
