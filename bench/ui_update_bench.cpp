// One update of the main window's Monitor screen, as the window takes it every 2 s while it is
// open, on a machine of about 500 processes (240 apps): the tiles, the verdict, the energy
// card, the list's model brought up to date in place (apps ending, starting and changing
// places) and the picked app's details; then the same with the repaint that follows. Drawn
// off screen.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <memory>
#include <ranges>

#include "testing/monitor_scene.h"
#include "ui/main_window.h"
#include "ui/monitor_screen.h"

namespace pellwin {
namespace {

class NoSignals final : public ProcessSignals {
 public:
  std::expected<void, SystemError> send(std::int32_t, int) override { return {}; }
  bool isRunning(std::int32_t) override { return false; }
};

QApplication& application() {
  static int argc = 1;
  static char name[] = "ui_update_bench";
  static char* argv[] = {name, nullptr};
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static QApplication app(argc, argv);
  return app;
}

// About 500 processes: the scene's 46 and 227 small programs of two each.
constexpr int extraApps = 227;

// Two ticks that differ the way consecutive ones do: figures move, so rows change places,
// and a few programs end while others start.
std::array<LiveState, 2> ticks() {
  std::array<LiveState, 2> states = {testing::sceneState(extraApps),
                                     testing::sceneState(extraApps)};
  auto& apps = states[1].snapshot->apps;
  for (std::size_t i = 0; i < apps.size(); i += 3) apps[i].footprintBytes += (i % 40) << 20;
  apps.erase(apps.begin() + 100, apps.begin() + 104);
  for (AppUsage& app : apps | std::views::drop(200)) app.id += "-new";
  return states;
}

struct Window {
  std::array<LiveState, 2> states = ticks();
  std::size_t shown = 0;
  ui::QuitControl quit{std::make_shared<NoSignals>(), 1};
  ui::MainWindow window;
  ui::MonitorScreen* monitor;

  Window() {
    monitor = new ui::MonitorScreen([this]() -> const LiveState& { return states[shown]; }, quit);
    window.addScreen("Monitor", monitor);
    window.show();
    monitor->select("app:code");
    QApplication::processEvents();
  }
  void next() {
    shown = 1 - shown;
    monitor->refresh();
  }
};

void BM_MonitorUpdate(benchmark::State& state) {
  application();
  Window w;
  for (auto _ : state) w.next();
  state.SetLabel(std::to_string(w.states[0].snapshot->apps.size()) + " apps");
}
BENCHMARK(BM_MonitorUpdate)->Unit(benchmark::kMillisecond);

void BM_MonitorUpdateAndRepaint(benchmark::State& state) {
  application();
  Window w;
  for (auto _ : state) {
    w.next();
    QApplication::processEvents();
  }
}
BENCHMARK(BM_MonitorUpdateAndRepaint)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pellwin
