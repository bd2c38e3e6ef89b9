// Failures of the history store that are not SQLite's own: a file written by a newer version,
// a folder that could not be created. The description is the message.
#pragma once

#include <string>
#include <variant>

#include "store/sqlite_error.h"

namespace pellwin {

struct HistoryStoreError {
  std::string message{};
  [[nodiscard]] const std::string& description() const { return message; }
  friend bool operator==(const HistoryStoreError&, const HistoryStoreError&) = default;
};

// What opening the history can fail with.
using HistoryOpenError = std::variant<SQLiteError, HistoryStoreError>;

[[nodiscard]] inline std::string description(const HistoryOpenError& error) {
  return std::visit([](const auto& e) { return std::string(e.description()); }, error);
}

}  // namespace pellwin
