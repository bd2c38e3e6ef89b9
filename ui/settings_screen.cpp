#include "ui/settings_screen.h"

#include <QPointer>
#include <QScrollArea>
#include <QVBoxLayout>

#include "app/models/live_model.h"

namespace pellwin::ui {
namespace {

QLabel* heading(const QString& text) {
  auto* label = new QLabel(text);
  QFont font = label->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.15);
  label->setFont(font);
  return label;
}

QLabel* note(const QString& text) {
  auto* label = new QLabel(text);
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  label->setForegroundRole(QPalette::PlaceholderText);
  return label;
}

QVBoxLayout* sectionLayout(QWidget* section, const QString& title) {
  auto* layout = new QVBoxLayout(section);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(8);
  layout->addWidget(heading(title));
  return layout;
}

QString resourceText(Resource resource) {
  const std::string_view text = title(resource);
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QString testOutcomeText(const NotificationResult& result) {
  if (result.delivered) return "Sent. It should be on your screen now.";
  return "Not delivered: " + QString::fromStdString(result.reason) + ".";
}

SettingsScreen::SettingsScreen(Services services, QWidget* parent)
    : QWidget(parent), services_(std::move(services)) {
  auto* content = new QWidget;
  auto* layout = new QVBoxLayout(content);
  layout->setContentsMargins(32, 28, 32, 28);
  layout->setSpacing(28);
  auto* title = new QLabel("Settings");
  QFont font = title->font();
  font.setPointSizeF(font.pointSizeF() * 1.6);
  font.setBold(true);
  title->setFont(font);
  layout->addWidget(title);
  layout->addWidget(notificationsSection());
  layout->addWidget(generalSection());
  layout->addWidget(aboutSection());
  layout->addStretch(1);

  auto* scroll = new QScrollArea;
  scroll->setWidget(content);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  auto* outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->addWidget(scroll);
  reload();
}

QWidget* SettingsScreen::notificationsSection() {
  auto* section = new QWidget;
  QVBoxLayout* layout = sectionLayout(section, "Notifications");
  layout->addWidget(
      note("Tovrin sends a notification when one of these stays a problem, saying why and which "
           "app is behind it. It never quits or changes anything on its own."));
  for (const Resource resource : allResources) {
    auto* box = new QCheckBox(resourceText(resource));
    box->setObjectName(QString::fromStdString(LiveModel::notifyKey(resource)));
    connect(box, &QCheckBox::toggled, this, [this, resource](bool on) {
      services_.settings.setFlag(LiveModel::notifyKey(resource), on);
    });
    notifySwitches_.push_back(box);
    layout->addWidget(box);
  }
  testButton_ = new QPushButton("Send a test notification");
  testButton_->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
  connect(testButton_, &QPushButton::clicked, this, &SettingsScreen::sendTest);
  testResult_ = note("");
  testResult_->setObjectName("testResult");
  testResult_->hide();
  layout->addSpacing(4);
  layout->addWidget(testButton_);
  layout->addWidget(testResult_);
  return section;
}

QWidget* SettingsScreen::generalSection() {
  auto* section = new QWidget;
  QVBoxLayout* layout = sectionLayout(section, "General");
  startAtLogin_ = new QCheckBox("Start at login");
  startAtLogin_->setObjectName("startAtLogin");
  connect(startAtLogin_, &QCheckBox::clicked, this, &SettingsScreen::setStartAtLogin);
  layout->addWidget(startAtLogin_);
  loginProblem_ = note("");
  loginProblem_->setObjectName("loginProblem");
  loginProblem_->hide();
  layout->addWidget(loginProblem_);
  const bool dark = palette().color(QPalette::Window).lightness() < 128;
  layout->addSpacing(8);
  layout->addWidget(heading("Appearance"));
  layout->addWidget(note(QString("Tovrin follows your desktop's light or dark theme; it has no "
                                 "theme of its own. Right now your desktop is %1.")
                             .arg(dark ? "dark" : "light")));
  return section;
}

QWidget* SettingsScreen::aboutSection() {
  auto* section = new QWidget;
  QVBoxLayout* layout = sectionLayout(section, "About");
  auto* version = new QLabel(QString("Tovrin %1").arg(PELLWIN_VERSION));
  version->setObjectName("version");
  version->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(version);
  layout->addWidget(
      note("Your package manager keeps Tovrin up to date along with the rest of "
           "your system, so Tovrin never checks for updates itself."));
  return section;
}

void SettingsScreen::reload() {
  for (std::size_t i = 0; i < notifySwitches_.size(); ++i) {
    const QSignalBlocker quiet(notifySwitches_[i]);
    // Never written means on.
    notifySwitches_[i]->setChecked(
        services_.settings.flag(LiveModel::notifyKey(allResources[i])).value_or(true));
  }
  const QSignalBlocker quiet(startAtLogin_);
  startAtLogin_->setChecked(services_.loginItem.status() == LoginItemStatus::enabled);
}

QCheckBox* SettingsScreen::notifySwitch(Resource resource) const {
  for (std::size_t i = 0; i < notifySwitches_.size(); ++i) {
    if (allResources[i] == resource) return notifySwitches_[i];
  }
  return nullptr;
}

void SettingsScreen::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  reload();
}

void SettingsScreen::setStartAtLogin(bool on) {
  const auto done = on ? services_.loginItem.enable() : services_.loginItem.disable();
  loginProblem_->setVisible(!done);
  if (!done) {
    loginProblem_->setText(
        QString::fromStdString(sentence(done.error(), ErrorWording::pathAfterReason)));
  }
  // Shows what is on disk now, which after a failure is the state from before the click.
  const QSignalBlocker quiet(startAtLogin_);
  startAtLogin_->setChecked(services_.loginItem.status() == LoginItemStatus::enabled);
}

void SettingsScreen::sendTest() {
  testButton_->setEnabled(false);
  testResult_->setText("Sending…");
  testResult_->show();
  services_.notify(testTitle, testBody,
                   [self = QPointer<SettingsScreen>(this)](NotificationResult result) {
                     if (!self) return;
                     self->testButton_->setEnabled(true);
                     self->testResult_->setText(testOutcomeText(result));
                   });
}

}  // namespace pellwin::ui
