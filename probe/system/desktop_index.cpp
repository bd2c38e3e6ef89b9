#include "probe/system/desktop_index.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <tuple>

#include "core/base/path_text.h"
#include "probe/proc_file.h"

namespace pellwin {

namespace fs = std::filesystem;

namespace {

// Folders that hold the programs of many apps; a program's folder identifies its app only
// when the folder is the app's own (/opt/google/chrome, /usr/share/code, /usr/lib/slack).
constexpr std::string_view sharedFolderList[] = {"/",
                                                 "/bin",
                                                 "/sbin",
                                                 "/usr",
                                                 "/usr/bin",
                                                 "/usr/sbin",
                                                 "/usr/local",
                                                 "/usr/local/bin",
                                                 "/usr/local/sbin",
                                                 "/usr/games",
                                                 "/usr/libexec",
                                                 "/usr/lib",
                                                 "/usr/lib32",
                                                 "/usr/lib64",
                                                 "/usr/share",
                                                 "/opt",
                                                 "/snap",
                                                 "/snap/bin",
                                                 "/app",
                                                 "/app/bin",
                                                 "/var/lib/flatpak/exports/bin",
                                                 "/usr/local/lib",
                                                 "/usr/local/share"};

constexpr int deepestFolder = 6;

std::string lowercase(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string parentFolder(std::string_view path) {
  const auto slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return slash == 0 ? "/" : std::string(path.substr(0, slash));
}

std::string stemOf(std::string_view id) {
  if (id.ends_with(".desktop")) id.remove_suffix(8);
  return std::string(id);
}

bool isExecutableFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

// A program as an Exec line names it: an absolute path, or a name looked up in the search path.
std::optional<fs::path> findProgram(const std::string& program,
                                    const std::vector<fs::path>& searchPath) {
  if (program.empty()) return std::nullopt;
  if (program.find('/') != std::string::npos) {
    return isExecutableFile(program) ? std::optional<fs::path>(program) : std::nullopt;
  }
  for (const auto& folder : searchPath) {
    if (isExecutableFile(folder / program)) return folder / program;
  }
  return std::nullopt;
}

std::optional<std::string> realPath(const fs::path& path) {
  std::error_code error;
  auto real = fs::canonical(path, error);
  if (error) return std::nullopt;
  return real.string();
}

// Chrome's web apps and Steam's game shortcuts run the same program as the app itself; their
// entries name the app they select in their arguments.
bool selectsAnApp(const DesktopEntry& entry) {
  return std::any_of(entry.exec.begin(), entry.exec.end(), [](const std::string& argument) {
    return argument.starts_with("--app-id=") || argument.starts_with("--app=") ||
           argument.starts_with("--profile-directory") || argument.find("://") != std::string::npos;
  });
}

void collectEntries(const fs::path& root, std::vector<fs::path>& files,
                    std::vector<fs::path>& folders) {
  std::error_code error;
  fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, error);
  for (; !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
    std::error_code kind;
    if (it->is_directory(kind)) {
      if (it.depth() >= deepestFolder) it.disable_recursion_pending();
      folders.push_back(it->path());
    } else if (it->path().extension() == ".desktop") {
      files.push_back(it->path());
    }
  }
  std::sort(files.begin(), files.end());
}

// The desktop file id: the path below "applications" with "/" turned into "-".
std::string desktopId(const fs::path& root, const fs::path& file) {
  std::string id = file.lexically_relative(root).string();
  std::replace(id.begin(), id.end(), '/', '-');
  return id;
}

}  // namespace

DesktopIndex DesktopIndex::build(const DesktopSources& sources) {
  DesktopIndex index;
  index.sharedFolders_.assign(std::begin(sharedFolderList), std::end(sharedFolderList));
  for (const auto& folder : sources.searchPath) index.sharedFolders_.push_back(folder.string());
  std::set<std::string, std::less<>> claimed;
  for (const auto& dataDir : sources.dataDirs) {
    const fs::path root = dataDir / "applications";
    index.watched_.push_back(root);
    std::vector<fs::path> files;
    collectEntries(root, files, index.watched_);
    for (const auto& file : files) {
      std::string id = desktopId(root, file);
      if (!claimed.insert(id).second) continue;  // an earlier folder has this id
      const auto text = readTextFile(file);
      if (!text) continue;
      auto entry = parseDesktopEntry(*text, sources.locale);
      if (!entry || entry->hidden || entry->type != "Application") continue;
      if (!entry->tryExec.empty() && !findProgram(entry->tryExec, sources.searchPath)) continue;
      entry->id = std::move(id);
      entry->path = file.string();
      index.add(std::move(*entry), sources);
    }
  }
  return index;
}

void DesktopIndex::add(DesktopEntry entry, const DesktopSources& sources) {
  const std::size_t at = entries_.size();
  byId_.emplace(entry.id, at);
  auto key = [at](Keys& keys, std::string name) {
    auto& list = keys[std::move(name)];
    if (std::find(list.begin(), list.end(), at) == list.end()) list.push_back(at);
  };
  auto nameKey = [&](std::string_view name) {
    if (!name.empty() && !isGenericProgramName(lowercase(name))) key(byName_, lowercase(name));
  };
  if (!entry.flatpakId.empty()) key(byFlatpak_, entry.flatpakId);
  if (!entry.snapName.empty()) key(bySnap_, entry.snapName);

  const LaunchTarget target = launchTarget(entry.exec);
  if (target.kind == LaunchTarget::Kind::flatpak) key(byFlatpak_, target.sandboxId);
  if (target.kind == LaunchTarget::Kind::snap) key(bySnap_, target.sandboxId);
  std::vector<std::string> programs;
  if (!target.arguments.empty()) programs.push_back(target.arguments.front());
  if (!entry.tryExec.empty()) programs.push_back(entry.tryExec);
  for (const auto& program : programs) {
    if (program.starts_with("/")) key(byLaunchedFile_, program);
    const auto found = findProgram(program, sources.searchPath);
    const auto real = found ? realPath(*found) : std::nullopt;
    if (!real) continue;
    if (isGenericProgramName(std::string(lastPathComponent(*real)))) {
      // An interpreter: the app is the script it runs (python3 /usr/bin/meld).
      const auto script = std::find_if(target.arguments.begin() + 1, target.arguments.end(),
                                       [](const std::string& a) { return !a.starts_with("-"); });
      if (script == target.arguments.end()) continue;
      const auto scriptPath = findProgram(*script, sources.searchPath);
      if (const auto realScript = scriptPath ? realPath(*scriptPath) : std::nullopt) {
        key(byScript_, *realScript);
      }
      continue;
    }
    key(byExecutable_, *real);
    const std::string folder = parentFolder(*real);
    if (!isSharedFolder(folder)) {
      key(byFolder_, folder);
      // /opt/idea/bin/idea.sh runs /opt/idea/jbr/bin/java: the app's folder is above bin.
      if (folder.ends_with("/bin") && !isSharedFolder(parentFolder(folder))) {
        key(byFolder_, parentFolder(folder));
      }
    }
    nameKey(std::string(lastPathComponent(program)));
    nameKey(std::string(lastPathComponent(*real)));
  }
  nameKey(stemOf(entry.id));
  nameKey(entry.startupWMClass);
  entries_.push_back(std::move(entry));
}

const DesktopEntry* DesktopIndex::best(const Keys& keys, std::string_view key,
                                       std::string_view program) const {
  const auto found = keys.find(key);
  if (found == keys.end() || found->second.empty()) return nullptr;
  auto rank = [&](std::size_t i) {
    const DesktopEntry& e = entries_[i];
    return std::make_tuple(e.noDisplay, selectsAnApp(e), stemOf(e.id) != program, e.id.size(),
                           std::string_view(e.id));
  };
  const auto winner =
      std::min_element(found->second.begin(), found->second.end(),
                       [&](std::size_t a, std::size_t b) { return rank(a) < rank(b); });
  return &entries_[*winner];
}

const DesktopEntry* DesktopIndex::byId(std::string_view id) const {
  auto found = byId_.find(id);
  if (found == byId_.end()) found = byId_.find(std::string(id) + ".desktop");
  return found == byId_.end() ? nullptr : &entries_[found->second];
}

const DesktopEntry* DesktopIndex::byFlatpakId(std::string_view appId) const {
  if (const auto* entry = byId(appId)) return entry;
  return best(byFlatpak_, appId);
}

const DesktopEntry* DesktopIndex::bySnapName(std::string_view snap) const {
  return best(bySnap_, snap);
}

const DesktopEntry* DesktopIndex::byExecutable(const std::string& executable) const {
  // The exact program and the nearest install folder compete: Chrome's web-app entries run
  // Chrome's own program, and must not beat the browser's entry found by its folder.
  std::vector<std::pair<std::size_t, bool>> candidates;  // (entry, exact)
  if (const auto exact = byExecutable_.find(executable); exact != byExecutable_.end()) {
    for (const std::size_t i : exact->second) candidates.emplace_back(i, true);
  }
  for (std::string folder = parentFolder(executable); !folder.empty() && folder != "/";
       folder = parentFolder(folder)) {
    if (const auto found = byFolder_.find(folder); found != byFolder_.end()) {
      for (const std::size_t i : found->second) candidates.emplace_back(i, false);
      break;
    }
  }
  if (candidates.empty()) return nullptr;
  const std::string program = std::string(lastPathComponent(executable));
  auto rank = [&](const std::pair<std::size_t, bool>& candidate) {
    const DesktopEntry& e = entries_[candidate.first];
    return std::make_tuple(e.noDisplay, selectsAnApp(e), !candidate.second, stemOf(e.id) != program,
                           e.id.size(), std::string_view(e.id));
  };
  return &entries_[std::min_element(candidates.begin(), candidates.end(),
                                    [&](const auto& a, const auto& b) { return rank(a) < rank(b); })
                       ->first];
}

const DesktopEntry* DesktopIndex::byScript(const std::string& script) const {
  return best(byScript_, script);
}

const DesktopEntry* DesktopIndex::byName(std::string_view name) const {
  const std::string key = lowercase(name);
  if (key.empty() || isGenericProgramName(key)) return nullptr;
  return best(byName_, key, key);
}

const DesktopEntry* DesktopIndex::byLaunchedFile(const std::string& path) const {
  return best(byLaunchedFile_, path);
}

bool DesktopIndex::learnFolder(const std::string& folder, const DesktopEntry& entry) {
  if (folder.empty() || isSharedFolder(folder) || byFolder_.contains(folder)) return false;
  byFolder_[folder].push_back(static_cast<std::size_t>(&entry - entries_.data()));
  return true;
}

bool DesktopIndex::isSharedFolder(std::string_view folder) const {
  if (std::find(sharedFolders_.begin(), sharedFolders_.end(), folder) != sharedFolders_.end()) {
    return true;
  }
  // Per-user programs (~/.local/bin) and multiarch library folders (/usr/lib/x86_64-linux-gnu).
  return folder.ends_with("/.local/bin") ||
         (folder.starts_with("/usr/lib/") && folder.find("-linux-gnu") != std::string_view::npos &&
          folder.find('/', 9) == std::string_view::npos);
}

}  // namespace pellwin
