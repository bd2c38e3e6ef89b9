#include "ui/verdict_view.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "core/monitor/verdict_focus.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

// Who is behind the resource the verdict leads with: while all is well, memory's biggest users,
// which a healthy memory verdict still names.
const ResourceVerdict* named(const Verdict& verdict) {
  if (const ResourceVerdict* lead = focus(verdict)) return lead;
  for (const ResourceVerdict& r : verdict.resources) {
    if (r.resource == Resource::memory) return &r;
  }
  return nullptr;
}

QString contributorLines(const std::vector<Contributor>& contributors) {
  QStringList lines;
  for (const Contributor& c : contributors) {
    QString line = qs(c.name) + "  ·  " + qs(c.value);
    if (c.detail) line += "  ·  " + qs(*c.detail);
    lines << line;
  }
  return lines.join('\n');
}

}  // namespace

VerdictView::VerdictView(QWidget* parent)
    : QFrame(parent),
      dot_(new HealthDot(14, this)),
      headline_(makeLabel(this, 5, true)),
      reason_(makeLabel(this, 1)),
      contributorsTitle_(makeLabel(this, -1, true)),
      contributors_(makeLabel(this)),
      adviceTitle_(makeSectionTitle("What you can do", this)),
      advice_(makeLabel(this)),
      tipsTitle_(makeSectionTitle("Tips", this)),
      tips_(makeLabel(this)) {
  setObjectName("verdict");
  setAttribute(Qt::WA_StyledBackground, true);
  setStyleSheet(
      "#verdict { background: palette(base); border: 1px solid palette(midlight);"
      " border-radius: 8px; }");
  for (QLabel* label : {headline_, reason_, contributors_, advice_, tips_}) {
    label->setWordWrap(true);
  }
  makeSecondary(reason_);
  makeSecondary(contributorsTitle_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 12, 16, 12);
  layout->setSpacing(4);
  auto* top = new QHBoxLayout;
  top->setSpacing(10);
  top->addWidget(dot_, 0, Qt::AlignVCenter);
  top->addWidget(headline_, 1);
  layout->addLayout(top);
  layout->addWidget(reason_);
  layout->addSpacing(6);
  auto* columns = new QHBoxLayout;
  columns->setSpacing(24);
  auto* left = new QVBoxLayout;
  left->setSpacing(4);
  left->addWidget(contributorsTitle_);
  left->addWidget(contributors_);
  left->addStretch(1);
  auto* right = new QVBoxLayout;
  right->setSpacing(4);
  right->addWidget(adviceTitle_);
  right->addWidget(advice_);
  right->addSpacing(4);
  right->addWidget(tipsTitle_);
  right->addWidget(tips_);
  right->addStretch(1);
  columns->addLayout(left, 1);
  columns->addLayout(right, 1);
  layout->addLayout(columns);
}

void VerdictView::set(const Verdict* verdict) {
  if (verdict == nullptr) {
    dot_->setHealth(Health::ok);
    headline_->setText("Taking the first reading…");
    for (QLabel* label :
         {reason_, contributorsTitle_, contributors_, adviceTitle_, advice_, tipsTitle_, tips_}) {
      label->hide();
    }
    keepLinesWhole();
    return;
  }
  dot_->setHealth(verdict->overall());
  headline_->setText(qs(verdict->headline()));
  const ResourceVerdict* lead = focus(*verdict);
  reason_->setText(lead ? qs(lead->reason) : "Nothing is slowing it down.");
  reason_->show();

  const ResourceVerdict* behind = named(*verdict);
  const bool hasContributors = behind != nullptr && !behind->contributors.empty();
  if (hasContributors) {
    contributorsTitle_->setText(qs("Using the most " + std::string(noun(behind->resource))));
    contributors_->setText(contributorLines(behind->contributors));
  }
  contributorsTitle_->setVisible(hasContributors);
  contributors_->setVisible(hasContributors);

  const std::vector<std::string> advice = allAdvice(*verdict);
  advice_->setText(bulleted(advice));
  adviceTitle_->setVisible(!advice.empty());
  advice_->setVisible(!advice.empty());

  std::vector<std::string> tips;
  for (const Tip& tip : verdict->tips) tips.push_back(tip.text());
  tips_->setText(bulleted(tips));
  tipsTitle_->setVisible(!tips.empty());
  tips_->setVisible(!tips.empty());
  keepLinesWhole();
}

void VerdictView::resizeEvent(QResizeEvent* event) {
  QFrame::resizeEvent(event);
  keepLinesWhole();
}

// Wrapped lines make the height depend on the width, which a box layout's minimum ignores; a
// card squeezed below it would cut its advice off mid-line.
void VerdictView::keepLinesWhole() {
  const int needed = layout()->totalHeightForWidth(width());
  if (needed > 0 && needed != minimumHeight()) setMinimumHeight(needed);
}

QStringList VerdictView::texts() const {
  QStringList out;
  for (const QLabel* label : {headline_, reason_, contributorsTitle_, contributors_, adviceTitle_,
                              advice_, tipsTitle_, tips_}) {
    if (label->isVisibleTo(this) && !label->text().isEmpty()) out << label->text().split('\n');
  }
  return out;
}

}  // namespace pellwin::ui
