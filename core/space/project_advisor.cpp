#include "core/space/project_advisor.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace pellwin::ProjectAdvisor {
namespace {

using enum Kind;

// Most specific first. Game engines and app frameworks hold other kinds' files (a Flutter app
// has Gradle and Xcode folders, a Unity project a .sln), so they come before the languages;
// CMake files turn up inside many other projects, so C and C++ come last.
constexpr std::array kPrecedence = {unity,  unreal,  godot,     flutter, capacitor,    reactNative,
                                    nextJS, android, gradle,    xcode,   swiftPackage, rust,
                                    go,     dotNet,  java,      elixir,  haskell,      zig,
                                    ruby,   php,     terraform, python,  javaScript,   cOrCpp};

bool has(std::span<const std::string> markers, std::string_view name) {
  return std::find(markers.begin(), markers.end(), name) != markers.end();
}
bool hasAny(std::span<const std::string> markers, std::initializer_list<std::string_view> names) {
  return std::any_of(names.begin(), names.end(), [&](auto name) { return has(markers, name); });
}
bool hasSuffix(std::span<const std::string> markers,
               std::initializer_list<std::string_view> suffixes) {
  return std::any_of(markers.begin(), markers.end(), [&](const std::string& marker) {
    return std::any_of(suffixes.begin(), suffixes.end(),
                       [&](auto suffix) { return marker.ends_with(suffix); });
  });
}

bool hasGradle(std::span<const std::string> markers) {
  return hasAny(markers,
                {"build.gradle", "build.gradle.kts", "settings.gradle", "settings.gradle.kts"});
}
bool hasPackageJSON(std::span<const std::string> markers) { return has(markers, "package.json"); }

bool matches(Kind kind, std::span<const std::string> m, std::string_view folderName) {
  switch (kind) {
    case unity: return has(m, "Assets") && has(m, "ProjectSettings");
    case unreal: return hasSuffix(m, {".uproject"});
    case godot: return has(m, "project.godot");
    case flutter: return has(m, "pubspec.yaml");
    case capacitor: return hasAny(m, {"capacitor.config.json", "capacitor.config.ts"});
    case reactNative: return hasPackageJSON(m) && hasAny(m, {"android", "ios"});
    case nextJS: return hasAny(m, {"next.config.js", "next.config.mjs", "next.config.ts"});
    case android: return hasGradle(m) && folderName == "android";
    case gradle: return hasGradle(m);
    case xcode: return hasSuffix(m, {".xcodeproj", ".xcworkspace"}) || has(m, "Podfile");
    case swiftPackage: return has(m, "Package.swift");
    case rust: return has(m, "Cargo.toml");
    case go: return has(m, "go.mod");
    case dotNet: return hasSuffix(m, {".csproj", ".fsproj", ".sln"});
    case java: return has(m, "pom.xml");
    case elixir: return has(m, "mix.exs");
    case haskell: return hasAny(m, {"stack.yaml", "cabal.project"});
    case zig: return has(m, "build.zig");
    case ruby: return has(m, "Gemfile");
    case php: return has(m, "composer.json");
    case terraform: return has(m, ".terraform.lock.hcl");
    case python:
      return hasAny(m, {"pyproject.toml", "requirements.txt", "setup.py", "setup.cfg", "Pipfile",
                        "poetry.lock", "uv.lock"});
    case javaScript:
      return hasAny(m, {"package.json", "package-lock.json", "yarn.lock", "pnpm-lock.yaml",
                        "bun.lockb", "bun.lock"});
    case cOrCpp: return has(m, "CMakeLists.txt");
  }
  return false;
}

using KindSet = std::uint32_t;
constexpr KindSet bit(Kind kind) { return KindSet{1} << static_cast<unsigned>(kind); }
constexpr KindSet setOf(std::initializer_list<Kind> kinds) {
  KindSet set = 0;
  for (Kind kind : kinds) set |= bit(kind);
  return set;
}
// A name that means the same thing in any project.
constexpr KindSet kAnyKind = ~KindSet{0};
constexpr KindSet kJavaScriptFamily = setOf({javaScript, nextJS, reactNative, capacitor});
constexpr KindSet kGradleFamily = setOf({gradle, android});

enum class Match { exact, prefix };

struct RebuildRule {
  std::string_view name;
  KindSet kinds;
  std::string_view reason;  // empty for node_modules, whose sentence names the installer
  Match match = Match::exact;
  bool needsPythonEnvironment = false;
};

constexpr std::string_view kBuildToolCache = "A build tool's cache. It fills again as you build.";
constexpr std::string_view kToolCache =
    "A tool's cache. It fills again the next time the tool runs.";
constexpr std::string_view kGradleBuild = "Build output. The next Gradle build makes it again.";
constexpr std::string_view kNativeBuild =
    "Native code build files. The next build makes them again.";
constexpr std::string_view kPythonEnvironment =
    "A Python environment. Reinstall the project's packages to get it back.";
constexpr std::string_view kNextBuild = "Build output. The next build makes it again.";
constexpr std::string_view kUnreal = "Unreal makes this again when you build or open the project.";
constexpr std::string_view kUnity =
    "Unity's import cache. Unity makes it again when you open the project.";

// Which folder names are rebuildable in which kinds of project. The first rule whose name
// matches and whose kinds include the project's first kind (in precedence order) wins, so a
// Flutter app's "build" gets Flutter's sentence even though it also has Gradle files.
constexpr auto kRules = std::to_array<RebuildRule>({
    {"node_modules", kAnyKind, ""},
    {".next", kAnyKind, "Next.js build files. The next build makes them again."},
    {".output", kJavaScriptFamily, "Nuxt build files. The next build makes them again."},
    {".svelte-kit", kAnyKind, "SvelteKit build files. The next build makes them again."},
    {".turbo", kAnyKind, kBuildToolCache},
    {".parcel-cache", kAnyKind, kBuildToolCache},
    {".vite", kJavaScriptFamily, kBuildToolCache},
    {".angular", kAnyKind, kBuildToolCache},
    {".cache", kJavaScriptFamily, kBuildToolCache},
    {".expo", kAnyKind, "Expo's local files. Expo makes them again."},
    {"coverage", kJavaScriptFamily, "Test coverage reports. Running the tests makes them again."},
    {".gradle", kAnyKind, "Gradle's working files for this project. Gradle makes them again."},
    {".cxx", kAnyKind, kNativeBuild},
    {".externalNativeBuild", kAnyKind, kNativeBuild},
    {".kotlin", kAnyKind, "Kotlin's working files. The next build makes them again."},
    {"build", setOf({flutter}), "Flutter build output. The next build makes it again."},
    {"build", kGradleFamily, kGradleBuild},
    {"build", setOf({python}), "Build output. Building the package makes it again."},
    {"dist", setOf({python}), "Build output. Building the package makes it again."},
    {"build", kJavaScriptFamily, "Build output. Your build command makes it again."},
    {"dist", kJavaScriptFamily, "Build output. Your build command makes it again."},
    {"storybook-static", kAnyKind, "Build output. Your build command makes it again."},
    {"Pods", setOf({xcode, reactNative, flutter, capacitor}),
     "Libraries from CocoaPods. Run pod install to get them back."},
    {"DerivedData", setOf({xcode, swiftPackage, reactNative, flutter, capacitor}),
     "Xcode build output. The next build makes it again."},
    {".build", setOf({swiftPackage}), "Swift build output. The next build makes it again."},
    {".dart_tool", kAnyKind, "Dart's working files. Run flutter pub get to get them back."},
    {"target", setOf({rust}), "Rust build output. cargo build makes it again."},
    {"target", setOf({java}), "Java build output. mvn package makes it again."},
    {".venv", kAnyKind, kPythonEnvironment, Match::exact, true},
    {"venv", kAnyKind, kPythonEnvironment, Match::exact, true},
    {".tox", kAnyKind, "Test environments. tox or nox makes them again."},
    {".nox", kAnyKind, "Test environments. tox or nox makes them again."},
    {".pytest_cache", kAnyKind, kToolCache},
    {".mypy_cache", kAnyKind, kToolCache},
    {".ruff_cache", kAnyKind, kToolCache},
    {"bin", setOf({dotNet}), ".NET build output. dotnet build makes it again."},
    {"obj", setOf({dotNet}), ".NET build output. dotnet build makes it again."},
    {"deps", setOf({elixir}), "Dependencies. Run mix deps.get to get them back."},
    {"_build", setOf({elixir}), "Elixir build output. mix compile makes it again."},
    {"vendor", setOf({php}), "Packages from Composer. Run composer install to get them back."},
    {".stack-work", kAnyKind, kNextBuild},
    {"dist-newstyle", kAnyKind, kNextBuild},
    {"zig-cache", kAnyKind, kNextBuild},
    {".zig-cache", kAnyKind, kNextBuild},
    {"zig-out", setOf({zig}), kNextBuild},
    {"cmake-build-", kAnyKind, kNextBuild, Match::prefix},
    {"Binaries", setOf({unreal}), kUnreal},
    {"Intermediate", setOf({unreal}), kUnreal},
    {"DerivedDataCache", setOf({unreal}), kUnreal},
    // Unity re-imports every asset into Library and Temp when they are missing.
    {"Library", setOf({unity}), kUnity},
    {"Temp", setOf({unity}), kUnity},
    {".godot", kAnyKind, "Godot's import cache. Godot makes it again when you open the project."},
    {".terraform", kAnyKind,
     "Providers Terraform downloaded. Run terraform init to get them back."},
});

bool nameMatches(const RebuildRule& rule, std::string_view name) {
  return rule.match == Match::exact ? name == rule.name
                                    : name.starts_with(rule.name) && name.size() > rule.name.size();
}

bool isSealed(const SizeNode& node, std::string_view trashPath) {
  if (node.name.ends_with(".app")) return true;
  if (node.path == trashPath) return true;
  return std::find(sealedNames.begin(), sealedNames.end(), node.name) != sealedNames.end();
}

bool isModelFile(const SizeNode& node) {
  if (node.isDirectory || node.isLocked || node.bytes < minimumModelBytes) return false;
  const auto dot = node.name.rfind('.');
  if (dot == std::string::npos || dot == 0) return false;
  std::string extension = node.name.substr(dot + 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return std::find(modelExtensions.begin(), modelExtensions.end(), extension) !=
         modelExtensions.end();
}

std::span<const std::string> markersOf(const SizeNode& node) {
  if (!node.markers) return {};
  return *node.markers;
}

std::string relativeTo(const SizeNode& node, const SizeNode* owner) {
  if (owner == nullptr) return node.name;
  RebuildItem probe{.path = node.path};
  return probe.displayPath(owner->path.str());
}

bool hasLockFile(std::span<const std::string> markers) {
  return hasAny(markers,
                {"yarn.lock", "pnpm-lock.yaml", "bun.lockb", "bun.lock", "package-lock.json"});
}

}  // namespace

std::string_view label(Kind kind) {
  switch (kind) {
    case reactNative: return "React Native app";
    case capacitor: return "Capacitor app";
    case rust: return "Rust project";
    case python: return "Python project";
    case swiftPackage: return "Swift package";
    case php: return "PHP project";
    case haskell: return "Haskell project";
    case go: return "Go project";
    case terraform: return "Terraform project";
    case cOrCpp: return "C or C++ project";
    case zig: return "Zig project";
    case ruby: return "Ruby project";
    case elixir: return "Elixir project";
    case dotNet: return ".NET project";
    case java: return "Java project";
    case android: return "Android project";
    case gradle: return "Gradle project";
    case xcode: return "Xcode project";
    case javaScript: return "JavaScript project";
    case nextJS: return "Next.js app";
    case godot: return "Godot project";
    case unreal: return "Unreal project";
    case unity: return "Unity project";
    case flutter: return "Flutter app";
  }
  return "";
}

std::vector<Kind> kinds(std::span<const std::string> markers, std::string_view folderName) {
  std::vector<Kind> found;
  if (markers.empty()) return found;
  for (Kind kind : kPrecedence) {
    if (matches(kind, markers, folderName)) found.push_back(kind);
  }
  return found;
}

std::optional<std::string> label(const SizeNode& node) {
  const auto found = kinds(markersOf(node), node.name);
  if (found.empty()) return std::nullopt;
  return std::string(label(found.front()));
}

std::string_view installer(std::span<const std::string> markers) {
  if (has(markers, "yarn.lock")) return "yarn install";
  if (has(markers, "pnpm-lock.yaml")) return "pnpm install";
  if (hasAny(markers, {"bun.lockb", "bun.lock"})) return "bun install";
  return "npm install";
}

std::optional<std::string> rebuildReason(std::string_view name,
                                         std::span<const std::string> childMarkers,
                                         std::span<const Kind> projectKinds, int depth,
                                         std::string_view installCommand) {
  if (projectKinds.empty() || depth < 1) return std::nullopt;
  for (Kind kind : projectKinds) {
    for (const RebuildRule& rule : kRules) {
      if (!nameMatches(rule, name) || (rule.kinds & bit(kind)) == 0) continue;
      const int maxDepth = rule.kinds == kAnyKind ? maxDepthForDistinctNames : maxDepthForKindNames;
      if (depth > maxDepth) continue;
      if (rule.needsPythonEnvironment && !has(childMarkers, "pyvenv.cfg")) continue;
      if (rule.reason.empty()) {
        return "Packages the project downloaded. Run " + std::string(installCommand) +
               " to get them back.";
      }
      return std::string(rule.reason);
    }
  }
  return std::nullopt;
}

RebuildPlan plan(const SizeNode& tree, std::string_view home) {
  struct Frame {
    const SizeNode* node;
    const SizeNode* owner;  // nearest project folder at or above `node`
    std::vector<Kind> ownerKinds;
    int depth;                       // folders between the owner and `node`
    std::string_view lockInstaller;  // installer of the nearest project above with a lock file
  };
  const std::string trashPath = std::string(home) + "/.local/share/Trash";
  RebuildPlan result;
  std::vector<const SizeNode*> projectsWithItems;

  std::vector<Frame> pending;
  pending.push_back({.node = &tree,
                     .owner = nullptr,
                     .ownerKinds = {},
                     .depth = 0,
                     .lockInstaller = "npm install"});
  while (!pending.empty()) {
    Frame frame = std::move(pending.back());
    pending.pop_back();
    const SizeNode& node = *frame.node;
    auto ownKinds = kinds(markersOf(node), node.name);
    if (!ownKinds.empty()) {
      frame.owner = &node;
      frame.ownerKinds = std::move(ownKinds);
      frame.depth = 0;
      if (hasLockFile(markersOf(node))) frame.lockInstaller = installer(markersOf(node));
    }
    // Pushed in reverse so that children come off the stack in the tree's order.
    std::vector<Frame> next;
    for (const SizeNode& child : node.children) {
      if (child.isLocked) continue;
      if (!child.isDirectory) {
        if (isModelFile(child)) {
          result.models.push_back({.path = child.path,
                                   .name = child.name,
                                   .bytes = child.bytes,
                                   .reason = std::string(modelReason),
                                   .projectName = frame.owner ? frame.owner->name : "",
                                   .relativePath = relativeTo(child, frame.owner)});
        }
        continue;
      }
      // A folder that is a project of its own holds code, whatever its name.
      const bool isProject = !kinds(markersOf(child), child.name).empty();
      const auto reason = isProject ? std::nullopt
                                    : rebuildReason(child.name, markersOf(child), frame.ownerKinds,
                                                    frame.depth + 1, frame.lockInstaller);
      if (reason) {
        if (child.bytes >= minimumBytes) {
          result.items.push_back({.path = child.path,
                                  .name = child.name,
                                  .bytes = child.bytes,
                                  .reason = *reason,
                                  .projectName = frame.owner->name,
                                  .relativePath = relativeTo(child, frame.owner)});
          if (std::find(projectsWithItems.begin(), projectsWithItems.end(), frame.owner) ==
              projectsWithItems.end()) {
            projectsWithItems.push_back(frame.owner);
          }
        }
        continue;
      }
      if (isSealed(child, trashPath)) continue;
      next.push_back({.node = &child,
                      .owner = frame.owner,
                      .ownerKinds = frame.ownerKinds,
                      .depth = frame.depth + 1,
                      .lockInstaller = frame.lockInstaller});
    }
    for (auto it = next.rbegin(); it != next.rend(); ++it) pending.push_back(std::move(*it));
  }
  for (const SizeNode* project : projectsWithItems) {
    result.projects.push_back(
        {.path = project->path, .name = project->name, .label = *label(*project)});
  }
  return result;
}

}  // namespace pellwin::ProjectAdvisor
