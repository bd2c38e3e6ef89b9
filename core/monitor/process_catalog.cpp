#include "core/monitor/process_catalog.h"

#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>
#include <vector>

#include "core/base/path_text.h"
#include "core/monitor/macos_app_paths.h"
#include "core/monitor/process_catalog_rows.h"

namespace pellwin::ProcessCatalog {
namespace {

// The Linux rows come first, so that where both tables name a process (bluetoothd) the Linux
// row is the one found.
template <typename Visit>
void forEachRow(Visit visit) {
  for (const std::span<const Row> table : {linuxRows(), macosRows()}) {
    for (const Row& row : table) visit(row);
  }
}

const std::unordered_map<std::string_view, const Row*>& exactRows() {
  static const auto rows = [] {
    std::unordered_map<std::string_view, const Row*> index;
    forEachRow([&](const Row& row) {
      if (row.match == Match::exact) index.emplace(row.pattern, &row);
    });
    return index;
  }();
  return rows;
}

// A family's key is its pattern without the separator that ends it: "kworker/" → "kworker".
std::string_view familyKey(std::string_view pattern) {
  while (!pattern.empty() &&
         (pattern.back() == '/' || pattern.back() == '-' || pattern.back() == '_')) {
    pattern.remove_suffix(1);
  }
  return pattern;
}

// Rows that cover a family of names, by the first character of their pattern, so that a
// name is compared only with the few patterns that could start it.
const std::array<std::vector<const Row*>, 256>& familyRows() {
  static const auto rows = [] {
    std::array<std::vector<const Row*>, 256> byFirst;
    forEachRow([&](const Row& row) {
      if (row.match != Match::exact) {
        byFirst[static_cast<unsigned char>(row.pattern.front())].push_back(&row);
      }
    });
    return byFirst;
  }();
  return rows;
}

// Rows of one entry are one part of the system to the user (kcompactd and khugepaged are both
// the memory defragmenter), so they share the key of the entry's first row.
std::string_view sharedKey(const KnownProcess& entry) {
  static const auto keys = [] {
    std::map<std::pair<std::string_view, std::string_view>, std::string_view> byEntry;
    forEachRow([&](const Row& row) {
      byEntry.emplace(std::pair(row.entry.name, row.entry.explanation),
                      row.match == Match::exact ? row.pattern : familyKey(row.pattern));
    });
    return byEntry;
  }();
  return keys.at({entry.name, entry.explanation});
}

std::optional<CatalogMatch> matchName(std::string_view name, bool kernelThread) {
  if (name.empty()) return std::nullopt;
  const auto& exact = exactRows();
  if (auto it = exact.find(name); it != exact.end()) {
    const KnownProcess& entry = it->second->entry;
    return CatalogMatch{.key = sharedKey(entry), .entry = entry};
  }
  for (const Row* row : familyRows()[static_cast<unsigned char>(name.front())]) {
    if (row->match == Match::kernelPrefix && !kernelThread) continue;
    if (name.starts_with(row->pattern)) {
      return CatalogMatch{.key = sharedKey(row->entry), .entry = row->entry};
    }
  }
  return std::nullopt;
}

bool startsWithAny(std::string_view path, std::span<const std::string_view> prefixes) {
  return std::ranges::any_of(prefixes, [&](std::string_view p) { return path.starts_with(p); });
}

// Compilers' internal programs, Java runtimes and LLVM's versioned tool folders.
constexpr std::array<std::string_view, 4> kDeveloperPrefixes = {
    "/usr/lib/gcc/", "/usr/libexec/gcc/", "/usr/lib/jvm/", "/usr/lib/llvm-"};
// Daemons and helpers that only the system starts; /usr/bin is left out on purpose because it
// holds the user's own tools and apps too.
constexpr std::array<std::string_view, 5> kSystemPrefixes = {
    "/usr/lib/systemd/", "/lib/systemd/", "/usr/libexec/", "/usr/sbin/", "/sbin/"};

struct NamedCategory {
  std::string_view name;
  AppCategory category;
};

constexpr auto kNamedCategories = std::to_array<NamedCategory>({
    {"Google Chrome", AppCategory::browsers},
    {"Safari", AppCategory::browsers},
    {"Firefox", AppCategory::browsers},
    {"Arc", AppCategory::browsers},
    {"Brave Browser", AppCategory::browsers},
    {"Microsoft Edge", AppCategory::browsers},
    {"Opera", AppCategory::browsers},
    {"Vivaldi", AppCategory::browsers},
    {"Orion", AppCategory::browsers},
    {"Zen", AppCategory::browsers},
    {"Claude", AppCategory::ai},
    {"ChatGPT", AppCategory::ai},
    {"Ollama", AppCategory::ai},
    {"LM Studio", AppCategory::ai},
    {"Perplexity", AppCategory::ai},
    {"Visual Studio Code", AppCategory::developer},
    {"Code", AppCategory::developer},
    {"Cursor", AppCategory::developer},
    {"Xcode", AppCategory::developer},
    {"Terminal", AppCategory::developer},
    {"iTerm", AppCategory::developer},
    {"iTerm2", AppCategory::developer},
    {"Warp", AppCategory::developer},
    {"Ghostty", AppCategory::developer},
    {"OrbStack", AppCategory::developer},
    {"Docker", AppCategory::developer},
    {"Simulator", AppCategory::developer},
    {"Android Studio", AppCategory::developer},
    {"IntelliJ IDEA", AppCategory::developer},
    {"Zed", AppCategory::developer},
    {"Postman", AppCategory::developer},
    {"TablePlus", AppCategory::developer},
    {"Slack", AppCategory::communication},
    {"zoom.us", AppCategory::communication},
    {"Microsoft Teams", AppCategory::communication},
    {"Discord", AppCategory::communication},
    {"Messages", AppCategory::communication},
    {"Mail", AppCategory::communication},
    {"WhatsApp", AppCategory::communication},
    {"Telegram", AppCategory::communication},
    {"FaceTime", AppCategory::communication},
    {"Microsoft Outlook", AppCategory::communication},
    {"Spotify", AppCategory::media},
    {"Music", AppCategory::media},
    {"TV", AppCategory::media},
    {"VLC", AppCategory::media},
    {"IINA", AppCategory::media},
    {"Photos", AppCategory::media},
    {"QuickTime Player", AppCategory::media},
    {"Final Cut Pro", AppCategory::media},
    {"OBS", AppCategory::media},
});

// Freedesktop menu categories, by the category they give; the first group that any of an
// entry's categories belongs to wins.
struct DesktopCategories {
  AppCategory category;
  std::array<std::string_view, 4> names;
};

constexpr auto kDesktopCategories = std::to_array<DesktopCategories>({
    {AppCategory::browsers, {"WebBrowser"}},
    {AppCategory::developer, {"Development", "IDE", "TerminalEmulator"}},
    {AppCategory::communication, {"Chat", "InstantMessaging", "Email", "VideoConference"}},
    {AppCategory::media, {"AudioVideo", "Audio", "Video", "Player"}},
    {AppCategory::system, {"System", "Settings"}},
});

constexpr auto kInterpreters =
    std::to_array<std::string_view>({"node", "python", "python3", "ruby", "java", "deno", "bun",
                                     "php", "perl", "go", "cargo", "swift"});

}  // namespace

std::optional<KnownProcess> known(std::string_view processName) {
  const auto& exact = exactRows();
  if (auto it = exact.find(processName); it != exact.end()) return it->second->entry;
  return std::nullopt;
}

std::optional<CatalogMatch> match(const ProcessSample& sample) {
  if (auto found = matchName(sample.name, sample.kernelThread)) return found;
  if (!sample.kernelThread && !sample.arguments.empty()) {
    const std::string_view first = lastPathComponent(sample.arguments.front());
    if (first != sample.name) {
      if (auto found = matchName(first, false)) return found;
    }
  }
  if (sample.kernelThread) return CatalogMatch{.key = "kthreadd", .entry = linuxKernel()};
  return std::nullopt;
}

std::optional<CatalogMatch> systemPart(const ProcessSample& sample) {
  if (!sample.kernelThread && !sample.path.empty() && !isSystemLocation(sample.path)) {
    return std::nullopt;
  }
  return match(sample);
}

bool isSystemLocation(std::string_view path) {
  static constexpr std::array<std::string_view, 7> prefixes = {
      "/usr/", "/bin/", "/sbin/", "/lib/", "/lib64/", "/lib32/", "/snap/snapd/"};
  return (startsWithAny(path, prefixes) && !path.starts_with("/usr/local/")) ||
         MacosAppPaths::isSystemFolder(path);
}

bool isInterpreter(std::string_view processName) {
  if (processName.starts_with("python3.")) return true;
  // Every name in the set is at most 7 characters: most process names are ruled out at once.
  return processName.size() <= 7 &&
         std::ranges::find(kInterpreters, processName) != kInterpreters.end();
}

std::optional<AppCategory> categoryOfName(std::string_view name) {
  static const auto byName = [] {
    std::unordered_map<std::string_view, AppCategory> index;
    for (const NamedCategory& entry : kNamedCategories) index.emplace(entry.name, entry.category);
    return index;
  }();
  const auto found = byName.find(name);
  if (found == byName.end()) return std::nullopt;
  return found->second;
}

std::optional<AppCategory> categoryOfDesktopEntry(std::span<const std::string> desktopCategories) {
  for (const DesktopCategories& group : kDesktopCategories) {
    for (const std::string& category : desktopCategories) {
      if (!category.empty() && std::ranges::find(group.names, category) != group.names.end()) {
        return group.category;
      }
    }
  }
  return std::nullopt;
}

AppCategory category(std::string_view name, std::string_view processName, std::string_view path,
                     bool python, bool systemPart, std::span<const std::string> desktopCategories) {
  if (auto named = categoryOfName(name)) return *named;
  if (auto fromEntry = categoryOfDesktopEntry(desktopCategories)) return *fromEntry;
  if (isInterpreter(processName) || python) return AppCategory::developer;
  // macOS draws every web page in this process of its own: the work is a browser's.
  if (processName == "com.apple.WebKit.WebContent") return AppCategory::browsers;
  if (systemPart) return AppCategory::system;
  if (startsWithAny(path, kDeveloperPrefixes)) return AppCategory::developer;
  if (startsWithAny(path, kSystemPrefixes)) return AppCategory::system;
  return AppCategory::other;
}

}  // namespace pellwin::ProcessCatalog
