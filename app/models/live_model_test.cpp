#include "app/models/live_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <mutex>

namespace pellwin {
namespace {

// Time stands still until the test moves it; timers fire on the test's thread.
class FakeTicker final : public Ticker {
 public:
  struct Started {
    double at, delay, period;
  };
  struct Timer {
    double next, period;
    std::function<void()> fire;
    bool alive = true;
  };

  std::unique_ptr<RepeatingTimer> repeat(double delay, double period,
                                         std::function<void()> fire) override {
    started.push_back({now, delay, period});
    auto timer = std::make_shared<Timer>(Timer{now + delay, period, std::move(fire)});
    timers_.push_back(timer);
    struct Handle final : RepeatingTimer {
      std::shared_ptr<Timer> timer;
      ~Handle() override { timer->alive = false; }
    };
    auto handle = std::make_unique<Handle>();
    handle->timer = timer;
    return handle;
  }

  // Fires every tick due up to `until`, waiting for the model to finish each one.
  void advance(double until, LiveModel& model) {
    while (true) {
      std::shared_ptr<Timer> due;
      for (const auto& timer : timers_) {
        if (timer->alive && timer->next <= until && (!due || timer->next < due->next)) due = timer;
      }
      if (!due) break;
      now = due->next;
      due->next += due->period;
      due->fire();
      model.waitForSampler();
      fired.push_back(now);
    }
    now = until;
  }

  // A suspended machine: the clock jumps `seconds` and every timer's next tick moves with it.
  void sleep(double seconds) {
    now += seconds;
    for (const auto& timer : timers_) timer->next += seconds;
  }

  double now = 0;
  std::vector<Started> started;
  std::vector<double> fired;

 private:
  std::vector<std::shared_ptr<Timer>> timers_;
};

// A four-core machine whose CPU is as busy as `busy` says, all of it one app's.
struct FakeMachine {
  const FakeTicker* clock;
  std::function<double(double now)> busy = [](double) { return 0.1; };
  double last = 0;
  double busyTicks = 0;
  double appNanos = 0;

  SystemSample read() {
    const double now = clock->now;
    const double share = busy(now);
    busyTicks += share * 400 * (now - last);
    appNanos += share * 4e9 * (now - last);
    last = now;
    SystemSample sample = SystemSample::at(now);
    sample.bootTime = 0;
    sample.coreCount = 4;
    sample.diskTotalBytes = 500'000'000'000;
    sample.diskFreeBytes = 200'000'000'000;
    sample.cpuTotalTicks = static_cast<std::uint64_t>(now * 400);
    sample.cpuBusyTicks = static_cast<std::uint64_t>(busyTicks);
    sample.processes = {{.pid = 42,
                         .name = "make",
                         .path = "/usr/bin/make",
                         .cpuTimeNanos = static_cast<std::uint64_t>(appNanos)}};
    return sample;
  }
};

struct Recorded {
  double at;
  std::vector<AlertNotice> alerted;
};

struct Harness {
  FakeTicker ticker;
  FakeMachine machine{.clock = &ticker};
  std::map<std::string, bool, std::less<>> settings;
  std::mutex mutex;
  std::vector<std::pair<std::string, std::string>> notifications;
  std::vector<double> notifiedAt;
  std::vector<std::function<void()>> posted;
  std::vector<Recorded> recorded;
  int changes = 0;
  std::unique_ptr<LiveModel> model;

  Harness() {
    model = std::make_unique<LiveModel>(LiveModel::Services{
        .read = [this] { return machine.read(); },
        .setting = [this](std::string_view key) -> std::optional<bool> {
          const auto found = settings.find(key);
          if (found == settings.end()) return std::nullopt;
          return found->second;
        },
        .notify =
            [this](std::string title, std::string body) {
              std::lock_guard lock(mutex);
              notifications.emplace_back(std::move(title), std::move(body));
              notifiedAt.push_back(ticker.now);
            },
        .record = [this](Snapshot snapshot, auto, auto,
                         std::vector<AlertNotice> alerted) {
          recorded.push_back({snapshot.timestamp, std::move(alerted)});
        },
        .post =
            [this](std::function<void()> step) {
              std::lock_guard lock(mutex);
              posted.push_back(std::move(step));
            },
        .ticker = &ticker,
    });
    model->onChange([this] { ++changes; });
  }

