// The one long-lived owner of the monitor. It reads the machine on a timer, keeps ten minutes
// of snapshots, judges health, holds what is shown steady, asks the alert policy what to
// notify, hands every snapshot to history and publishes what the screens show.
//
// Threads: reading and judging run on the serial queue "com.pellwin.sampler", which alone
// touches the reader, the snapshot builder, the window, the stabilizer, the alert policy and
// the battery session, so none of them is locked. Every public member is called on the
// owner's thread, and the published state changes only there, through the owner's `post`.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/serial_queue.h"
#include "app/ticker.h"
#include "core/history/alert_row.h"
#include "core/monitor/app_grouper.h"
#include "core/monitor/battery_session.h"
#include "core/monitor/lead.h"
#include "core/monitor/readings.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"
#include "core/monitor/verdict.h"

namespace pellwin {

// What the screens and the tray show, as of the last tick that made a snapshot.
struct LiveState {
  std::optional<Snapshot> snapshot{};  // the newest, with every app
  std::optional<Verdict> verdict{};
  std::map<Resource, Health> displayed{};
  BatterySession battery{};

  // The dot's colour: the worst health shown; healthy before the first snapshot.
  [[nodiscard]] Health worst() const;
};

class LiveModel {
 public:
  static constexpr const char* queueLabel = "com.pellwin.sampler";
  static constexpr double firstReadingDelay = 1.0;
  static constexpr double visiblePeriod = 2.0;
  static constexpr double hiddenPeriod = 5.0;
  static constexpr double windowSpan = 600.0;
  static constexpr double stabilizerHold = 30.0;

  struct Services {
    // Reads the machine. Sampler queue.
    std::function<SystemSample()> read;
    // The app lookup the snapshot builder groups with. Sampler queue.
    AppGrouper::BundleIdentifierLookup bundleIdentifier{};
    // A stored user setting ("notify.cpu"), absent when never written. Sampler queue.
    std::function<std::optional<bool>(std::string_view key)> setting;
    // Posts a notification; must return at once. Sampler queue.
    std::function<void(std::string title, std::string body)> notify;
    // Hands one snapshot to history (HistoryRecorder::record). Owner's thread.
    std::function<void(Snapshot, std::map<Resource, Health> displayed,
                       std::map<Resource, Lead> leads, std::vector<AlertNotice> alerted)>
        record;
    // Runs a closure on the owner's thread, later, in the order given.
    std::function<void(std::function<void()>)> post;
    // Where the timers come from. Must outlive the model.
    Ticker* ticker = nullptr;
  };

  // The settings key that switches notifications for `resource` on and off.
  [[nodiscard]] static std::string notifyKey(Resource resource);

  // Starts the timer: the first reading comes `firstReadingDelay` seconds later, then one every
  // `hiddenPeriod` seconds until something is shown.
  explicit LiveModel(Services services);
  // Stops the timer and waits for a running tick; what it posts afterwards is dropped.
  ~LiveModel();
  LiveModel(const LiveModel&) = delete;
  LiveModel& operator=(const LiveModel&) = delete;

  // Whether a window or the panel is visible now. The timer is replaced, starting afresh, only
  // when this changes the period; otherwise the running timer is kept.
  void reconcileVisibility(bool anythingVisible);
  [[nodiscard]] double period() const { return period_; }

  [[nodiscard]] const LiveState& state() const { return observed_->state; }
  // Called on the owner's thread after each change of `state()`.
  void onChange(std::function<void()> changed) { observed_->changed = std::move(changed); }

  // Blocks until every tick already queued has finished. For tests and benchmarks.
  void waitForSampler();

 private:
  struct Observed {
    LiveState state;
    std::function<void()> changed;
  };
  struct Sampler;

  void startTimer(double delay);
  void tick();

  Services services_;
  double period_ = hiddenPeriod;
  std::shared_ptr<Observed> observed_;
  std::unique_ptr<Sampler> sampler_;  // touched only on the queue
  SerialQueue queue_;
  std::unique_ptr<RepeatingTimer> timer_;  // last: stopped first, before the queue drains
};

}  // namespace pellwin
