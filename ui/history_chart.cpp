#include "ui/history_chart.h"

#include <QAreaSeries>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QDateTime>
#include <QDateTimeAxis>
#include <QGridLayout>
#include <QLabel>
#include <QLineSeries>
#include <QMouseEvent>
#include <QScatterSeries>

#include "ui/palette.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

qreal msecs(double seconds) { return static_cast<qreal>(seconds * 1000); }

// The clock as the lookup and the slow periods write it ("2:32 PM").
QString timeFormat(HistoryRange range) {
  switch (range) {
    case HistoryRange::hour: return "h:mm AP";
    case HistoryRange::day: return "h AP";
    case HistoryRange::week: return "ddd h AP";
    case HistoryRange::month: return "d MMM";
  }
  return "h:mm AP";
}

// The value axis names its ends and middle in the metric's own units ("3.2 GB", "45%"), which a
// plain number axis cannot.
QCategoryAxis* valueAxis(const ChartSeries& series, double low, double high) {
  auto* axis = new QCategoryAxis;
  axis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
  axis->setRange(low, high);
  for (double value : {low, (low + high) / 2, high}) {
    axis->append(qs(metricValueText(series.metric, value)), value);
  }
  return axis;
}

}  // namespace

// Mouse moves arrive at the chart view; it hands the moment under the pointer back.
class HistoryChart::View : public QChartView {
 public:
  View(HistoryChart* owner) : QChartView(new QChart), owner_(owner) {
    setMouseTracking(true);
    setFrameShape(QFrame::NoFrame);
    setRenderHint(QPainter::Antialiasing);
    chart()->legend()->hide();
    chart()->setMargins(QMargins(4, 4, 4, 4));
    chart()->setBackgroundRoundness(0);
  }

 protected:
  void mouseMoveEvent(QMouseEvent* event) override {
    QChartView::mouseMoveEvent(event);
    const QPointF scene = mapToScene(event->position().toPoint());
    const QPointF inChart = chart()->mapFromScene(scene);
    if (!chart()->plotArea().contains(inChart)) return;
    const ChartSeries& shown = owner_->shown_;
    if (shown.end <= shown.start) return;
    const QPointF value = chart()->mapToValue(inChart);
    emit owner_->pointedAt(value.x() / 1000);
  }

 private:
  HistoryChart* owner_;
};

HistoryChart::HistoryChart(QWidget* parent)
    : QWidget(parent), view_(new View(this)), empty_(makeLabel(this)) {
  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view_, 0, 0);
  empty_->setText(emptyText);
  makeSecondary(empty_);
  empty_->setAttribute(Qt::WA_TransparentForMouseEvents);
  layout->addWidget(empty_, 0, 0, Qt::AlignCenter);
  setMinimumHeight(220);
}

HistoryChart::~HistoryChart() = default;

