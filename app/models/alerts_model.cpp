#include "app/models/alerts_model.h"

namespace pellwin {

AlertsModel::AlertsModel(Setup setup)
    : setup_(std::move(setup)), loader_(setup_.recorder, HistoryScreen::alerts, setup_.changed) {}

void AlertsModel::refresh() {
  const double now = setup_.now();
  loader_.load(
      [now, calendar = setup_.calendar(now)](
          const HistoryStore& store) -> SQLiteResult<std::vector<AlertSection>> {
        auto rows = store.alerts(listed);
        if (!rows) return std::unexpected(rows.error());
        return alertSections(*rows, now, calendar);
      },
      false);
}

void AlertsModel::markSeen() {
  setup_.recorder.markAlertsRead();
  loader_.edit([](std::vector<AlertSection>& sections) {
    for (AlertSection& section : sections) {
      for (AlertLine& line : section.lines) line.unread = false;
    }
  });
}

}  // namespace pellwin
