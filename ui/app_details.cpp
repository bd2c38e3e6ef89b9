#include "ui/app_details.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "core/base/format.h"
#include "core/monitor/advice.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

enum Field { commandLine, workingDirectory, runningSince, processes, processIDs, fieldCount };

constexpr const char* fieldNames[fieldCount] = {"Command line", "Working directory",
                                                "Running since", "Processes", "Process IDs"};

QString pidText(const std::vector<std::int32_t>& pids) {
  QStringList shown;
  for (std::size_t i = 0; i < pids.size() && i < AppDetails::maxPidsShown; ++i) {
    shown << QString::number(pids[i]);
  }
  QString text = shown.join(", ");
  if (pids.size() > AppDetails::maxPidsShown) {
    text += " and " + QString::number(pids.size() - AppDetails::maxPidsShown) + " more";
  }
  return text;
}

}  // namespace

AppDetails::AppDetails(QWidget* parent)
    : QFrame(parent),
      placeholder_(makeLabel(this)),
      body_(new QWidget(this)),
      name_(makeLabel(body_, 4, true)),
      roleDot_(new HealthDot(10, body_)),
      role_(makeLabel(body_)),
      explanation_(makeLabel(body_)),
      help_(makeLabel(body_)),
      fields_(new QFormLayout),
      busy_(makeLabel(body_)),
      quit_(new QPushButton("Quit", body_)),
      forceQuit_(new QPushButton("Force quit", body_)) {
  setObjectName("details");
  setAttribute(Qt::WA_StyledBackground, true);
  setStyleSheet(
      "#details { background: palette(base); border: 1px solid palette(midlight);"
      " border-radius: 8px; }");
  placeholder_->setText("Pick an app to see what it is and to quit it.");
  placeholder_->setWordWrap(true);
  placeholder_->setAlignment(Qt::AlignCenter);
  makeSecondary(placeholder_);
  name_->setWordWrap(true);
  for (QLabel* label : {explanation_, help_}) label->setWordWrap(true);
  makeSecondary(help_);
  busy_->setText("Quitting…");
  makeSecondary(busy_);

  fields_->setLabelAlignment(Qt::AlignLeft | Qt::AlignTop);
  fields_->setRowWrapPolicy(QFormLayout::DontWrapRows);
  fields_->setHorizontalSpacing(10);
  fields_->setVerticalSpacing(5);
  for (const char* field : fieldNames) {
    QLabel* value = makeLabel(body_);
    value->setWordWrap(true);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QLabel* label = makeLabel(body_, -1, true);
    label->setText(field);
    makeSecondary(label);
    fields_->addRow(label, value);
    values_.push_back(value);
  }

  auto* role = new QHBoxLayout;
  role->setSpacing(6);
  role->addWidget(roleDot_);
  role->addWidget(role_, 1);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(busy_);
  buttons->addStretch(1);
  buttons->addWidget(forceQuit_);
  buttons->addWidget(quit_);
  auto* body = new QVBoxLayout(body_);
  body->setContentsMargins(0, 0, 0, 0);
  body->setSpacing(6);
  body->addWidget(name_);
  body->addLayout(role);
  body->addWidget(explanation_);
  body->addWidget(help_);
  body->addSpacing(6);
  body->addLayout(fields_);
  body->addStretch(1);
  body->addLayout(buttons);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 14);
  layout->addWidget(placeholder_, 1);
  layout->addWidget(body_, 1);
  connect(quit_, &QPushButton::clicked, this, [this] { emit quitClicked(false); });
  connect(forceQuit_, &QPushButton::clicked, this, [this] { emit quitClicked(true); });
  set(nullptr, nullptr, 0, false);
}

void AppDetails::setField(int row, const QString& value) {
  values_[static_cast<std::size_t>(row)]->setText(value);
  fields_->setRowVisible(row, !value.isEmpty());
}

void AppDetails::set(const AppUsage* app, const Verdict* verdict, double now, bool quitting) {
  placeholder_->setVisible(app == nullptr);
  body_->setVisible(app != nullptr);
  if (app == nullptr) return;
  name_->setText(qs(app->name));
  const std::optional<AppRole> role = verdict ? verdict->role(app->id) : std::nullopt;
  roleDot_->setVisible(role.has_value());
  role_->setVisible(role.has_value());
  if (role) {
    roleDot_->setHealth(role->health);
    role_->setText(qs(role->text));
  }
  explanation_->setText(app->explanation ? qs(*app->explanation) : QString());
  explanation_->setVisible(app->explanation.has_value());
  help_->setText(qs(Advice::appHelp(*app)));

  setField(commandLine, app->detail ? qs(*app->detail) : QString());
  setField(workingDirectory, app->workingDirectory ? qs(*app->workingDirectory) : QString());
  setField(runningSince, app->runningSince ? clockText(*app->runningSince, now) + qs(" · for ") +
                                                 qs(Format::elapsed(now - *app->runningSince))
                                           : QString());
  setField(processes, QString::number(app->processCount));
  setField(processIDs, pidText(app->pids));

  busy_->setVisible(quitting);
  quit_->setEnabled(!quitting);
  forceQuit_->setEnabled(!quitting);
}

QStringList AppDetails::texts() const {
  if (!body_->isVisibleTo(this)) return {placeholder_->text()};
  QStringList out;
  for (const QLabel* label : {name_, role_, explanation_, help_}) {
    if (label->isVisibleTo(this) && !label->text().isEmpty()) out << label->text();
  }
  for (int row = 0; row < fieldCount; ++row) {
    if (fields_->isRowVisible(row)) {
      out << QString(fieldNames[row]) + ": " + values_[static_cast<std::size_t>(row)]->text();
    }
  }
  if (busy_->isVisibleTo(this)) out << busy_->text();
  return out;
}

}  // namespace pellwin::ui
