#include "ui/start_plan.h"

namespace pellwin::ui {

StartPlan startPlan(bool firstLaunch, bool trayAvailable, bool capture) {
  if (firstLaunch) return {.openWindow = true, .showTour = true};
  return {.openWindow = !trayAvailable || capture};
}

}  // namespace pellwin::ui
