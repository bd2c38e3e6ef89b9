#include "ui/unavailable_view.h"

#include <QVBoxLayout>

#include "ui/ui_text.h"

namespace pellwin::ui {

UnavailableView::UnavailableView(QWidget* parent)
    : QWidget(parent), title_(makeLabel(this, 4, true)), explanation_(makeLabel(this)) {
  setObjectName("unavailable");
  explanation_->setWordWrap(true);
  explanation_->setMaximumWidth(460);
  makeSecondary(explanation_);
  for (QLabel* label : {title_, explanation_}) label->setAlignment(Qt::AlignHCenter);
  auto* layout = new QVBoxLayout(this);
  layout->addStretch(1);
  layout->addWidget(title_, 0, Qt::AlignHCenter);
  layout->addWidget(explanation_, 0, Qt::AlignHCenter);
  layout->addStretch(2);
}

void UnavailableView::show(const HistoryUnavailable& texts) {
  title_->setText(qs(texts.title));
  explanation_->setText(qs(texts.explanation));
}

}  // namespace pellwin::ui
