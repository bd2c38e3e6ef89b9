#include "ui/day_strip_view.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include "ui/palette.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

constexpr int cellHeight = 14;
constexpr int gap = 3;
constexpr int dayLabelHeight = 16;

}  // namespace

DayStripView::DayStripView(QWidget* parent) : QWidget(parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void DayStripView::show(std::vector<StripDay> days) {
  days_ = std::move(days);
  updateGeometry();
  update();
}

int DayStripView::labelWidth() const {
  int widest = 0;
  for (Resource resource : allResources) {
    widest = std::max(widest, fontMetrics().horizontalAdvance(qs(title(resource))));
  }
  return widest + 10;
}

QSize DayStripView::sizeHint() const {
  const int rows = static_cast<int>(allResources.size());
  return {labelWidth() + 30 * 12, rows * (cellHeight + gap) + dayLabelHeight};
}

QRect DayStripView::cellRect(int day, int row) const {
  const int count = std::max(1, static_cast<int>(days_.size()));
  const int left = labelWidth();
  const int width = std::max(1, (this->width() - left + gap) / count - gap);
  return {left + day * (width + gap), row * (cellHeight + gap), width, cellHeight};
}

void DayStripView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(palette().color(QPalette::PlaceholderText));
  for (std::size_t row = 0; row < allResources.size(); ++row) {
    const QRect line(0, static_cast<int>(row) * (cellHeight + gap), labelWidth(), cellHeight);
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft, qs(title(allResources[row])));
  }
  const int bottom = static_cast<int>(allResources.size()) * (cellHeight + gap);
  for (std::size_t day = 0; day < days_.size(); ++day) {
    const auto& cells = days_[day].cells;
    for (std::size_t row = 0; row < cells.size(); ++row) {
      const QRectF cell = QRectF(cellRect(static_cast<int>(day), static_cast<int>(row)))
                              .adjusted(0.5, 0.5, -0.5, -0.5);
      if (cells[row].recorded) {
        painter.setPen(QPen(healthEdge(cells[row].level), 1));
        painter.setBrush(healthColor(cells[row].level));
      } else {
        painter.setPen(QPen(palette().color(QPalette::Mid), 1));
        painter.setBrush(Qt::NoBrush);
      }
      painter.drawRoundedRect(cell, 2, 2);
    }
  }
  // The first day of each week and the last day are labelled; more would crowd the row.
  painter.setPen(palette().color(QPalette::PlaceholderText));
  for (std::size_t day = 0; day < days_.size(); ++day) {
    if ((days_.size() - 1 - day) % 7 != 0) continue;
    const QRect cell = cellRect(static_cast<int>(day), 0);
    const QString label = qs(days_[day].label);
    const int width = fontMetrics().horizontalAdvance(label);
    const int x = std::clamp(cell.center().x() - width / 2, labelWidth(), this->width() - width);
    painter.drawText(QRect(x, bottom, width, dayLabelHeight), Qt::AlignCenter, label);
  }
}

QString DayStripView::textAt(QPoint position) const {
  for (std::size_t day = 0; day < days_.size(); ++day) {
    const auto& cells = days_[day].cells;
    for (std::size_t row = 0; row < cells.size(); ++row) {
      if (cellRect(static_cast<int>(day), static_cast<int>(row)).contains(position)) {
        return qs(days_[day].label) + "\n" + qs(cells[row].text);
      }
    }
  }
  return {};
}

bool DayStripView::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    auto* help = static_cast<QHelpEvent*>(event);
    const QString text = textAt(help->pos());
    if (text.isEmpty()) {
      QToolTip::hideText();
    } else {
      QToolTip::showText(help->globalPos(), text, this);
    }
    return true;
  }
  return QWidget::event(event);
}

}  // namespace pellwin::ui
