// The removal disk of the running system: lstat and realpath, a search below a folder through
// open descriptors, the freedesktop.org Trash and removal for good that never follows a link.
// Blocking; call it off the user-interface thread.
#pragma once

#include "probe/files/freedesktop_trash.h"
#include "probe/files/removal_disk.h"

namespace pellwin {

class LiveRemovalDisk final : public RemovalDisk {
 public:
  explicit LiveRemovalDisk(FreedesktopTrash trash) : trash_(std::move(trash)) {}

  [[nodiscard]] std::expected<Entry, SystemError> inspect(const std::string& path) override;
  [[nodiscard]] std::optional<std::string> resolve(const std::string& path) override;
  [[nodiscard]] std::expected<std::optional<Subfolder>, SystemError> findSubfolder(
      const std::string& folder, const std::function<bool(const Subfolder&)>& isProtected) override;
  [[nodiscard]] std::expected<std::string, std::string> moveToTrash(
      const std::string& path, const Identity& expected) override;
  [[nodiscard]] std::expected<void, std::string> putBack(const std::string& trashed,
                                                         const std::string& path) override;
  [[nodiscard]] std::expected<void, std::string> removeForGood(
      const std::string& path, const Identity& expected,
      const std::vector<Identity>& kept) override;

 private:
  FreedesktopTrash trash_;
};

}  // namespace pellwin
