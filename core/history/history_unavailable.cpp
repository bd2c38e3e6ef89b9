#include "core/history/history_unavailable.h"

namespace pellwin {

HistoryUnavailable historyUnavailable(HistoryScreen screen) {
  HistoryUnavailable unavailable{.title = "History isn't available"};
  switch (screen) {
    case HistoryScreen::history:
      unavailable.explanation =
          "Tovrin can't open its history file, so nothing is being kept. Monitor and the menu bar "
          "still work.";
      break;
    case HistoryScreen::alerts:
      unavailable.explanation =
          "Tovrin can't open its history file, so alerts aren't kept. Monitor and the menu bar "
          "still work.";
      break;
    case HistoryScreen::report:
      unavailable.explanation =
          "Tovrin can't open its history file, so there is nothing to report. Monitor and the "
          "menu bar still work.";
      break;
  }
  return unavailable;
}

}  // namespace pellwin
