// A failed SQLite call: SQLite's own result code and message, read from the connection at the
// moment of failure. The message is SQLite's, never the program's.
#pragma once

#include <string>

namespace pellwin {

struct SQLiteError {
  int code = 0;
  std::string message{};

  // "SQLite error " + code + ": " + message.
  [[nodiscard]] std::string description() const {
    return "SQLite error " + std::to_string(code) + ": " + message;
  }
  friend bool operator==(const SQLiteError&, const SQLiteError&) = default;
};

}  // namespace pellwin
