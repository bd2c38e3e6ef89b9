#include "core/monitor/app_grouper.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include "core/base/path_text.h"
#include "core/monitor/macos_app_paths.h"
#include "core/monitor/process_catalog.h"

namespace pellwin::AppGrouper {
namespace {

enum class Kind { onItsOwn, systemPart, bundle, desktopApp, tool };

// What a process is, and its key in parts, so that the key can be written into a reused
// buffer instead of a new string for every process.
struct Classified {
  Kind kind = Kind::tool;
  std::string_view keyPrefix{};  // "pid:", "proc:" or "app:"
  std::string_view keyName{};    // after the prefix; for a process on its own, the pid
  std::int32_t pid = 0;
  std::optional<CatalogMatch> part{};  // for systemPart
  bool frameworkPython = false;
};

Classified onItsOwn(const ProcessSample& sample, bool frameworkPython) {
  return {.kind = Kind::onItsOwn,
          .keyPrefix = "pid:",
          .pid = sample.pid,
          .frameworkPython = frameworkPython};
}

Classified systemPart(CatalogMatch part) {
  return {.kind = Kind::systemPart, .keyPrefix = "proc:", .keyName = part.key, .part = part};
}

Classified classify(const ProcessSample& sample) {
  if (MacosAppPaths::isFrameworkPython(sample.path)) return onItsOwn(sample, true);
  if (auto bundle = MacosAppPaths::outermostBundlePath(sample.path)) {
    if (MacosAppPaths::isSystemFolder(sample.path)) {
      if (auto entry = ProcessCatalog::known(sample.name)) {
        return systemPart({.key = sample.name, .entry = *entry});
      }
    }
    return {.kind = Kind::bundle, .keyPrefix = "app:", .keyName = *bundle};
  }
  // An interpreter's script is shown with its own command line even inside a desktop app, and
  // a system part keeps its catalog name even when a desktop entry claims it.
  if (ProcessCatalog::isInterpreter(sample.name)) return onItsOwn(sample, false);
  if (auto part = ProcessCatalog::systemPart(sample)) return systemPart(*part);
  if (sample.app && !sample.app->id.empty()) {
    return {.kind = Kind::desktopApp, .keyPrefix = "app:", .keyName = sample.app->id};
  }
  return {.kind = Kind::tool, .keyPrefix = "proc:", .keyName = sample.name};
}

void writeKey(const Classified& c, std::string& key) {
  key.assign(c.keyPrefix);
  if (c.kind == Kind::onItsOwn) {
    key += std::to_string(c.pid);
  } else {
    key += c.keyName;
  }
}

std::string bundleName(std::string_view bundlePath) {
  std::string_view name = lastPathComponent(bundlePath);
  if (name.ends_with(".app")) name.remove_suffix(4);
  return std::string(name);
}

AppUsage makeEntry(const Classified& c, std::string key, const ProcessSample& sample,
                   const BundleIdentifierLookup& bundleIdentifier) {
  AppUsage app{.id = std::move(key), .name = sample.name};
  switch (c.kind) {
    case Kind::onItsOwn:
      app.detail = commandLine(sample);
      app.workingDirectory = sample.workingDirectory;
      app.category =
          ProcessCatalog::category(app.name, sample.name, sample.path, c.frameworkPython, false);
      break;
    case Kind::systemPart:
      app.name = std::string(c.part->entry.name);
      app.explanation = std::string(c.part->entry.explanation);
      app.category = ProcessCatalog::category(app.name, sample.name, sample.path, false, true);
      break;
    case Kind::bundle:
      app.name = bundleName(c.keyName);
      app.bundlePath = std::string(c.keyName);
      if (bundleIdentifier) app.bundleIdentifier = bundleIdentifier(c.keyName);
      app.category = ProcessCatalog::category(app.name, sample.name, sample.path, false, false);
      break;
    case Kind::desktopApp: {
      const AppIdentity& identity = *sample.app;
      app.name = identity.name.empty() ? identity.id : identity.name;
      if (!identity.entryPath.empty()) app.bundlePath = identity.entryPath;
      app.bundleIdentifier = identity.id;
      app.category = ProcessCatalog::category(app.name, sample.name, sample.path, false, false,
                                              identity.categories);
      break;
    }
    case Kind::tool:
      app.category = ProcessCatalog::category(app.name, sample.name, sample.path, false, false);
      break;
  }
  return app;
}

void fold(AppUsage& app, const ProcessUsage& usage) {
  const ProcessSample& sample = *usage.sample;
  app.processCount += 1;
  app.pids.push_back(sample.pid);
  app.parentPids.push_back(sample.parentPid);
  app.footprintBytes += sample.footprintBytes;
  app.cpuCores += usage.cpuCores;
  app.diskBytesPerSecond += usage.diskBytesPerSecond;
  app.energyImpact += usage.energyImpact;
  if (sample.startTime && (!app.runningSince || *sample.startTime < *app.runningSince)) {
    app.runningSince = sample.startTime;
  }
}

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Characters are counted as UTF-8 code points, so a cut never splits one.
std::string cutToCharacters(std::string text, std::size_t limit, std::size_t keep) {
  std::size_t characters = 0;
  std::size_t keepEnd = text.size();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) continue;
    if (characters == keep) keepEnd = i;
    ++characters;
  }
  if (characters < limit) return text;
  text.resize(keepEnd);
  return text + "…";
}

}  // namespace

std::string key(const ProcessSample& sample) {
  std::string key;
  writeKey(classify(sample), key);
  return key;
}

std::string commandLine(const ProcessSample& sample) {
  std::string joined(sample.path.empty() ? std::string_view(sample.name)
                                         : lastPathComponent(sample.path));
  for (std::size_t i = 1; i < sample.arguments.size(); ++i) {
    joined += ' ';
    joined += sample.arguments[i];
  }
  std::string collapsed{};
  collapsed.reserve(joined.size());
  for (char c : joined) {
    if (!isBlank(c)) {
      collapsed += c;
    } else if (!collapsed.empty() && collapsed.back() != ' ') {
      collapsed += ' ';
    }
  }
  if (!collapsed.empty() && collapsed.back() == ' ') collapsed.pop_back();
  return cutToCharacters(std::move(collapsed), 161, 159);
}

std::vector<AppUsage> group(std::span<const ProcessUsage> usages,
                            const BundleIdentifierLookup& bundleIdentifier) {
  std::vector<AppUsage> apps;
  // Never reallocated below, so the index's keys can point into the apps' own ids.
  apps.reserve(usages.size());
  std::unordered_map<std::string_view, std::size_t> index;
  index.reserve(usages.size());
  std::string key;
  for (const ProcessUsage& usage : usages) {
    const Classified c = classify(*usage.sample);
    writeKey(c, key);
    auto at = index.find(key);
    if (at == index.end()) {
      apps.push_back(makeEntry(c, key, *usage.sample, bundleIdentifier));
      at = index.emplace(apps.back().id, apps.size() - 1).first;
    }
    fold(apps[at->second], usage);
  }
  // Busiest first is what a user looks for; memory orders the many idle apps. Sorting
  // positions and moving each app once is cheaper than moving apps around while sorting.
  std::vector<std::size_t> order(apps.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
    if (apps[a].cpuCores != apps[b].cpuCores) return apps[a].cpuCores > apps[b].cpuCores;
    return apps[a].footprintBytes > apps[b].footprintBytes;
  });
  std::vector<AppUsage> sorted;
  sorted.reserve(apps.size());
  for (std::size_t i : order) sorted.push_back(std::move(apps[i]));
  return sorted;
}

}  // namespace pellwin::AppGrouper
