#include "ui/panel.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "core/base/format.h"
#include "core/monitor/verdict_focus.h"
#include "ui/tray_dot.h"
#include "ui/ui_text.h"

namespace pellwin::ui {
namespace {

constexpr int panelWidth = 440;
// Said while there is no snapshot yet: the first one needs two readings.
constexpr const char* firstReading = "Taking the first reading…";

QFrame* separator(QWidget* parent) {
  auto* line = new QFrame(parent);
  line->setFrameShape(QFrame::HLine);
  line->setFrameShadow(QFrame::Plain);
  line->setForegroundRole(QPalette::Midlight);
  return line;
}

QPushButton* smallButton(const QString& text, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setFocusPolicy(Qt::TabFocus);
  button->setAutoDefault(false);
  QFont font = button->font();
  font.setPointSizeF(font.pointSizeF() - 1);
  button->setFont(font);
  const int width = button->fontMetrics().horizontalAdvance(text) + 20;
  button->setFixedSize(width, button->fontMetrics().height() + 10);
  return button;
}

// The height the panel needs at its fixed width: wrapped lines make it depend on the width,
// which a plain size hint ignores.
int neededHeight(QWidget* panel) {
  QLayout* layout = panel->layout();
  return layout->hasHeightForWidth() ? layout->totalHeightForWidth(panel->width())
                                     : layout->totalSizeHint().height();
}

}  // namespace

QString newAlertsText(std::int64_t count) {
  return QString::number(count) + (count == 1 ? " new alert" : " new alerts");
}

Panel::Panel(std::function<const LiveState&()> state, QuitControl& quit, QWidget* parent)
    : QFrame(parent, Qt::Popup), state_(std::move(state)), quit_(quit) {
  setObjectName("panel");
  setFrameShape(QFrame::StyledPanel);
  setFixedWidth(panelWidth);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 14, 16, 12);
  layout->setSpacing(8);
  buildHeader(layout);
  layout->addWidget(separator(this));
  buildResources(layout);
  layout->addWidget(separator(this));
  buildApps(layout);
  adviceTitle_ = makeSectionTitle("What you can do", this);
  advice_ = makeLabel(this);
  advice_->setWordWrap(true);
  layout->addWidget(adviceTitle_);
  layout->addWidget(advice_);
  layout->addWidget(separator(this));
  buildFooter(layout);
  connect(&quit_, &QuitControl::changed, this, &Panel::refresh);
}

void Panel::buildHeader(QVBoxLayout* layout) {
  auto* row = new QHBoxLayout;
  row->setSpacing(8);
  headlineDot_ = new HealthDot(12, this);
  headline_ = makeLabel(this, 3, true);
  headline_->setWordWrap(true);
  row->addWidget(headlineDot_, 0, Qt::AlignTop | Qt::AlignHCenter);
  row->addWidget(headline_, 1);
  layout->addLayout(row);
  reason_ = makeLabel(this);
  reason_->setWordWrap(true);
  makeSecondary(reason_);
  layout->addWidget(reason_);
  result_ = new QuitResultBar(quit_, this);
  layout->addWidget(result_);
  alerts_ = new QPushButton(this);
  alerts_->setFlat(true);
  alerts_->setAutoDefault(false);
  alerts_->setCursor(Qt::PointingHandCursor);
  alerts_->setIcon(dotIcon(Health::problem));
  alerts_->hide();
  layout->addWidget(alerts_, 0, Qt::AlignLeft);
  connect(alerts_, &QPushButton::clicked, this, [this] {
    hide();
    emit alertsRequested();
  });
}

void Panel::buildResources(QVBoxLayout* layout) {
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(8);
  grid->setVerticalSpacing(5);
  grid->setColumnStretch(1, 1);
  for (std::size_t i = 0; i < resources_.size(); ++i) {
    ResourceRow& r = resources_[i];
    r.dot = new HealthDot(10, this);
    r.name = makeLabel(this);
    r.name->setText(qs(title(allResources[i])));
    r.status = makeLabel(this);
    makeSecondary(r.status);
    const int at = static_cast<int>(i);
    grid->addWidget(r.dot, at, 0);
    grid->addWidget(r.name, at, 1);
    grid->addWidget(r.status, at, 2, Qt::AlignRight);
  }
  layout->addLayout(grid);
}

