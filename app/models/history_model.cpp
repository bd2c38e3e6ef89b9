#include "app/models/history_model.h"

namespace pellwin {

namespace {

std::map<HistoryMetric, ChartSeries> seriesOf(const std::vector<HistoryPoint>& points,
                                              std::optional<HistoryMetric> metric,
                                              HistoryRange range, double now) {
  if (!metric) return chartSeries(points, range, now);
  return {{*metric, chartSeries(points, *metric, range, now)}};
}

SQLiteResult<HistoryView> readView(const HistoryStore& store, HistoryRange range,
                                   std::optional<HistoryMetric> metric, double now,
                                   const Calendar& calendar) {
  auto points = metric ? store.chartPoints(range, now, std::span(&*metric, 1))
                       : store.chartPoints(range, now);
  if (!points) return std::unexpected(points.error());
  auto episodes = store.episodes(now - span(range), now);
  if (!episodes) return std::unexpected(episodes.error());
  const std::string today = calendar.dayKey(now);
  auto days = store.days(addingDays(today, 1 - HistoryModel::stripDays).value_or(today), today);
  if (!days) return std::unexpected(days.error());
  return HistoryView{.range = range,
                     .end = now,
                     .series = seriesOf(*points, metric, range, now),
                     .strip = dayStrip(*days, today, HistoryModel::stripDays),
                     .slowPeriods = slowPeriodLines(*episodes, now, calendar)};
}

}  // namespace

HistoryModel::HistoryModel(Setup setup)
    : setup_(std::move(setup)), loader_(setup_.recorder, HistoryScreen::history, setup_.changed) {}

void HistoryModel::notify() const {
  if (setup_.changed) setup_.changed();
}

void HistoryModel::load(bool force) {
  const double now = setup_.now();
  loader_.load(
      [range = range_, metric = setup_.metric, now, calendar = setup_.calendar(now)](
          const HistoryStore& store) { return readView(store, range, metric, now, calendar); },
      force);
}

void HistoryModel::setMetric(HistoryMetric metric) {
  if (setup_.metric == metric) return;
  setup_.metric = metric;
  load(true);
}

void HistoryModel::setRange(HistoryRange range) {
  range_ = range;
  load(true);
}

void HistoryModel::refresh() { load(false); }

void HistoryModel::lookUp(double time) {
  const double minute = minuteOf(time);
  const double now = setup_.now();
  const std::uint64_t request = ++lookup_->request;
  setup_.recorder.read<MinuteLookup>(
      [minute, now, calendar = setup_.calendar(now),
       cores = setup_.coreCount](const HistoryStore& store) -> SQLiteResult<MinuteLookup> {
        auto rows = store.minutes(minute, minute);
        if (!rows) return std::unexpected(rows.error());
        auto apps = store.topApps(minute);
        if (!apps) return std::unexpected(apps.error());
        std::optional<MinuteRow> row;
        if (!rows->empty()) row = rows->front();
        return minuteLookup(minute, row, *apps, cores, now, calendar);
      },
      [weak = std::weak_ptr<Lookup>(lookup_), request,
       changed = setup_.changed](std::expected<MinuteLookup, HistoryFailure> result) {
        auto lookup = weak.lock();
        if (!lookup || lookup->request != request) return;
        // A failed read has nothing to show; the screen's unavailable texts say why.
        lookup->value = result ? std::optional(std::move(*result)) : std::nullopt;
        if (changed) changed();
      });
}

void HistoryModel::requestClear() {
  confirmingClear_ = true;
  notify();
}

void HistoryModel::cancelClear() {
  confirmingClear_ = false;
  notify();
}

void HistoryModel::confirmClear(std::function<void(std::expected<void, HistoryFailure>)> done) {
  confirmingClear_ = false;
  notify();
  setup_.recorder.clearAll([weak = std::weak_ptr<Lookup>(lookup_), this,
                            done = std::move(done)](std::expected<void, HistoryFailure> result) {
    // The recorder's new revision makes the next refresh read the emptied history.
    if (weak.lock()) {
      lookup_->value.reset();
      refresh();
    }
    if (done) done(result);
  });
}

}  // namespace pellwin