  // Moves time on and runs what the model posted, as the owner's loop would.
  void advance(double until) {
    ticker.advance(until, *model);
    std::vector<std::function<void()>> steps;
    {
      std::lock_guard lock(mutex);
      steps.swap(posted);
    }
    for (auto& step : steps) step();
  }
};

TEST(LiveModel, TheFirstReadingOnlySetsTheBaselineAndTheSecondPublishes) {
  Harness h;
  ASSERT_EQ(h.ticker.started.size(), 1u);
  EXPECT_EQ(h.ticker.started[0].delay, 1.0);
  EXPECT_EQ(h.ticker.started[0].period, 5.0) << "nothing is visible at start";

  h.advance(1.0);
  EXPECT_EQ(h.ticker.fired, std::vector<double>{1.0});
  EXPECT_EQ(h.changes, 0);
  EXPECT_FALSE(h.model->state().snapshot.has_value());
  EXPECT_TRUE(h.recorded.empty());

  h.advance(6.0);
  EXPECT_EQ(h.changes, 1);
  ASSERT_TRUE(h.model->state().snapshot.has_value());
  EXPECT_EQ(h.model->state().snapshot->timestamp, 6.0);
  EXPECT_EQ(h.model->state().snapshot->apps.size(), 1u);
  EXPECT_TRUE(h.model->state().verdict.has_value());
  EXPECT_EQ(h.model->state().worst(), Health::ok);
  ASSERT_EQ(h.recorded.size(), 1u) << "history gets every snapshot";
  EXPECT_EQ(h.recorded[0].at, 6.0);
}

TEST(LiveModel, VisibilityChangesThePeriodAtOnceAndKeepsAnUnchangedTimer) {
  Harness h;
  h.advance(7.0);  // ticks at 1 and 6; the next would be at 11
  h.model->reconcileVisibility(true);
  ASSERT_EQ(h.ticker.started.size(), 2u);
  EXPECT_EQ(h.ticker.started[1].period, 2.0);
  EXPECT_EQ(h.model->period(), 2.0);

  h.model->reconcileVisibility(true);
  EXPECT_EQ(h.ticker.started.size(), 2u) << "same period: the running timer stays";

  h.advance(12.0);
  EXPECT_EQ(h.ticker.fired, (std::vector<double>{1, 6, 9, 11}))
      << "the new period starts now, not at the old timer's next tick";

  h.model->reconcileVisibility(false);
  h.model->reconcileVisibility(false);
  ASSERT_EQ(h.ticker.started.size(), 3u);
  EXPECT_EQ(h.ticker.started[2].period, 5.0);
  h.advance(22.0);
  EXPECT_EQ(h.ticker.fired, (std::vector<double>{1, 6, 9, 11, 17, 22}));
}

// Red for `red` seconds, then healthy for `calm`, over and over.
std::function<double(double)> cycles(double red, double calm) {
  return [red, calm](double now) { return std::fmod(now, red + calm) < red ? 0.97 : 0.05; };
}

TEST(LiveModel, ARedResourceIsNotifiedOnceAfterTwoMinutesAndAtMostHourly) {
  Harness h;
  h.machine.busy = cycles(600, 600);
  h.advance(86400);

  // The first stretch turns red on screen after the averages and the hold, then two minutes.
  ASSERT_FALSE(h.notifiedAt.empty());
  EXPECT_GE(h.notifiedAt[0], 120.0 + 30.0);
  EXPECT_LE(h.notifiedAt[0], 120.0 + 30.0 + 60.0 + 10.0);
  for (std::size_t i = 1; i < h.notifiedAt.size(); ++i) {
    EXPECT_GE(h.notifiedAt[i] - h.notifiedAt[i - 1], 3600.0) << "notification " << i;
  }
  EXPECT_EQ(h.notifiedAt.size(), 24u) << "a red stretch every 20 minutes, one notice an hour";

  const auto& [title, body] = h.notifications[0];
  EXPECT_EQ(title, "Your Mac is slow because the CPU is maxed out");
  EXPECT_NE(body.find("make is using"), std::string::npos) << body;

  std::size_t alertedTotal = 0;
  for (const Recorded& r : h.recorded) {
    alertedTotal += r.alerted.size();
    for (const AlertNotice& notice : r.alerted) {
      EXPECT_EQ(notice.resource, Resource::cpu);
      EXPECT_EQ(notice.message, title);
      EXPECT_TRUE(notice.cause && notice.cause->starts_with("make ")) << *notice.cause;
    }
  }
  EXPECT_EQ(alertedTotal, h.notifiedAt.size()) << "history hears of every notification";
  EXPECT_EQ(h.recorded.size(), h.ticker.fired.size() - 1);
  EXPECT_LE(h.model->state().snapshot->apps.size(), 1u);
}

TEST(LiveModel, ASwitchedOffResourceIsNeverPostedNorAlerted) {
  Harness h;
  h.settings.emplace(LiveModel::notifyKey(Resource::cpu), false);
  h.settings.emplace(LiveModel::notifyKey(Resource::memory), true);
  h.machine.busy = [](double) { return 0.97; };
  h.advance(3 * 3600);
  EXPECT_TRUE(h.notifications.empty());
  for (const Recorded& r : h.recorded) EXPECT_TRUE(r.alerted.empty());
  EXPECT_EQ(h.model->state().displayed.at(Resource::cpu), Health::problem)
      << "the dot still shows it";
}

TEST(LiveModel, AGapOfMoreThanThirtySecondsBreaksTheRedStretch) {
  Harness h;
  h.machine.busy = [](double) { return 0.97; };
  h.advance(120);
  ASSERT_EQ(h.model->state().displayed.at(Resource::cpu), Health::problem);

  h.ticker.sleep(40);  // the machine sleeps: the wall clock moves on, no timer fires
  h.advance(300);
  EXPECT_TRUE(h.notifications.empty())
      << "without the gap the notice would have come two minutes after the screen turned red";
  h.advance(400);
  EXPECT_EQ(h.notifications.size(), 1u) << "the new red stretch is notified in its turn";
}

}  // namespace
}  // namespace pellwin
