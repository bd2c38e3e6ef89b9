// The app's one door to history. Takes every new snapshot and the screens' requests on the
// owner's thread, does all store and rollup work on its serial queue "com.pellwin.history",
// and hands results back through the `post` function the owner gives it (which must run a
// closure on the owner's thread: the Qt event loop in the app, a test's own loop in tests).
// Any store failure turns history off until the next start; recording then does nothing.
// Every public member must be called on the owner's thread.
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/serial_queue.h"
#include "core/base/calendar.h"
#include "core/history/alert_row.h"
#include "core/history/rollup.h"
#include "core/monitor/lead.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"
#include "store/history_store.h"

namespace pellwin {

// Why a read or a clear could not be done.
struct HistoryFailure {
  std::string message{};
  friend bool operator==(const HistoryFailure&, const HistoryFailure&) = default;
};

// What a step on the queue reports to the owner.
struct HistoryOutcome {
  bool wrote = false;                  // something was written or cleared
  std::optional<std::int64_t> unread;  // the new unread-alert count, when known and changed
  std::optional<std::string> failure;
};

struct HistoryRecorderSetup {
  std::filesystem::path url;
  // Runs a closure on the owner's thread, later, in the order given.
  std::function<void(std::function<void()>)> post;
  std::function<double()> now;                   // the current time, seconds since 1970
  std::function<Calendar(double now)> calendar;  // the local calendar in force
};

class HistoryRecorder {
 public:
  static constexpr const char* queueLabel = "com.pellwin.history";

  // "--history-db PATH" when given, otherwise the data folder's "history.sqlite".
  [[nodiscard]] static std::filesystem::path storeURL(
      const std::optional<std::string>& historyDatabase, const std::string& dataFolder);

  // Starts the queue and opens the store on it: closes what the last run left open, continues
  // today's totals, prunes.
  explicit HistoryRecorder(HistoryRecorderSetup setup);
  // Writes what the rollup still holds, then waits for the queue to finish.
  ~HistoryRecorder();
  HistoryRecorder(const HistoryRecorder&) = delete;
  HistoryRecorder& operator=(const HistoryRecorder&) = delete;

  // Queues one recording step; returns at once.
  void record(Snapshot snapshot, std::map<Resource, Health> displayed,
              std::map<Resource, Lead> leads, std::vector<AlertNotice> alerted);

  // Runs `body` on the queue and hands its result to `then` on the owner's thread; with no
  // store the result is the failure "History isn't open".
  template <class T>
  void read(std::function<SQLiteResult<T>(const HistoryStore&)> body,
            std::function<void(std::expected<T, HistoryFailure>)> then);

  // Sets the unread count to 0 at once, then marks the stored alerts read (failures ignored).
  void markAlertsRead();
  // Logs a cleanup at the current time and moves the revision; ignored with no store, failures
  // ignored (the revision stays).
  void logClean(std::string rules, std::uint64_t bytesDeleted, std::uint64_t bytesTrashed,
                std::int64_t items);
  // Empties history but the cleanup log and restarts the rollup.
  void clearAll(std::function<void(std::expected<void, HistoryFailure>)> then);

  // Observable values, updated on the owner's thread.
  [[nodiscard]] std::int64_t revision() const { return observed_->revision; }
  [[nodiscard]] std::int64_t unreadAlerts() const { return observed_->unreadAlerts; }
  [[nodiscard]] const std::optional<std::string>& failure() const { return observed_->failure; }
  // Called on the owner's thread after any of the three values may have changed.
  void onChange(std::function<void()> changed) { observed_->changed = std::move(changed); }

 private:
  struct Observed {
    std::int64_t revision = 0;
    std::int64_t unreadAlerts = 0;
    std::optional<std::string> failure;
    std::function<void()> changed;
    void apply(const HistoryOutcome& outcome);
  };
  struct Worker;

  // Posts `work` to the owner's thread unless the recorder is gone by then.
  void deliver(std::function<void(Observed&)> work) const;

  HistoryRecorderSetup setup_;
  std::shared_ptr<Observed> observed_;
  std::unique_ptr<Worker> worker_;  // touched only on the queue
  SerialQueue queue_;               // last: destroyed (drained and joined) first
};

struct HistoryRecorder::Worker {
  std::optional<HistoryStore> store;
  std::optional<Rollup> rollup;
  double lastPrune = 0;
  std::optional<std::string> failure;
};

template <class T>
void HistoryRecorder::read(std::function<SQLiteResult<T>(const HistoryStore&)> body,
                           std::function<void(std::expected<T, HistoryFailure>)> then) {
  queue_.async([this, body = std::move(body), then = std::move(then)]() mutable {
    std::expected<T, HistoryFailure> result = std::unexpected(HistoryFailure{"History isn't open"});
    if (worker_->store) {
      SQLiteResult<T> read = body(*worker_->store);
      if (read) {
        result = std::move(*read);
      } else {
        result = std::unexpected(HistoryFailure{read.error().description()});
      }
    }
    auto shared = std::make_shared<std::expected<T, HistoryFailure>>(std::move(result));
    deliver([then = std::move(then), shared](Observed&) { then(std::move(*shared)); });
  });
}

}  // namespace pellwin
