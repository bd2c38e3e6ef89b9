// What is at a path that is about to become a scratch history file: nothing, an empty file, a
// history file of this program, or something else that must be left alone (another program's
// database, a folder, a link). Reads only: an SQLite file is opened read-only and immutable,
// so not even a lock or a -shm file is made. Blocking.
#pragma once

#include <filesystem>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin {

enum class HistoryFileKind { absent, empty, history, other };

[[nodiscard]] constexpr EnumTable<HistoryFileKind::other> textTable(HistoryFileKind) {
  return {{
      {HistoryFileKind::absent, "absent"},
      {HistoryFileKind::empty, "empty"},
      {HistoryFileKind::history, "history"},
      {HistoryFileKind::other, "other"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(HistoryFileKind kind) { return enumText(kind); }

// `history` only for a regular file (a link is not followed) whose user_version is this
// program's schema version and which holds every history table.
[[nodiscard]] HistoryFileKind historyFileKind(const std::filesystem::path& path);

}  // namespace pellwin