void Panel::buildApps(QVBoxLayout* layout) {
  appsTitle_ = makeSectionTitle("Busiest apps", this);
  layout->addWidget(appsTitle_);
  for (std::size_t i = 0; i < apps_.size(); ++i) {
    AppRow& a = apps_[i];
    a.box = new QWidget(this);
    auto* row = new QHBoxLayout(a.box);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    a.name = new ElidingLabel(a.box);
    a.memory = makeLabel(a.box);
    a.cpu = makeLabel(a.box);
    for (QLabel* figure : {a.memory, a.cpu}) {
      figure->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
      makeSecondary(figure);
    }
    a.memory->setFixedWidth(a.memory->fontMetrics().horizontalAdvance("000.0 GB") + 4);
    a.cpu->setFixedWidth(a.cpu->fontMetrics().horizontalAdvance("100%") + 4);
    a.busy = makeLabel(a.box);
    a.busy->setText("Quitting…");
    makeSecondary(a.busy);
    a.quit = smallButton("Quit", a.box);
    a.forceQuit = smallButton("Force quit", a.box);
    row->addWidget(a.name, 1);
    row->addWidget(a.memory);
    row->addWidget(a.cpu);
    row->addSpacing(4);
    row->addWidget(a.busy);
    row->addWidget(a.quit);
    row->addWidget(a.forceQuit);
    const int at = static_cast<int>(i);
    connect(a.quit, &QPushButton::clicked, this, [this, at] { quitApp(at, false); });
    connect(a.forceQuit, &QPushButton::clicked, this, [this, at] { quitApp(at, true); });
    layout->addWidget(a.box);
  }
}

void Panel::buildFooter(QVBoxLayout* layout) {
  auto* row = new QHBoxLayout;
  auto* open = new QPushButton("Open Tovrin", this);
  auto* quit = new QPushButton("Quit Tovrin", this);
  open->setDefault(true);
  row->addWidget(open);
  row->addStretch(1);
  row->addWidget(quit);
  layout->addLayout(row);
  connect(open, &QPushButton::clicked, this, [this] {
    hide();
    emit openRequested();
  });
  connect(quit, &QPushButton::clicked, this, &Panel::quitRequested);
}

void Panel::popUpAt(const QPoint& cursor) {
  fill();
  const QScreen* screen = QGuiApplication::screenAt(cursor);
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  const QRect free = screen->availableGeometry();
  // Below the cursor when the tray is at the top of the screen, above it when at the bottom.
  const bool above = cursor.y() > free.center().y();
  QPoint at(cursor.x() - width() / 2, above ? cursor.y() - height() - 4 : cursor.y() + 4);
  at.setX(std::clamp(at.x(), free.left(), std::max(free.left(), free.right() - width() + 1)));
  at.setY(std::clamp(at.y(), free.top(), std::max(free.top(), free.bottom() - height() + 1)));
  move(at);
  show();
  raise();
  activateWindow();
}

void Panel::refresh() {
  if (isVisible()) fill();
}

void Panel::setUnreadAlerts(std::int64_t count) {
  alerts_->setText(newAlertsText(count));
  if (alerts_->isVisibleTo(this) == (count > 0)) return;
  alerts_->setVisible(count > 0);
  // The layout learns of a hidden child on its next pass, and until then keeps the panel at
  // least as tall as it was.
  layout()->activate();
  resize(panelWidth, neededHeight(this));
}

