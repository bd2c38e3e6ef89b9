// What the storage self-tests make on the user's disk, and how they take it all away again:
// a scratch folder under home, one outside home, and the Trash put back as it was (their
// entries erased, "directorysizes" restored byte for byte, trash folders they created removed).
#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "core/space/trash_item.h"
#include "probe/files/freedesktop_trash.h"

namespace pellwin {

class SelfTestScratch {
 public:
  // Makes "<home>/.tovrin-<label>-XXXXXX" and notes the state of the home trash and of the
  // trash of home's volume. The error is a sentence.
  [[nodiscard]] static std::expected<SelfTestScratch, std::string> create(
      const std::string& home, const std::string& dataHome, const std::string& label);
  // A moved-from scratch owns nothing and cleans nothing up.
  SelfTestScratch(SelfTestScratch&& other) noexcept;
  SelfTestScratch& operator=(SelfTestScratch&&) = delete;
  SelfTestScratch(const SelfTestScratch&) = delete;
  SelfTestScratch& operator=(const SelfTestScratch&) = delete;
  ~SelfTestScratch();

  // The scratch folder under home (resolved: no links in it).
  [[nodiscard]] const std::string& folder() const { return folder_; }
  [[nodiscard]] const FreedesktopTrash& trash() const { return trash_; }

  // A folder outside home (made on first use), for items that must be refused.
  [[nodiscard]] std::expected<std::string, std::string> outsideFolder();

  // The Trash entries made since `create` whose original path lies in the scratch folder.
  [[nodiscard]] std::vector<FreedesktopTrash::Entry> newEntries() const;

  // Erases what was made and puts the Trash back; safe to call twice. Returns the first problem.
  [[nodiscard]] std::optional<std::string> cleanUp();

 private:
  struct TrashState {
    std::string directory;
    std::vector<std::string> missingFolders;  // made by the test, deepest last
    std::optional<std::string> sizes;         // directorysizes as it was
    std::vector<std::string> names;           // entries already there
  };

  SelfTestScratch(std::string home, FreedesktopTrash trash, std::vector<TrashState> trashes,
                  std::string folder)
      : home_(std::move(home)),
        trash_(std::move(trash)),
        trashes_(std::move(trashes)),
        folder_(std::move(folder)) {}

  std::string home_;
  FreedesktopTrash trash_;
  std::vector<TrashState> trashes_;
  std::string folder_;
  std::string outside_;
  bool cleaned_ = false;
};

// Writes `bytes` bytes of real data (no holes, so the blocks are allocated), making folders. A
// new file only: anything already at the path, a link included, is left alone.
void writeScratchFile(const std::string& path, std::size_t bytes);

// "moved", or "refused: It's a shortcut to somewhere else".
[[nodiscard]] std::string describe(const TrashResult& result);

}  // namespace pellwin
