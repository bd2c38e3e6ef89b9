// How much space removing one file or folder would give back, and when anything in it last
// changed. Blocking; call it off the UI thread. Reads only; never follows a symbolic link and
// never enters a mount point, so a disk or a bind-mounted folder inside is neither counted nor
// walked.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace pellwin {

struct FreeableSize {
  // Allocated bytes (st_blocks × 512) of everything that would go. A file with hard links
  // counts only when all its links lie inside: a pnpm store whose files projects link to
  // frees almost nothing.
  std::uint64_t bytes = 0;
  // The newest modification time of the item or anything inside it, seconds since 1970.
  double newestModified = 0;
  friend bool operator==(const FreeableSize&, const FreeableSize&) = default;

  // None when nothing is at the path. A symbolic link is measured as itself. A folder that
  // cannot be read counts its own blocks only; one that vanishes mid-walk, or can be read only
  // in part, counts what was seen.
  [[nodiscard]] static std::optional<FreeableSize> measure(const std::string& path);
};

}  // namespace pellwin
