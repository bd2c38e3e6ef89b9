#include "core/space/space_map_texts.h"

#include "core/base/format.h"
#include "core/base/path_text.h"

namespace pellwin::SpaceMapTexts {

namespace {

std::string counted(std::size_t items, std::uint64_t bytes) {
  return std::to_string(items) + (items == 1 ? " item (" : " items (") + Format::disk(bytes) + ")";
}

}  // namespace

std::string trashConfirmation(std::size_t items, std::uint64_t bytes) {
  return "Move " + counted(items, bytes) +
         " to the Trash. You can put it back, and emptying the Trash frees the space.";
}

std::string deleteConfirmation(std::size_t items, std::uint64_t bytes) {
  return "Delete " + counted(items, bytes) + " for good. This can't be undone.";
}

std::string result(const TrashResult& result) {
  const std::string name(lastPathComponent(result.path));
  using enum TrashResult::Outcome;
  switch (result.outcome) {
    case moved: return name + " is in the Trash; empty the Trash to free the space.";
    case deleted: return name + " was deleted for good.";
    case alreadyGone: return name + " was already gone.";
    case refused:
    case failed: return name + " wasn't deleted. " + result.reason;
  }
  return "";
}

std::optional<std::string> accessNotice(std::int64_t lockedFolders, bool accessDenied) {
  if (lockedFolders <= 0) return std::nullopt;
  std::string text = lockedFolders == 1
                         ? std::string("1 folder is private, so what's inside it isn't counted.")
                         : std::to_string(lockedFolders) +
                               " folders are private, so what's inside them isn't counted.";
  if (accessDenied) text += " " + std::string(allowWholeDisk) + " to see inside.";
  return text;
}

}  // namespace pellwin::SpaceMapTexts
