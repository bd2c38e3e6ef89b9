// What each history screen shows instead of its contents while history is off (the history
// file could not be opened or a write failed). The monitor keeps working meanwhile.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin {

enum class HistoryScreen { history, alerts, report };

[[nodiscard]] constexpr EnumTable<HistoryScreen::report> textTable(HistoryScreen) {
  return {{
      {HistoryScreen::history, "history"},
      {HistoryScreen::alerts, "alerts"},
      {HistoryScreen::report, "report"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(HistoryScreen screen) { return enumText(screen); }

struct HistoryUnavailable {
  std::string title{};        // "History isn't available"
  std::string explanation{};  // what this screen cannot show, and that the monitor still works
  friend bool operator==(const HistoryUnavailable&, const HistoryUnavailable&) = default;
};

[[nodiscard]] HistoryUnavailable historyUnavailable(HistoryScreen screen);

}  // namespace pellwin
