#include "core/clean/linux_cleaner_catalog.h"

#include <string_view>
#include <utility>

#include "core/base/ascii_case.h"

namespace pellwin::LinuxCleanerCatalog {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return path;
}

bool hasDotDot(std::string_view path) {
  return path == ".." || path.starts_with("../") || path.ends_with("/..") ||
         path.find("/../") != std::string_view::npos;
}

// A base folder relative to home ("" never: home itself is refused), or none when it cannot be
// cleaned from here. `fallback` is the folder the tools use when the variable is not usable.
std::optional<std::string> relativeBase(std::string_view home,
                                        const std::optional<std::string>& variable,
                                        std::string_view fallback) {
  if (!variable || variable->empty() || variable->front() != '/') return std::string(fallback);
  const std::string_view base = withoutTrailingSlashes(*variable);
  const std::string_view root = withoutTrailingSlashes(home);
  if (hasDotDot(base) || root == "/" || !base.starts_with(root) || base.size() <= root.size() + 1 ||
      base[root.size()] != '/') {
    return std::nullopt;
  }
  return std::string(base.substr(root.size() + 1));
}

struct Bases {
  std::optional<std::string> cache, config, data, state;
};

Bases bases(const CleanerPlaces& places) {
  return Bases{.cache = relativeBase(places.home, places.xdgCacheHome, ".cache"),
               .config = relativeBase(places.home, places.xdgConfigHome, ".config"),
               .data = relativeBase(places.home, places.xdgDataHome, ".local/share"),
               .state = relativeBase(places.home, places.xdgStateHome, ".local/state")};
}

// Adds `source` with its path under `base` (home when base is ""), unless the base is unusable.
void add(std::vector<CleanSource>& sources, const std::optional<std::string>& base,
         CleanSource source) {
  if (!base) return;
  if (!base->empty()) source.path = source.path.empty() ? *base : *base + "/" + source.path;
  sources.push_back(std::move(source));
}

// The base of the tools that keep their folders directly in home.
const std::optional<std::string> inHome = std::string();

CleanSource tool(std::string path, std::string title, std::vector<std::string> tools) {
  return CleanSource{.path = std::move(path), .title = std::move(title), .tools = std::move(tools)};
}

CleanGroup developerCaches(const Bases& b) {
  CleanGroup group{.id = "developer-caches",
                   .title = "Developer caches",
                   .explanation =
                       "Downloads that npm, pip, Homebrew and other tools keep. They "
                       "download again when needed",
                   .action = CleanAction::delete_};
  auto& s = group.sources;
  // npm, Cargo and Gradle keep their own folders in home whatever the XDG variables say.
  add(s, inHome, tool(".npm/_cacache", "npm cache", {"npm", "npx"}));
  add(s, b.data, tool("pnpm/store", "pnpm store", {"pnpm"}));
  add(s, b.cache, tool("yarn", "Yarn cache", {"yarn"}));
  add(s, b.cache, tool("pip", "pip cache", {"pip", "pip3"}));
  add(s, b.cache, tool("Homebrew", "Homebrew cache", {"brew"}));
  add(s, inHome, tool(".cargo/registry/cache", "Cargo cache", {"cargo"}));
  add(s, inHome, tool(".gradle/caches", "Gradle cache", {"gradle"}));
  add(s, b.cache, tool("go-build", "Go build cache", {"go"}));
  add(s, b.cache, tool("uv", "uv cache", {"uv", "uvx"}));
  // Only Poetry's download cache: its "virtualenvs" beside it are project environments.
  add(s, b.cache, tool("pypoetry/cache", "Poetry cache", {"poetry"}));
  return group;
}

// The first component of `inner` below `outer`, when `inner` lies inside `outer` or is it.
std::optional<std::string> childHolding(const std::optional<std::string>& outer,
                                        const std::optional<std::string>& inner) {
  if (!outer || !inner || !inner->starts_with(*outer + "/")) return std::nullopt;
  const std::string rest = inner->substr(outer->size() + 1);
  return asciiLower(rest.substr(0, rest.find('/')));
}

CleanGroup appCaches(const Bases& b) {
  CleanGroup group{.id = "app-caches",
                   .title = "App caches",
                   .explanation =
                       "Temporary files your apps rebuild when they need them. Apps "
                       "that are open are skipped",
                   .action = CleanAction::delete_};
  CleanSource caches{
      .path = "",
      .eachChild = true,
      .excludeChildren =
          {// Tool caches with rows and running rules of their own.
           "yarn", "pip", "homebrew", "go-build", "uv", "pypoetry", "jetbrains", "google", "bazel",
           "ccache", "sccache", "debuginfod_client",
           // Mount points of the document portal and GVfs.
           "doc", "gvfs", "gvfsd",
           // Folders that look like caches but hold things that don't come back: input-method
           // dictionaries, offline mail, the processed wallpaper, Bluetooth transfers, keyring
           // sockets, and Hugging Face's login token beside its downloads.
           "ibus", "evolution", "wallpaper", "obexd", "keyring-*", "huggingface"},
      .childAliases = {
          {.child = "mozilla", .names = {"firefox", "firefox-esr", "firefox-bin", "thunderbird"}},
          {.child = "google-chrome", .names = {"chrome"}},
          {.child = "google-chrome-beta", .names = {"chrome"}},
          {.child = "google-chrome-unstable", .names = {"chrome"}},
          {.child = "chromium", .names = {"chromium", "chrome"}},
          {.child = "vscode-cpptools", .names = {"code"}},
          {.child = "tracker3", .names = {"tracker-miner-fs-3", "localsearch-3"}},
      }};
  for (const auto* other : {&b.config, &b.data, &b.state}) {
    if (auto child = childHolding(b.cache, *other)) caches.excludeChildren.push_back(*child);
  }
  add(group.sources, b.cache, std::move(caches));
  return group;
}

