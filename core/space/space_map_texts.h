// The sentences the space map shows around the delete list: the confirmation before removing,
// one result per item after, and what a scan could not see. Pure text from plain values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/space/trash_item.h"

namespace pellwin::SpaceMapTexts {

// A locked folder's row, and its details.
inline constexpr std::string_view lockedRow = "Private. Allow whole-disk scan to see inside";
inline constexpr std::string_view lockedDetails =
    "macOS keeps this folder private. Allow whole-disk scan to see inside";
inline constexpr std::string_view allowWholeDisk = "Allow whole-disk scan";
inline constexpr std::string_view confirmButton = "Move to Trash";
inline constexpr std::string_view confirmDeleteButton = "Delete";
inline constexpr std::string_view cancelButton = "Cancel";

// What confirming will do to `items` items of `bytes` in all: "Move 3 items (4.5 GB) to the
// Trash. ...", or for deleting for good "Delete 1 item (2 MB) for good. ...".
[[nodiscard]] std::string trashConfirmation(std::size_t items, std::uint64_t bytes);
[[nodiscard]] std::string deleteConfirmation(std::size_t items, std::uint64_t bytes);

// One sentence for one item's outcome, naming the item by the last component of its path:
// "x is in the Trash; empty the Trash to free the space.", "x was already gone.",
// "x wasn't deleted. " + the reason.
[[nodiscard]] std::string result(const TrashResult& result);

// What a scan left out, when it met folders it could not read: how many, and, when the system
// refused the program whole-disk access, the way to allow it. None without locked folders.
[[nodiscard]] std::optional<std::string> accessNotice(std::int64_t lockedFolders,
                                                      bool accessDenied);

}  // namespace pellwin::SpaceMapTexts
