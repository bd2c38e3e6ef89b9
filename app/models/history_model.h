// The History screen's model, Qt-free: the chosen metric's chart for the chosen range, the daily
// strip of the last 30 days, the range's slow periods, the busiest apps of a pointed-at minute
// ("who was it, then?"), and clearing history after a confirmation. All it shows is ready to
// draw: series of points with times, strip cells, row texts. Reads go through the recorder (the
// layout runs on its queue); every public call and every change happen on the owner's thread.
#pragma once

#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/models/history_loader.h"
#include "app/models/history_recorder.h"
#include "core/base/calendar.h"
#include "core/history/chart_series.h"
#include "core/history/day_strip.h"
#include "core/history/minute_lookup.h"
#include "core/history/slow_period_lines.h"

namespace pellwin {

struct HistoryView {
  HistoryRange range = HistoryRange::hour;
  double end = 0;  // the moment the range ends: when it was read
  // The metrics charted: the chosen one alone, or every metric when none was chosen; empty
  // series included.
  std::map<HistoryMetric, ChartSeries> series{};
  std::vector<StripDay> strip{};              // oldest day first, today last
  std::vector<SlowPeriodLine> slowPeriods{};  // overlapping the range, newest first
};

class HistoryModel {
 public:
  static constexpr int stripDays = 30;
  static constexpr const char* clearTitle = "Clear history?";
  static constexpr const char* clearMessage =
      "This removes the charts, slow periods, daily totals and alerts recorded so far. The log "
      "of cleanups stays.";

  struct Setup {
    HistoryRecorder& recorder;
    std::function<double()> now;                   // seconds since 1970
    std::function<Calendar(double now)> calendar;  // the local calendar in force
    int coreCount = 0;              // the machine's processors, for the minute lookup's CPU figures
    std::function<void()> changed;  // told after any visible change; optional
    // The one metric charted, read alone (a month of every metric costs thirteen times as
    // much); every metric when absent.
    std::optional<HistoryMetric> metric{};
  };

  explicit HistoryModel(Setup setup);

  // Shows `range`, read afresh.
  void setRange(HistoryRange range);
  // Charts `metric` alone, read afresh (on the history queue, like every read).
  void setMetric(HistoryMetric metric);
  // Reads again when the recorder has written since the last read; call it when the recorder
  // reports a change and when the screen appears.
  void refresh();
  // Looks up the minute that `time` falls in; the answer replaces `lookup()`.
  void lookUp(double time);

  void requestClear();
  void cancelClear();
  // Clears history (the cleanup log stays); `done` hears the outcome on the owner's thread.
  void confirmClear(std::function<void(std::expected<void, HistoryFailure>)> done = {});

  [[nodiscard]] HistoryRange range() const { return range_; }
  [[nodiscard]] const std::optional<HistoryMetric>& metric() const { return setup_.metric; }
  [[nodiscard]] const std::optional<HistoryView>& view() const { return loader_.view(); }
  [[nodiscard]] bool loading() const { return loader_.loading(); }
  [[nodiscard]] const std::optional<HistoryUnavailable>& unavailable() const {
    return loader_.unavailable();
  }
  [[nodiscard]] const std::optional<MinuteLookup>& lookup() const { return lookup_->value; }
  [[nodiscard]] bool confirmingClear() const { return confirmingClear_; }

 private:
  struct Lookup {
    std::optional<MinuteLookup> value;
    std::uint64_t request = 0;
  };
  void load(bool force);
  void notify() const;

  Setup setup_;
  HistoryRange range_ = HistoryRange::day;
  HistoryLoader<HistoryView> loader_;
  std::shared_ptr<Lookup> lookup_ = std::make_shared<Lookup>();
  bool confirmingClear_ = false;
};

}  // namespace pellwin
