#include "app/models/report_model.h"

namespace pellwin {

SQLiteResult<WeeklyReport> readWeeklyReport(const HistoryStore& store, double now,
                                            const Calendar& calendar) {
  const ReportWeeks weeks = reportWeeks(now, calendar);
  auto days = store.days(weeks.previousFirstDay, weeks.lastDay);
  if (!days) return std::unexpected(days.error());
  auto cleans = store.cleans(weeks.start, weeks.end);
  if (!cleans) return std::unexpected(cleans.error());
  return weeklyReport(weeks, *days, *cleans, calendar);
}

ReportModel::ReportModel(Setup setup)
    : setup_(std::move(setup)), loader_(setup_.recorder, HistoryScreen::report, setup_.changed) {}

void ReportModel::refresh() {
  const double now = setup_.now();
  const Calendar calendar = setup_.calendar(now);
  const bool newDay = report() && report()->weeks.lastDay != calendar.dayKey(now);
  loader_.load(
      [now, calendar](const HistoryStore& store) { return readWeeklyReport(store, now, calendar); },
      newDay);
}

}  // namespace pellwin
