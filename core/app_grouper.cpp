#include "core/app_grouper.h"

#include <algorithm>
#include <unordered_map>

#include "core/process_catalog.h"

namespace pellwin::AppGrouper {
namespace {

enum class Kind { onItsOwn, systemPart, bundle, desktopApp, tool };

struct Classified {
  Kind kind = Kind::tool;
  std::string key{};
  std::optional<CatalogMatch> part{};  // for systemPart
  std::string_view bundlePath{};       // for bundle
  bool frameworkPython = false;
};

Classified onItsOwn(const ProcessSample& sample, bool frameworkPython) {
  return {.kind = Kind::onItsOwn,
          .key = "pid:" + std::to_string(sample.pid),
          .frameworkPython = frameworkPython};
}

Classified systemPart(CatalogMatch part) {
  return {.kind = Kind::systemPart, .key = "proc:" + std::string(part.key), .part = part};
}

Classified classify(const ProcessSample& sample) {
  if (ProcessCatalog::isFrameworkPython(sample.path)) return onItsOwn(sample, true);
  if (auto bundle = outermostBundlePath(sample.path)) {
    if (sample.path.starts_with("/System/")) {
      if (auto entry = ProcessCatalog::known(sample.name)) {
        return systemPart({.key = sample.name, .entry = *entry});
      }
    }
    return {.kind = Kind::bundle, .key = "app:" + std::string(*bundle), .bundlePath = *bundle};
  }
  // An interpreter's script is shown with its own command line even inside a desktop app, and
  // a system part keeps its catalog name even when a desktop entry claims it.
  if (ProcessCatalog::isInterpreter(sample.name)) return onItsOwn(sample, false);
  if (auto part = ProcessCatalog::systemPart(sample)) return systemPart(*part);
  if (sample.app && !sample.app->id.empty()) {
    return {.kind = Kind::desktopApp, .key = "app:" + sample.app->id};
  }
  return {.kind = Kind::tool, .key = "proc:" + sample.name};
}

std::string_view lastComponent(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string bundleName(std::string_view bundlePath) {
  std::string_view name = lastComponent(bundlePath);
  if (name.ends_with(".app")) name.remove_suffix(4);
  return std::string(name);
}

AppUsage makeEntry(const Classified& c, const ProcessSample& sample,
                   const BundleIdentifierLookup& bundleIdentifier) {
  AppUsage app{.id = c.key, .name = sample.name};
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
      app.name = bundleName(c.bundlePath);
      app.bundlePath = std::string(c.bundlePath);
      if (bundleIdentifier) app.bundleIdentifier = bundleIdentifier(c.bundlePath);
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

std::string key(const ProcessSample& sample) { return classify(sample).key; }

std::optional<std::string_view> outermostBundlePath(std::string_view path) {
  const auto at = path.find(".app/");
  if (at == std::string_view::npos) return std::nullopt;
  return path.substr(0, at + 4);
}

std::string commandLine(const ProcessSample& sample) {
  std::string joined(sample.path.empty() ? std::string_view(sample.name)
                                         : lastComponent(sample.path));
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
  std::vector<AppUsage> apps{};
  std::unordered_map<std::string, std::size_t> index{};
  index.reserve(usages.size());
  for (const ProcessUsage& usage : usages) {
    Classified c = classify(*usage.sample);
    auto [at, inserted] = index.try_emplace(c.key, apps.size());
    if (inserted) apps.push_back(makeEntry(c, *usage.sample, bundleIdentifier));
    fold(apps[at->second], usage);
  }
  // Busiest first is what a user looks for; memory orders the many idle apps.
  std::ranges::stable_sort(apps, [](const AppUsage& a, const AppUsage& b) {
    if (a.cpuCores != b.cpuCores) return a.cpuCores > b.cpuCores;
    return a.footprintBytes > b.footprintBytes;
  });
  return apps;
}

}  // namespace pellwin::AppGrouper
