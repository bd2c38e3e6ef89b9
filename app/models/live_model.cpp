#include "app/models/live_model.h"

#include <atomic>
#include <future>
#include <utility>

#include "core/history/alert_policy.h"
#include "core/monitor/diagnoser.h"
#include "core/monitor/snapshot_builder.h"
#include "core/monitor/snapshot_window.h"
#include "core/monitor/stabilizer.h"
#include "core/monitor/thresholds.h"

namespace pellwin {

Health LiveState::worst() const {
  Health worst = Health::ok;
  for (const auto& [resource, health] : displayed) worst = std::max(worst, health);
  return worst;
}

struct LiveModel::Sampler {
  explicit Sampler(AppGrouper::BundleIdentifierLookup bundleIdentifier)
      : builder(std::move(bundleIdentifier)) {}

  SnapshotBuilder builder;
  SnapshotWindow window{windowSpan};
  Diagnoser diagnoser{.thresholds = Thresholds::standard()};
  Stabilizer stabilizer{stabilizerHold};
  AlertPolicy alerts{.redFor = 120, .cooldown = 3600};
  BatterySession battery;
  // Set while a tick waits on the queue, so a slow reading never piles ticks up behind it.
  std::atomic<bool> tickQueued = false;
};

std::string LiveModel::notifyKey(Resource resource) {
  return "notify." + std::string(rawValue(resource));
}

LiveModel::LiveModel(Services services)
    : services_(std::move(services)),
      observed_(std::make_shared<Observed>()),
      sampler_(std::make_unique<Sampler>(services_.bundleIdentifier)),
      queue_(queueLabel, 0) {
  startTimer(firstReadingDelay);
}

LiveModel::~LiveModel() { timer_.reset(); }

void LiveModel::startTimer(double delay) {
  timer_.reset();  // the old timer has stopped firing before the new one starts
  timer_ = services_.ticker->repeat(delay, period_, [this] {
    if (sampler_->tickQueued.exchange(true)) return;
    queue_.async([this] {
      sampler_->tickQueued = false;
      tick();
    });
  });
}

void LiveModel::reconcileVisibility(bool anythingVisible) {
  const double wanted = anythingVisible ? visiblePeriod : hiddenPeriod;
  if (wanted == period_) return;
  period_ = wanted;
  startTimer(period_);
}

void LiveModel::waitForSampler() {
  std::promise<void> done;
  queue_.async([&done] { done.set_value(); });
  done.get_future().wait();
}

void LiveModel::tick() {
  Sampler& s = *sampler_;
  SystemSample sample = services_.read();
  const double at = sample.timestamp;
  const std::optional<BatteryReading> battery = sample.battery;
  std::optional<Snapshot> snapshot = s.builder.ingest(std::move(sample));
  if (!snapshot) {
    s.battery.ingest(at, battery, nullptr);
    return;
  }

  // Only the newest snapshot needs every app; older ones keep what the busy-app rule reads.
  if (const Snapshot* latest = s.window.latest()) {
    s.window.replaceLatest(latest->lean(s.diagnoser.thresholds.singleAppCores));
  }
  s.window.append(*snapshot);

  const auto raw = s.diagnoser.health(s.window);
  const std::map<Resource, Health> displayed =
      s.stabilizer.update(raw, snapshot->unavailable, snapshot->timestamp);
  std::optional<Verdict> verdict = s.diagnoser.verdict(s.window, displayed);
  s.battery.ingest(at, battery, &*snapshot);

  std::vector<AlertNotice> alerted;
  for (const Resource resource : s.alerts.due(displayed, snapshot->timestamp)) {
    if (services_.setting(notifyKey(resource)) == false) continue;
    const std::optional<Notice> notice = verdict ? verdict->notice(resource) : std::nullopt;
    if (!notice) continue;
    services_.notify(notice->title, notice->body);
    alerted.push_back({.resource = resource, .message = notice->title, .cause = notice->cause});
  }

  std::map<Resource, Lead> leads = verdict ? verdict->leads() : std::map<Resource, Lead>{};
  auto published = std::make_shared<LiveState>(LiveState{.snapshot = std::move(snapshot),
                                                         .verdict = std::move(verdict),
                                                         .displayed = displayed,
                                                         .battery = s.battery});
  services_.post([weak = std::weak_ptr(observed_), record = services_.record, published,
                  leads = std::move(leads), alerted = std::move(alerted)]() mutable {
    const auto observed = weak.lock();
    if (!observed) return;
    if (record) {
      record(*published->snapshot, published->displayed, std::move(leads), std::move(alerted));
    }
    observed->state = std::move(*published);
    if (observed->changed) observed->changed();
  });
}

}  // namespace pellwin
