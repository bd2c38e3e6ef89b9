#include "ui/ui_text.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

namespace pellwin::ui {

QLabel* makeLabel(QWidget* parent, int points, bool bold) {
  auto* label = new QLabel(parent);
  QFont font = label->font();
  if (points != 0) font.setPointSizeF(font.pointSizeF() + points);
  font.setBold(bold);
  label->setFont(font);
  label->setTextFormat(Qt::PlainText);
  return label;
}

QLabel* wrapping(QWidget* parent, int points, bool bold) {
  QLabel* label = makeLabel(parent, points, bold);
  label->setWordWrap(true);
  return label;
}

void makeSecondary(QLabel* label) { label->setForegroundRole(QPalette::PlaceholderText); }

QLabel* makeSectionTitle(const QString& text, QWidget* parent) {
  QLabel* label = makeLabel(parent, -1, true);
  label->setText(text.toUpper());
  makeSecondary(label);
  return label;
}

QString clockText(double at, double now) {
  const QDateTime when = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(at * 1000));
  const QDateTime today = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(now * 1000));
  const QLocale locale;
  const QString time = locale.toString(when.time(), "HH:mm");
  if (when.date() == today.date()) return time;
  return locale.toString(when.date(), "d MMM") + ", " + time;
}

QString bulleted(const std::vector<std::string>& lines) {
  QStringList out;
  for (const std::string& line : lines) out << QString::fromUtf8("•  ") + qs(line);
  return out.join('\n');
}

}  // namespace pellwin::ui
