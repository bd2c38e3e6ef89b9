// Runs a body of writes as one transaction: "BEGIN IMMEDIATE" (the write lock is taken at
// once, so a busy file is met at the start and waits under the busy timeout), the body, then
// "COMMIT". If the body or the commit fails, "ROLLBACK" (whatever it reports is ignored) and
// the first error is returned. A failing BEGIN returns at once.
#pragma once

#include <expected>

#include "store/sqlite_database.h"

namespace pellwin {

template <class Error, class Body>
[[nodiscard]] std::expected<void, Error> inTransaction(const SQLiteDatabase& database,
                                                       Body&& body) {
  if (auto begun = database.exec("BEGIN IMMEDIATE"); !begun) return std::unexpected(begun.error());
  std::expected<void, Error> result = body();
  if (result) {
    if (auto committed = database.exec("COMMIT"); !committed) {
      result = std::unexpected(committed.error());
    }
  }
  // The body's or the commit's error is the one to report, whatever ROLLBACK says.
  if (!result) (void)database.exec("ROLLBACK");
  return result;
}

}  // namespace pellwin
