// The Alerts screen's model, Qt-free: the stored alerts grouped by day with their texts, the
// unread count for the sidebar and the panel, and marking them read once the list was seen.
// Reads go through the recorder; every public call and every change happen on the owner's
// thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "app/models/history_loader.h"
#include "app/models/history_recorder.h"
#include "core/base/calendar.h"
#include "core/history/alert_lines.h"

namespace pellwin {

class AlertsModel {
 public:
  // The newest alerts listed; older ones stay in the file until history is cleared.
  static constexpr std::int64_t listed = 500;

  struct Setup {
    HistoryRecorder& recorder;
    std::function<double()> now;
    std::function<Calendar(double now)> calendar;
    std::function<void()> changed;  // optional
  };

  explicit AlertsModel(Setup setup);

  // Reads again when the recorder has written since the last read.
  void refresh();
  // The list was seen: every alert is marked read, in the file and in the list shown.
  void markSeen();

  [[nodiscard]] const std::optional<std::vector<AlertSection>>& sections() const {
    return loader_.view();
  }
  // For the badge: the recorder's count, which is 0 at once after `markSeen`.
  [[nodiscard]] std::int64_t unreadCount() const { return setup_.recorder.unreadAlerts(); }
  [[nodiscard]] bool loading() const { return loader_.loading(); }
  [[nodiscard]] const std::optional<HistoryUnavailable>& unavailable() const {
    return loader_.unavailable();
  }

 private:
  Setup setup_;
  HistoryLoader<std::vector<AlertSection>> loader_;
};

}  // namespace pellwin
