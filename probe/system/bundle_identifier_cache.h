// Which desktop app a process belongs to: the Linux counterpart of an app bundle and its
// identifier. Answers from the process's sandbox (Flatpak, Snap, AppImage), its executable
// matched against the desktop entries, the systemd unit of its cgroup and the app of its
// parent, in that order; a program with a controlling terminal, or in a terminal's or login
// session's scope, is a command-line program and belongs to no app.
//
// Thread-safe: every call takes the cache's lock, because the app grouping may ask from
// another thread than the sampler. The desktop entries are indexed on first use and again
// when their folders change (checked at most every `refreshInterval` seconds); answers per
// executable, hits and misses, are remembered until then.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/monitor/readings.h"
#include "probe/system/desktop_index.h"

namespace pellwin {

// What the process reader knows about a process, once per process life.
struct ProcessFacts {
  std::string executable;  // as the exe link reads, without " (deleted)"; empty if unknown
  std::vector<std::string> arguments{};
  std::string comm;
  std::optional<std::string> workingDirectory{};
  bool controllingTerminal = false;
  std::string cgroup;     // the systemd path of its cgroup
  std::string flatpakId;  // from the sandbox's .flatpak-info
  std::string appImage;   // the APPIMAGE file it runs from
  // The app of the process that started it: a helper with nothing of its own to tell belongs
  // to the app that started it.
  std::optional<AppIdentity> parentApp{};
  friend bool operator==(const ProcessFacts&, const ProcessFacts&) = default;
};

class BundleIdentifierCache {
 public:
  explicit BundleIdentifierCache(DesktopSources sources);

  // The app of the process, or absent for command-line programs and system processes.
  // `now` (seconds since 1970) times the check for changed desktop entries.
  [[nodiscard]] std::optional<AppIdentity> identity(const ProcessFacts& facts, double now);

  // The app of a desktop id ("org.gnome.Nautilus", with or without ".desktop").
  [[nodiscard]] std::optional<AppIdentity> identity(std::string_view desktopId);

  // Grows whenever an earlier miss may now be a hit (the entries changed, or a program's
  // folder became known), so callers can ask again about the processes they have no app for.
  // The first form also checks, when due, whether the desktop entries changed.
  [[nodiscard]] std::uint64_t generation(double now);
  [[nodiscard]] std::uint64_t generation() const;

  static constexpr double refreshInterval = 30.0;

 private:
  struct FolderStamp {
    std::filesystem::path folder;
    std::optional<std::filesystem::file_time_type> modified;
    friend bool operator==(const FolderStamp&, const FolderStamp&) = default;
  };

  void refreshIfChanged(double now);
  [[nodiscard]] std::vector<FolderStamp> stamps() const;
  [[nodiscard]] std::optional<AppIdentity> resolve(const ProcessFacts& facts);
  [[nodiscard]] const DesktopEntry* byExecutable(const std::string& executable);
  [[nodiscard]] const DesktopEntry* byScript(const ProcessFacts& facts) const;

  mutable std::mutex mutex_;
  DesktopSources sources_;
  std::optional<DesktopIndex> index_;
  std::vector<FolderStamp> stamps_;
  std::optional<double> checkedAt_;
  // Executable → its entry, or nullptr for a miss.
  std::unordered_map<std::string, const DesktopEntry*> executables_;
  std::uint64_t generation_ = 0;
};

}  // namespace pellwin
