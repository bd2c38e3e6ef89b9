#include "probe/system/bundle_identifier_cache.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "core/base/path_text.h"
#include "probe/system/cgroup_unit.h"

namespace pellwin {

namespace fs = std::filesystem;

namespace {

// App ids a program gives itself that have no desktop entry of that name.
constexpr std::pair<std::string_view, std::string_view> aliases[] = {
    {"com.google.Chrome", "google-chrome"},
    {"org.chromium.Chromium", "chromium"},
    {"org.chromium.Chromium", "chromium-browser"},
};

std::string folderOf(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos || slash == 0 ? std::string()
                                                       : std::string(path.substr(0, slash));
}

AppIdentity identityOf(const DesktopEntry& entry) {
  std::string id = entry.id;
  if (id.ends_with(".desktop")) id.resize(id.size() - 8);
  return AppIdentity{.id = id,
                     .name = entry.name.empty() ? id : entry.name,
                     .entryPath = entry.path,
                     .categories = entry.categories};
}

// A sandbox id without an entry still names the app: "com.slack.Slack" is better than nothing.
AppIdentity bareIdentity(const std::string& id, const std::string& name) {
  return AppIdentity{.id = id, .name = name};
}

// "Obsidian-1.4.16.AppImage" → "Obsidian": the name before the version or architecture.
std::string appImageName(const std::string& path) {
  std::string name = std::string(lastPathComponent(path));
  for (const std::string_view suffix : {".AppImage", ".appimage"}) {
    if (name.ends_with(suffix)) name.resize(name.size() - suffix.size());
  }
  for (std::size_t dash = name.find('-'); dash != std::string::npos;
       dash = name.find('-', dash + 1)) {
    const std::string_view rest = std::string_view(name).substr(dash + 1);
    if (!rest.empty() && (std::isdigit(static_cast<unsigned char>(rest.front())) ||
                          rest.starts_with("x86_64") || rest.starts_with("aarch64"))) {
      name.resize(dash);
      break;
    }
  }
  return name;
}

}  // namespace

BundleIdentifierCache::BundleIdentifierCache(DesktopSources sources)
    : sources_(std::move(sources)) {}

std::uint64_t BundleIdentifierCache::generation(double now) {
  const std::lock_guard lock(mutex_);
  refreshIfChanged(now);
  return generation_;
}

std::uint64_t BundleIdentifierCache::generation() const {
  const std::lock_guard lock(mutex_);
  return generation_;
}

std::vector<BundleIdentifierCache::FolderStamp> BundleIdentifierCache::stamps() const {
  std::vector<FolderStamp> result;
  for (const auto& folder : index_->watchedFolders()) {
    std::error_code error;
    const auto modified = fs::last_write_time(folder, error);
    result.push_back(
        FolderStamp{.folder = folder, .modified = error ? std::nullopt : std::optional(modified)});
  }
  return result;
}

void BundleIdentifierCache::refreshIfChanged(double now) {
  if (index_ && checkedAt_ && now >= *checkedAt_ && now - *checkedAt_ < refreshInterval) return;
  const bool first = !index_;
  if (index_ && stamps() == stamps_) {
    checkedAt_ = now;
    return;
  }
  index_ = DesktopIndex::build(sources_);
  stamps_ = stamps();
  checkedAt_ = now;
  executables_.clear();
  if (!first) ++generation_;
}

std::optional<AppIdentity> BundleIdentifierCache::identity(const ProcessFacts& facts, double now) {
  const std::lock_guard lock(mutex_);
  refreshIfChanged(now);
  return resolve(facts);
}

std::optional<AppIdentity> BundleIdentifierCache::identity(std::string_view desktopId) {
  const std::lock_guard lock(mutex_);
  if (!index_) refreshIfChanged(checkedAt_.value_or(0));
  const auto* entry = index_->byId(desktopId);
  return entry ? std::optional(identityOf(*entry)) : std::nullopt;
}

const DesktopEntry* BundleIdentifierCache::byExecutable(const std::string& executable) {
  if (const auto known = executables_.find(executable); known != executables_.end()) {
    return known->second;
  }
  const DesktopEntry* entry = index_->byExecutable(executable);
  bool byName = false;
  if (!entry) {
    entry = index_->byName(std::string(lastPathComponent(executable)));
    byName = entry != nullptr;
  }
  executables_.emplace(executable, entry);
  // The other programs in an app's own folder (crash handlers, helpers started by the system)
  // belong to it too. Earlier misses may now be hits.
  if (byName && index_->learnFolder(folderOf(executable), *entry)) {
    std::erase_if(executables_, [](const auto& known) { return known.second == nullptr; });
    ++generation_;
  }
  return entry;
}

const DesktopEntry* BundleIdentifierCache::byScript(const ProcessFacts& facts) const {
  // python3 /usr/bin/meld: the first argument that is not an option.
  const auto script = std::find_if(facts.arguments.begin() + 1, facts.arguments.end(),
                                   [](const std::string& a) { return !a.starts_with("-"); });
  if (script == facts.arguments.end()) return nullptr;
  fs::path path = *script;
  if (path.is_relative()) {
    if (!facts.workingDirectory) return nullptr;
    path = fs::path(*facts.workingDirectory) / path;
  }
  std::error_code error;
  const auto real = fs::canonical(path, error);
  return error ? nullptr : index_->byScript(real.string());
}

std::optional<AppIdentity> BundleIdentifierCache::resolve(const ProcessFacts& facts) {
  const CgroupUnit unit = innermostUnit(facts.cgroup);

  // A sandbox names its app; its paths are the sandbox's and never match the host's files.
  std::string flatpak = facts.flatpakId;
  if (flatpak.empty() && unit.kind == CgroupUnit::Kind::flatpak) flatpak = unit.ids.front();
  if (!flatpak.empty()) {
    const auto* entry = index_->byFlatpakId(flatpak);
    return entry ? identityOf(*entry) : bareIdentity(flatpak, flatpak);
  }
  if (unit.kind == CgroupUnit::Kind::snap) {
    for (const auto& id : unit.ids) {
      if (const auto* entry = index_->byId(id)) return identityOf(*entry);
    }
    const std::string& snap = unit.ids.back();
    const auto* entry = index_->bySnapName(snap);
    return entry ? identityOf(*entry) : bareIdentity(unit.ids.front(), snap);
  }
  if (!facts.appImage.empty()) {
    const auto* entry = index_->byLaunchedFile(facts.appImage);
    const std::string name = appImageName(facts.appImage);
    return entry ? identityOf(*entry) : bareIdentity(name, name);
  }

  // The program itself: its executable, its install folder, an interpreter's script, and
  // the names it goes by.
  if (!facts.executable.empty()) {
    const std::string program = std::string(lastPathComponent(facts.executable));
    if (!isGenericProgramName(program)) {
      if (const auto* entry = byExecutable(facts.executable)) return identityOf(*entry);
    } else if (const auto* entry = index_->byExecutable(facts.executable)) {
      return identityOf(*entry);  // a runtime in an app's own folder (a bundled JRE)
    } else if (facts.arguments.size() > 1) {
      if (const auto* script = byScript(facts)) return identityOf(*script);
    }
  }
  if (!facts.arguments.empty()) {
    if (const auto* entry =
            index_->byName(std::string(lastPathComponent(facts.arguments.front())))) {
      return identityOf(*entry);
    }
  }
  if (const auto* entry = index_->byName(facts.comm)) return identityOf(*entry);

  // Started from a terminal or a login session: a command-line program, never folded into
  // the terminal or into the app that started it.
  if (facts.controllingTerminal || unit.kind == CgroupUnit::Kind::terminal) return std::nullopt;

  if (unit.kind == CgroupUnit::Kind::app || unit.kind == CgroupUnit::Kind::dbus) {
    std::vector<std::string> exact;
    for (const auto& id : unit.ids) {
      if (index_->byId(id)) exact.push_back(id);
    }
    std::stable_sort(exact.begin(), exact.end(),
                     [](const auto& a, const auto& b) { return a.size() > b.size(); });
    if (!exact.empty()) return identityOf(*index_->byId(exact.front()));
    for (const auto& id : unit.ids) {
      for (const auto& [alias, entryId] : aliases) {
        if (id != alias) continue;
        if (const auto* entry = index_->byId(entryId)) return identityOf(*entry);
      }
      if (const auto* entry = index_->byName(id)) return identityOf(*entry);
    }
  }
  return facts.parentApp;
}

}  // namespace pellwin
