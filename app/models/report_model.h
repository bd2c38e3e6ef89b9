// The Report screen's model, Qt-free: the weekly report of the last seven local days against
// the seven before, with the week's cleanups, every text ready to show. Reads and the report's
// sums run on the history queue; every public call and every change happen on the owner's
// thread.
#pragma once

#include <functional>
#include <optional>

#include "app/models/history_loader.h"
#include "app/models/history_recorder.h"
#include "core/base/calendar.h"
#include "core/history/weekly_report.h"

namespace pellwin {

class ReportModel {
 public:
  struct Setup {
    HistoryRecorder& recorder;
    std::function<double()> now;
    std::function<Calendar(double now)> calendar;
    std::function<void()> changed;  // optional
  };

  explicit ReportModel(Setup setup);

  // Reads again when the recorder has written since the last read or the day has changed.
  void refresh();

  [[nodiscard]] const std::optional<WeeklyReport>& report() const { return loader_.view(); }
  [[nodiscard]] bool loading() const { return loader_.loading(); }
  [[nodiscard]] const std::optional<HistoryUnavailable>& unavailable() const {
    return loader_.unavailable();
  }

 private:
  Setup setup_;
  HistoryLoader<WeeklyReport> loader_;
};

// The report of the weeks around `now`, read from `store`: the day rows of both weeks and this
// week's cleanups. Shared by the screen and `tovrin --report`.
[[nodiscard]] SQLiteResult<WeeklyReport> readWeeklyReport(const HistoryStore& store, double now,
                                                          const Calendar& calendar);

}  // namespace pellwin
