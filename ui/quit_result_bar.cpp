#include "ui/quit_result_bar.h"

#include <QHBoxLayout>

#include "ui/ui_text.h"

namespace pellwin::ui {

QuitResultBar::QuitResultBar(QuitControl& quit, QWidget* parent)
    : QFrame(parent), quit_(quit), text_(makeLabel(this)), dismiss_(new QPushButton("OK", this)) {
  setObjectName("quitResult");
  setStyleSheet(
      "#quitResult { background: palette(alternate-base); border: 1px solid palette(mid);"
      " border-radius: 6px; }");
  text_->setWordWrap(true);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(10, 6, 6, 6);
  layout->addWidget(text_, 1);
  layout->addWidget(dismiss_, 0, Qt::AlignTop);
  connect(dismiss_, &QPushButton::clicked, this, [this] { quit_.dismissResult(); });
  refresh();
}

void QuitResultBar::refresh() {
  const auto& result = quit_.result();
  if (result) text_->setText(qs(result->text));
  setVisible(result.has_value());
}

}  // namespace pellwin::ui
