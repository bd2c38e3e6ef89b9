#include "core/space/removal_rules.h"

#include <algorithm>
#include <cctype>
#include <span>

#include "core/space/folder_catalog.h"

namespace pellwin::RemovalRules {

namespace {

using Parts = std::vector<std::string>;

std::string lowered(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// Exact components, case kept: "." and empty parts dropped, ".." kept so that it is refused.
Parts exactComponents(std::string_view path) {
  Parts parts;
  std::size_t start = 0;
  while (start <= path.size()) {
    std::size_t end = path.find('/', start);
    if (end == std::string_view::npos) end = path.size();
    const std::string_view part = path.substr(start, end - start);
    if (!part.empty() && part != ".") parts.emplace_back(part);
    start = end + 1;
  }
  return parts;
}

// A path the rules cannot reason about: relative (its meaning depends on the working folder),
// climbing with "..", or holding a NUL byte (the system would see only the text before it).
bool isMalformed(std::string_view path, const Parts& parts) {
  if (path.empty() || path.front() != '/') return true;
  if (path.find('\0') != std::string_view::npos) return true;
  return std::ranges::any_of(parts, [](const std::string& part) { return part == ".."; });
}

template <std::size_t N>
bool isOneOf(const std::string& name, const std::array<std::string_view, N>& names) {
  return std::ranges::find(names, name) != names.end();
}

bool beginsWith(std::span<const std::string> parts, std::span<const std::string> prefix) {
  return parts.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), parts.begin());
}

// `relative` is one of the home-relative constants, such as ".local/share".
bool beginsWith(std::span<const std::string> rest, std::string_view relative) {
  return beginsWith(rest, components(relative));
}

bool equals(std::span<const std::string> rest, std::string_view relative) {
  const Parts other = components(relative);
  return rest.size() == other.size() && beginsWith(rest, other);
}

// A trash folder at the top of some volume inside home: ".Trash" (freedesktop method 1) or
// ".Trash-1000" (method 2), matched anywhere since mounts can sit at any depth.
bool isVolumeTrashName(const std::string& name) {
  if (name == ".trash") return true;
  constexpr std::string_view prefix = ".trash-";
  if (name.size() <= prefix.size() || !name.starts_with(prefix)) return false;
  return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<RemovalRefusal> refuse(std::string_view reason) {
  return RemovalRefusal{.reason = std::string(reason)};
}

// Tests 5 to 13 of the rules, on the lower-case components after home's.
std::optional<RemovalRefusal> refusalInsideHome(const Parts& all, std::span<const std::string> rest,
                                                const std::vector<Parts>& extras) {
  if (rest.front() == ".trash" || beginsWith(rest, linuxTrashFolder) ||
      std::ranges::any_of(rest, isVolumeTrashName)) {
    return refuse("It's your Trash");
  }
  if (rest.front() == ".ssh" || rest.front() == ".gnupg")
    return refuse("It holds your security keys");
  // An empty extra matches everything: a caller's mistake then refuses all, never allows.
  for (const Parts& extra : extras) {
    if (beginsWith(all, extra)) return refuse("Tovrin needs it to run");
  }
  if ((rest.size() >= 2 && rest[0] == "library" && rest[1] == "keychains") ||
      std::ranges::any_of(linuxKeyFolders,
                          [&](std::string_view keys) { return beginsWith(rest, keys); })) {
    return refuse("It holds your passwords and keys");
  }
  if (std::ranges::any_of(linuxSharedAppFolders,
                          [&](std::string_view shared) { return equals(rest, shared); })) {
    return refuse("It holds data for all your apps. Open it and pick one app's folder");
  }
  if (rest.size() < 2 || rest[0] != "library") return std::nullopt;
  if (isOneOf(rest[1], systemLibraryFolders)) return refuse("macOS needs it to run");
  if (rest.size() > 2 && isOneOf(rest[1], perAppLibraryFolders)) {
    if (rest[2].starts_with("com.apple.") || rest[2].starts_with("group.com.apple.")) {
      return refuse("It's part of macOS. Deleting it can break built-in apps");
    }
    return std::nullopt;
  }
  if (rest.size() == 2 && isOneOf(rest[1], sharedLibraryFolders)) {
    return refuse("It holds data for all your apps. Open it and pick one app's folder");
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> components(std::string_view path) {
  Parts parts = exactComponents(path);
  for (std::string& part : parts) part = lowered(part);
  return parts;
}

SplitGuards split(const RemovalGuards& guards) {
  SplitGuards split;
  for (const std::string& kept : guards.kept) split.kept.push_back(components(kept));
  for (const std::string& folder : guards.mainFolders) {
    split.mainFolders.push_back(components(folder));
  }
  return split;
}

std::optional<RemovalRefusal> refusal(std::string_view path, std::string_view home,
                                      const SplitGuards& guards) {
  const Parts exact = exactComponents(path);
  if (isMalformed(path, exact)) return refuse("The path isn't valid");

  // A home that is the root, relative or climbing would make everything look inside it.
  const Parts homeParts = exactComponents(home);
  const bool homeUsable = !homeParts.empty() && !isMalformed(home, homeParts);
  if (!homeUsable || exact.size() < homeParts.size() ||
      !std::equal(homeParts.begin(), homeParts.end(), exact.begin())) {
    return refuse("It's outside your home folder");
  }

  const Parts all = components(path);
  const std::span<const std::string> rest(
      all.begin() + static_cast<std::ptrdiff_t>(homeParts.size()), all.end());
  if (rest.empty()) return refuse("It's your home folder");
  if ((rest.size() == 1 &&
       (isOneOf(rest[0], topLevelFolders) || isOneOf(rest[0], linuxTopLevelFolders))) ||
      std::ranges::find(guards.mainFolders, all) != guards.mainFolders.end()) {
    return refuse("It's one of your main folders");
  }
  return refusalInsideHome(all, rest, guards.kept);
}

std::optional<RemovalRefusal> verdict(std::string_view path, std::string_view home, bool isSymlink,
                                      std::optional<std::string_view> resolvedPath,
                                      const RemovalGuards& guards) {
  if (isSymlink) return refuse("It's a shortcut to somewhere else");
  const SplitGuards split = RemovalRules::split(guards);
  if (auto refused = refusal(path, home, split)) return refused;
  if (resolvedPath && *resolvedPath != path) return refusal(*resolvedPath, home, split);
  return std::nullopt;
}

namespace {

bool endsWith(const Parts& parts, std::string_view suffix) {
  return std::ranges::any_of(parts,
                             [&](const std::string& part) { return part.ends_with(suffix); });
}

// Words that name a build of an app rather than the app, skipped in bundle-style names.
constexpr std::array<std::string_view, 8> genericIdWords = {"app",   "client", "desktop", "mac",
                                                            "macos", "linux",  "helper",  "stable"};

std::string capitalised(std::string word) {
  if (!word.empty() && word.front() >= 'a' && word.front() <= 'z')
    word.front() = static_cast<char>(word.front() - 'a' + 'A');
  return word;
}

// The app named by a catalog entry's sentence, such as "Chrome" in "Chrome's bookmarks, ...".
std::optional<std::string> possessor(std::string_view explanation) {
  const std::size_t mark = explanation.find("'s ");
  if (mark == std::string_view::npos || mark == 0 ||
      explanation.substr(0, mark).find(',') != std::string_view::npos) {
    return std::nullopt;
  }
  return std::string(explanation.substr(0, mark));
}

// The exact (not lower-cased) name of the app's folder: the component `index` after home.
std::string exactComponentAfterHome(std::string_view path, std::string_view home,
                                    std::size_t index) {
  const Parts exact = exactComponents(path);
  const std::size_t at = exactComponents(home).size() + index;
  return at < exact.size() ? exact[at] : std::string();
}

std::string appDataWarning(const std::string& app) {
  return app + " keeps its data here. Deleting it resets " + app +
         ", so you may lose its settings, sign-ins or saved work. Quit " + app + " first.";
}

// The app's name for a path inside an app's own folder, whose name is `folderName` and whose
// shared parent folder has `sharedDepth` components after home.
std::string appNameFor(std::string_view path, std::string_view home, std::size_t sharedDepth,
                       const std::string& folderName, std::optional<std::string_view> appName) {
  if (appName && !appName->empty()) return std::string(*appName);
  if (const auto entry = FolderCatalog::best(path, home);
      entry && !entry->anywhere && components(entry->path).size() > sharedDepth) {
    if (auto owner = possessor(entry->explanation)) return *owner;
  }
  return appDisplayName(folderName);
}

}  // namespace

std::string appDisplayName(std::string_view folderName) {
  std::string name(folderName);
  while (name.starts_with('.')) name.erase(0, 1);
  if (name.find('.') != std::string::npos && name.find(' ') == std::string::npos) {
    // A bundle-style identifier: its last meaningful word is the app.
    std::vector<std::string> words;
    for (std::size_t start = 0; start <= name.size();) {
      std::size_t end = name.find('.', start);
      if (end == std::string::npos) end = name.size();
      if (end > start) words.push_back(name.substr(start, end - start));
      start = end + 1;
    }
    while (words.size() > 1 &&
           std::ranges::find(genericIdWords, lowered(words.back())) != genericIdWords.end()) {
      words.pop_back();
    }
    return words.empty() ? std::string(folderName) : capitalised(words.back());
  }
  if (name.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ ") != std::string::npos) return name;
  // A lower-case name made of words, such as "google-chrome": each word capitalised.
  std::string shown;
  for (std::size_t start = 0; start <= name.size();) {
    std::size_t end = name.find_first_of("-_", start);
    if (end == std::string::npos) end = name.size();
    if (end > start)
      shown += (shown.empty() ? "" : " ") + capitalised(name.substr(start, end - start));
    start = end + 1;
  }
  return shown.empty() ? std::string(folderName) : shown;
}

std::optional<std::string> caution(std::string_view path, std::string_view home,
                                   std::optional<std::string_view> appName) {
  const Parts all = components(path);
  const Parts homeParts = components(home);
  if (endsWith(all, ".photoslibrary")) {
    return "This is your Photos library. Deleting it removes your photos from the Photos app.";
  }
  if (endsWith(all, ".musiclibrary")) {
    return "This is your Music library. Deleting it removes your songs from the Music app.";
  }
  const bool insideHome =
      all.size() > homeParts.size() && std::equal(homeParts.begin(), homeParts.end(), all.begin());
  const std::span<const std::string> rest =
      insideHome ? std::span<const std::string>(all).subspan(homeParts.size())
                 : std::span<const std::string>();
  if (!rest.empty() && rest[0] == ".orbstack") {
    return "OrbStack keeps its machines and containers here. Deleting it removes them.";
  }
  if (std::ranges::find(all, ".git") != all.end()) {
    return "This is the project's change history. Your code stays, but past versions are lost.";
  }
  for (std::string_view shared : linuxPerAppFolders) {
    const Parts sharedParts = components(shared);
    if (rest.size() > sharedParts.size() && beginsWith(rest, sharedParts) &&
        std::ranges::find(linuxDesktopFolders, rest[sharedParts.size()]) ==
            linuxDesktopFolders.end()) {
      const std::string folder = exactComponentAfterHome(path, home, sharedParts.size());
      return appDataWarning(appNameFor(path, home, sharedParts.size(), folder, appName));
    }
  }
  if (rest.empty() || rest[0] != "library") return std::nullopt;
  if (rest.size() >= 2 && rest[1] == "mobile documents") {
    return "This is in iCloud Drive. Deleting it also removes it from iCloud on your other "
           "devices.";
  }
  if (rest.size() > 2 && isOneOf(rest[1], perAppLibraryFolders)) {
    const std::string folder = exactComponentAfterHome(path, home, 2);
    return appDataWarning(appNameFor(path, home, 2, folder, appName));
  }
  return std::nullopt;
}

}  // namespace pellwin::RemovalRules
