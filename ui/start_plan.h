// Which windows open when the tray app starts. The first launch opens the window with the short
// tour over it; a later launch starts quietly as the dot, and opens the window only when there
// is no tray to open it from, or when "--capture" asks for it (screenshots).
#pragma once

namespace pellwin::ui {

struct StartPlan {
  bool openWindow = false;
  bool showTour = false;
  friend bool operator==(const StartPlan&, const StartPlan&) = default;
};

[[nodiscard]] StartPlan startPlan(bool firstLaunch, bool trayAvailable, bool capture);

}  // namespace pellwin::ui
