#include "ui/unavailable_view.h"

#include <QScrollArea>
#include <QVBoxLayout>

#include "ui/ui_text.h"

namespace pellwin::ui {

UnavailableView::UnavailableView(QWidget* contents, QWidget* parent)
    : QStackedWidget(parent),
      contents_(contents),
      message_(new QWidget(this)),
      title_(makeLabel(message_, 4, true)),
      explanation_(makeLabel(message_)) {
  message_->setObjectName("unavailable");
  explanation_->setWordWrap(true);
  explanation_->setMaximumWidth(460);
  makeSecondary(explanation_);
  for (QLabel* label : {title_, explanation_}) label->setAlignment(Qt::AlignHCenter);
  auto* layout = new QVBoxLayout(message_);
  layout->addStretch(1);
  layout->addWidget(title_, 0, Qt::AlignHCenter);
  layout->addWidget(explanation_, 0, Qt::AlignHCenter);
  layout->addStretch(2);
  addWidget(contents_);
  addWidget(message_);
}

bool UnavailableView::showUnavailable(const std::optional<HistoryUnavailable>& texts) {
  if (!texts) {
    setCurrentWidget(contents_);
    return false;
  }
  title_->setText(qs(texts->title));
  explanation_->setText(qs(texts->explanation));
  setCurrentWidget(message_);
  return true;
}

QWidget* verticallyScrolled(QWidget* page) {
  auto* scroll = new QScrollArea;
  scroll->setWidget(page);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  return scroll;
}

}  // namespace pellwin::ui