void Panel::fill() {
  const LiveState& state = state_();
  result_->refresh();
  if (!state.snapshot || !state.verdict) {
    headlineDot_->setHealth(Health::ok);
    headline_->setText(firstReading);
    reason_->hide();
    for (ResourceRow& r : resources_) r.status->setText("");
    fillApps(Snapshot{});
    adviceTitle_->hide();
    advice_->hide();
    resize(panelWidth, neededHeight(this));
    return;
  }
  const Verdict& verdict = *state.verdict;
  headlineDot_->setHealth(state.worst());
  headline_->setText(qs(verdict.headline()));
  const ResourceVerdict* lead = focus(verdict);
  reason_->setText(lead ? qs(lead->reason) : "Nothing is slowing it down.");
  reason_->show();
  for (std::size_t i = 0; i < resources_.size(); ++i) {
    const Resource resource = allResources[i];
    const auto found = std::ranges::find(verdict.resources, resource, &ResourceVerdict::resource);
    const auto shown = state.displayed.find(resource);
    resources_[i].dot->setHealth(shown == state.displayed.end() ? Health::ok : shown->second);
    resources_[i].status->setText(found == verdict.resources.end() ? "" : qs(found->shortStatus));
  }
  fillApps(*state.snapshot);
  const std::vector<std::string> advice = allAdvice(verdict);
  advice_->setText(bulleted(advice));
  adviceTitle_->setVisible(!advice.empty());
  advice_->setVisible(!advice.empty());
  resize(panelWidth, neededHeight(this));
}

void Panel::fillApps(const Snapshot& snapshot) {
  const int cores = std::max(snapshot.cpu.coreCount, 1);
  for (std::size_t i = 0; i < apps_.size(); ++i) {
    AppRow& a = apps_[i];
    if (i >= snapshot.apps.size()) {
      a.appID.clear();
      a.box->hide();
      continue;
    }
    const AppUsage& app = snapshot.apps[i];
    a.appID = app.id;
    a.name->setFullText(qs(app.name));
    a.memory->setText(qs(Format::memory(app.footprintBytes)));
    a.cpu->setText(qs(Format::percent(app.cpuCores / cores)));
    const bool busy = quit_.isWorking(app.id);
    a.busy->setVisible(busy);
    a.quit->setVisible(!busy);
    a.forceQuit->setVisible(!busy);
    a.box->show();
  }
  appsTitle_->setVisible(!snapshot.apps.empty());
}

void Panel::quitApp(int row, bool force) {
  const std::string id = apps_[static_cast<std::size_t>(row)].appID;
  const LiveState& state = state_();
  if (id.empty() || !state.snapshot) return;
  const auto found = std::ranges::find(state.snapshot->apps, id, &AppUsage::id);
  if (found == state.snapshot->apps.end()) return;
  const AppUsage app = *found;
  // A popup closes when another window takes the mouse, so it steps aside for the alert and
  // comes back where it was to show how the quit goes.
  const QPoint at = pos();
  hide();
  quit_.confirmAndQuit(app, force, nullptr);
  move(at);
  show();
}

QStringList Panel::texts() const {
  QStringList out;
  const auto add = [&](const QLabel* label) {
    if (label->isVisibleTo(this) && !label->text().isEmpty()) out << label->text();
  };
  add(headline_);
  add(reason_);
  if (result_->isVisibleTo(this)) out << result_->text();
  if (alerts_->isVisibleTo(this)) out << alerts_->text();
  for (const ResourceRow& r : resources_) {
    if (!r.status->text().isEmpty()) out << r.name->text() + ": " + r.status->text();
  }
  for (const AppRow& a : apps_) {
    if (!a.box->isVisibleTo(this)) continue;
    out << a.name->fullText() + " · " + a.memory->text() + " · " + a.cpu->text() +
               (a.busy->isVisibleTo(this) ? " · " + a.busy->text() : QString());
  }
  if (advice_->isVisibleTo(this)) out << advice_->text().split('\n');
  return out;
}

QPushButton* Panel::quitButton(int row, bool force) const {
  const AppRow& a = apps_[static_cast<std::size_t>(row)];
  return force ? a.forceQuit : a.quit;
}

void Panel::showEvent(QShowEvent* event) {
  QFrame::showEvent(event);
  refresh();
  emit visibilityChanged();
}

void Panel::hideEvent(QHideEvent* event) {
  QFrame::hideEvent(event);
  emit visibilityChanged();
}

}  // namespace pellwin::ui
