// The desktop entries of the XDG data folders, indexed by the facts a process shows: desktop
// id, sandbox id, executable, install folder, script and program name. Built once from disk;
// lookups are pure. Not thread-safe on its own: BundleIdentifierCache guards it.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "probe/system/desktop_entry.h"

namespace pellwin {

struct DesktopSources {
  // Data folders in precedence order ($XDG_DATA_HOME first); entries are in "applications".
  std::vector<std::filesystem::path> dataDirs{};
  // Where a bare program name of an Exec line is looked up ($PATH).
  std::vector<std::filesystem::path> searchPath{};
  std::string locale;  // for Name[...]; empty for the untranslated names
  friend bool operator==(const DesktopSources&, const DesktopSources&) = default;
};

class DesktopIndex {
 public:
  // Reads every entry below the data folders. The first folder that has an id wins, an
  // earlier Hidden=true masks later copies, entries of another Type and entries whose TryExec
  // is not installed are left out.
  [[nodiscard]] static DesktopIndex build(const DesktopSources& sources);

  // Each lookup gives the best entry when several match: shown in menus before hidden ones,
  // no app-selecting arguments (--app-id=, a URL), id equal to the program, shortest id.
  [[nodiscard]] const DesktopEntry* byId(std::string_view id) const;  // with or without ".desktop"
  [[nodiscard]] const DesktopEntry* byFlatpakId(std::string_view appId) const;
  [[nodiscard]] const DesktopEntry* bySnapName(std::string_view snap) const;
  // Exact executable, then the nearest install folder above it (never a shared one).
  [[nodiscard]] const DesktopEntry* byExecutable(const std::string& executable) const;
  // An interpreter's script, as a real path.
  [[nodiscard]] const DesktopEntry* byScript(const std::string& script) const;
  // A program name, case-insensitive; generic names (shells, interpreters) never match.
  [[nodiscard]] const DesktopEntry* byName(std::string_view name) const;
  // The entry whose Exec starts the AppImage file at `path`.
  [[nodiscard]] const DesktopEntry* byLaunchedFile(const std::string& path) const;

  // Lets the other programs in `folder` (crash handlers, helpers) find `entry` by folder.
  // False when the folder is shared or already known.
  [[nodiscard]] bool learnFolder(const std::string& folder, const DesktopEntry& entry);
  // Folders such as /usr/bin that hold programs of many apps; they never identify one.
  [[nodiscard]] bool isSharedFolder(std::string_view folder) const;

  // The folders whose change means the index is out of date: every applications folder,
  // whether it exists yet or not, and the folders found below them.
  [[nodiscard]] const std::vector<std::filesystem::path>& watchedFolders() const {
    return watched_;
  }
  [[nodiscard]] std::size_t size() const { return entries_.size(); }

 private:
  using Keys = std::map<std::string, std::vector<std::size_t>, std::less<>>;
  void add(DesktopEntry entry, const DesktopSources& sources);
  [[nodiscard]] const DesktopEntry* best(const Keys& keys, std::string_view key,
                                         std::string_view program = {}) const;

  std::vector<DesktopEntry> entries_;
  std::map<std::string, std::size_t, std::less<>> byId_;
  Keys byExecutable_, byFolder_, byName_, byScript_, byFlatpak_, bySnap_, byLaunchedFile_;
  std::vector<std::string> sharedFolders_;
  std::vector<std::filesystem::path> watched_;
};

}  // namespace pellwin