CleanSource logs(std::string path) {
  return CleanSource{.path = std::move(path), .eachChild = true, .olderThanDays = 7};
}

CleanGroup oldLogs(const Bases& b) {
  CleanGroup group{.id = "old-logs",
                   .title = "Old logs",
                   .explanation = "Diagnostic logs that apps and macOS wrote more than a week ago",
                   .action = CleanAction::delete_};
  auto& s = group.sources;
  add(s, b.config, logs("Code/logs"));
  add(s, b.cache, logs("JetBrains/*/log"));
  add(s, b.cache, logs("Google/AndroidStudio*/log"));
  add(s, inHome, logs(".npm/_logs"));
  add(s, b.cache, logs("Homebrew/Logs"));
  add(s, b.data, logs("xorg"));
  // SDDM writes its session logs here whatever XDG_DATA_HOME says.
  add(s, inHome, logs(".local/share/sddm"));
  add(s, inHome,
      CleanSource{
          .path = ".xsession-errors.old", .title = ".xsession-errors.old", .olderThanDays = 7});
  return group;
}

const std::vector<std::string> jetBrainsIDEs = {"idea",     "pycharm",   "clion",     "goland",
                                                "webstorm", "phpstorm",  "rider",     "rubymine",
                                                "datagrip", "rustrover", "dataspell", "studio"};

CleanGroup ideCaches(const Bases& b) {
  CleanGroup group{.id = "ide-caches",
                   .title = "IDE and build caches",
                   .explanation =
                       "Indexes and build output that IDEs and build tools make again, "
                       "which takes a while. Skipped while they run",
                   .action = CleanAction::trash};
  auto& s = group.sources;
  // Only the rebuildable folders of each IDE version; LocalHistory beside them is the user's
  // own edit history.
  for (const char* product : {"JetBrains/*", "Google/AndroidStudio*"}) {
    add(s, b.cache, tool(std::string(product) + "/caches", "* caches", jetBrainsIDEs));
    add(s, b.cache, tool(std::string(product) + "/index", "* indexes", jetBrainsIDEs));
  }
  add(s, b.cache, tool("bazel", "Bazel build output", {"bazel", "bazelisk"}));
  add(s, b.cache, tool("ccache", "ccache compiler cache", {"ccache"}));
  add(s, b.cache, tool("sccache", "sccache compiler cache", {"sccache"}));
  return group;
}

CleanGroup debugSymbols(const Bases& b) {
  CleanGroup group{.id = "debug-symbols",
                   .title = "Downloaded debug symbols",
                   .explanation =
                       "Debug files that gdb, Valgrind and perf downloaded while you "
                       "debugged. They download again when needed",
                   .action = CleanAction::trash};
  const std::vector<std::string> debuggers = {"gdb", "valgrind", "perf", "debuginfod-find"};
  add(group.sources, b.cache, tool("debuginfod_client", "debuginfod cache", debuggers));
  // Older clients kept using this folder once it existed.
  add(group.sources, inHome, tool(".debuginfod_client_cache", "debuginfod cache", debuggers));
  return group;
}

}  // namespace

std::vector<CleanGroup> groups(const CleanerPlaces& places) {
  const Bases b = bases(places);
  return {developerCaches(b), appCaches(b), oldLogs(b), ideCaches(b), debugSymbols(b)};
}

std::vector<MovedFolder> movedBases(const CleanerPlaces& places) {
  const Bases b = bases(places);
  const std::string home(withoutTrailingSlashes(places.home));
  std::vector<MovedFolder> moved;
  for (const auto& [base, standard] : {std::pair{&b.cache, ".cache"},
                                       {&b.config, ".config"},
                                       {&b.data, ".local/share"},
                                       {&b.state, ".local/state"}}) {
    if (*base && **base != standard) {
      moved.push_back({.actual = home + "/" + **base, .standard = home + "/" + standard});
    }
  }
  return moved;
}

std::string standardPath(const std::string& path, const std::vector<MovedFolder>& moved) {
  for (const MovedFolder& base : moved) {
    if (path.size() > base.actual.size() + 1 && path.starts_with(base.actual) &&
        path[base.actual.size()] == '/') {
      return base.standard + path.substr(base.actual.size());
    }
  }
  return path;
}

}  // namespace pellwin::LinuxCleanerCatalog
