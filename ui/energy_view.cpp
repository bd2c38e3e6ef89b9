#include "ui/energy_view.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "core/base/format.h"
#include "ui/ui_text.h"

namespace pellwin::ui {

EnergyView::EnergyView(QWidget* parent)
    : QFrame(parent),
      title_(makeLabel(this, 1, true)),
      source_(makeLabel(this)),
      names_(makeLabel(this)),
      shares_(makeLabel(this)) {
  setObjectName("energy");
  setAttribute(Qt::WA_StyledBackground, true);
  setStyleSheet(
      "#energy { background: palette(base); border: 1px solid palette(midlight);"
      " border-radius: 8px; }");
  makeSecondary(source_);
  shares_->setAlignment(Qt::AlignRight | Qt::AlignTop);
  names_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 14);
  layout->setSpacing(4);
  layout->addWidget(title_);
  layout->addWidget(source_);
  layout->addSpacing(6);
  auto* rows = new QHBoxLayout;
  rows->addWidget(names_, 1);
  rows->addWidget(shares_);
  layout->addLayout(rows);
  layout->addStretch(1);
}

void EnergyView::set(const BatterySession& battery, double now) {
  setVisible(!battery.isEmpty());
  if (battery.isEmpty()) return;
  title_->setText("Most energy since " + clockText(*battery.since(), now));
  source_->setText(battery.onBattery() ? "On battery" : "Plugged in");
  QStringList names;
  QStringList shares;
  for (const EnergyShare& share : battery.shares(maxApps)) {
    names << qs(share.name);
    shares << qs(Format::percent(share.share));
  }
  if (names.isEmpty()) names << "No app has used energy yet.";
  names_->setText(names.join('\n'));
  shares_->setText(shares.join('\n'));
}

QStringList EnergyView::texts() const {
  if (isHidden()) return {};
  QStringList out = {title_->text(), source_->text()};
  const QStringList names = names_->text().split('\n');
  const QStringList shares = shares_->text().split('\n');
  for (qsizetype i = 0; i < names.size(); ++i) {
    out << (i < shares.size() && !shares[i].isEmpty() ? names[i] + " " + shares[i] : names[i]);
  }
  return out;
}

}  // namespace pellwin::ui