void HistoryChart::show(const ChartSeries& series) {
  shown_ = series;
  empty_->setVisible(series.isEmpty());
  QChart* chart = view_->chart();
  chart->removeAllSeries();
  markLine_ = nullptr;
  for (QAbstractAxis* axis : chart->axes()) {
    chart->removeAxis(axis);
    delete axis;
  }
  const QPalette& palette = view_->palette();
  chart->setBackgroundBrush(palette.color(QPalette::Base));
  chart->setPlotAreaBackgroundVisible(false);

  auto* time = new QDateTimeAxis;
  time->setFormat(timeFormat(series.range));
  time->setRange(QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(msecs(series.start))),
                 QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(msecs(series.end))));
  time->setTickCount(7);
  time->setLabelsColor(palette.color(QPalette::Text));
  time->setGridLineColor(palette.color(QPalette::Mid));
  chart->addAxis(time, Qt::AlignBottom);
  const double low = std::min(0.0, series.low);
  const double high = series.high > low ? series.high : low + 1;
  QCategoryAxis* values = valueAxis(series, low, high);
  values->setLabelsColor(palette.color(QPalette::Text));
  values->setGridLineColor(palette.color(QPalette::Mid));
  chart->addAxis(values, Qt::AlignLeft);

  const QColor line = palette.color(QPalette::Highlight);
  QColor band = line;
  band.setAlpha(60);
  auto* strain = new QScatterSeries;
  auto* problem = new QScatterSeries;
  // A run of one point has no line to draw: it is shown as a dot.
  auto* lone = new QScatterSeries;
  for (const auto& run : series.runs) {
    auto* value = new QLineSeries;
    auto* lows = new QLineSeries;
    auto* highs = new QLineSeries;
    for (const ChartPoint& point : run) {
      const qreal x = msecs(point.time + series.bucket / 2);
      value->append(x, point.value);
      lows->append(x, point.low);
      highs->append(x, point.high);
      if (point.worst == Health::strain) strain->append(x, point.value);
      if (point.worst == Health::problem) problem->append(x, point.value);
    }
    if (run.size() == 1) lone->append(value->at(0));
    auto* area = new QAreaSeries(highs, lows);
    // The band's edges are never added to the chart, and the area does not own them: they
    // go with the area when the chart drops it.
    highs->setParent(area);
    lows->setParent(area);
    area->setPen(Qt::NoPen);
    area->setBrush(band);
    value->setPen(QPen(line, 2));
    for (QAbstractSeries* drawn :
         {static_cast<QAbstractSeries*>(area), static_cast<QAbstractSeries*>(value)}) {
      chart->addSeries(drawn);
      drawn->attachAxis(time);
      drawn->attachAxis(values);
    }
  }
  lone->setMarkerSize(5);
  lone->setColor(line);
  lone->setBorderColor(line);
  chart->addSeries(lone);
  lone->attachAxis(time);
  lone->attachAxis(values);
  for (auto [marks, health] : {std::pair{strain, Health::strain}, {problem, Health::problem}}) {
    marks->setMarkerSize(6);
    marks->setColor(healthColor(health));
    marks->setBorderColor(healthEdge(health));
    chart->addSeries(marks);
    marks->attachAxis(time);
    marks->attachAxis(values);
  }
  drawMark();
}

void HistoryChart::mark(std::optional<double> time) {
  marked_ = time;
  drawMark();
}

void HistoryChart::drawMark() {
  QChart* chart = view_->chart();
  if (markLine_) {
    chart->removeSeries(markLine_);
    delete markLine_;
    markLine_ = nullptr;
  }
  if (!marked_ || *marked_ < shown_.start || *marked_ > shown_.end || chart->axes().isEmpty()) {
    return;
  }
  markLine_ = new QLineSeries;
  const double low = std::min(0.0, shown_.low);
  const double high = shown_.high > low ? shown_.high : low + 1;
  markLine_->append(msecs(*marked_), low);
  markLine_->append(msecs(*marked_), high);
  QColor colour = view_->palette().color(QPalette::Text);
  colour.setAlpha(140);
  markLine_->setPen(QPen(colour, 1, Qt::DashLine));
  chart->addSeries(markLine_);
  for (QAbstractAxis* axis : chart->axes()) markLine_->attachAxis(axis);
}

QPoint HistoryChart::positionOf(double time) const {
  QChart* chart = view_->chart();
  const QPointF inChart =
      chart->mapToPosition(QPointF(msecs(time), (shown_.low + shown_.high) / 2));
  return view_->mapFromScene(chart->mapToScene(inChart));
}

bool HistoryChart::showsEmpty() const { return !empty_->isHidden(); }

QWidget* HistoryChart::surface() const { return view_->viewport(); }

int HistoryChart::lineCount() const {
  int lines = 0;
  for (QAbstractSeries* series : view_->chart()->series()) {
    if (series->type() == QAbstractSeries::SeriesTypeLine && series != markLine_) ++lines;
  }
  return lines;
}

}  // namespace pellwin::ui
