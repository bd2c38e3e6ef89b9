#include "probe/files/full_disk_access.h"

#include <variant>

#include "probe/files/directory_listing.h"

namespace pellwin {
namespace FullDiskAccess {

State state(const std::string& home) {
  bool sawLocked = false;
  for (const char* probe : {"Library/Mail", "Library/Safari", "Library/Messages"}) {
    const auto listed = DirectoryListing::list(home + "/" + probe);
    if (std::holds_alternative<DirectoryListing::Entries>(listed)) return State::granted;
    if (std::holds_alternative<DirectoryListing::Locked>(listed)) sawLocked = true;
  }
  return sawLocked ? State::denied : State::unknown;
}

}  // namespace FullDiskAccess

ScanRoot ScanRoot::forAccess(FullDiskAccess::State state, const std::string& home) {
  if (state == FullDiskAccess::State::granted) return wholeDisk();
  return {.path = home, .stripPrefix = std::nullopt};
}

}  // namespace pellwin
