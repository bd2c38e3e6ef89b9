// Recognises developer projects in a size tree by the markers the walk noted, names each
// project's kind, and proposes the folders inside it that a build or an install makes again,
// plus large AI model files anywhere. Pure: it reads the tree only, never the disk.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/base/enum_text.h"
#include "core/space/rebuild_plan.h"
#include "core/space/size_node.h"

namespace pellwin::ProjectAdvisor {

enum class Kind {
  reactNative,
  capacitor,
  rust,
  python,
  swiftPackage,
  php,
  haskell,
  go,
  terraform,
  cOrCpp,
  zig,
  ruby,
  elixir,
  dotNet,
  java,
  android,
  gradle,
  xcode,
  javaScript,
  nextJS,
  godot,
  unreal,
  unity,
  flutter,
};

[[nodiscard]] constexpr EnumTable<Kind::flutter> textTable(Kind) {
  using enum Kind;
  return {{
      {reactNative, "reactNative"},
      {capacitor, "capacitor"},
      {rust, "rust"},
      {python, "python"},
      {swiftPackage, "swiftPackage"},
      {php, "php"},
      {haskell, "haskell"},
      {go, "go"},
      {terraform, "terraform"},
      {cOrCpp, "cOrCpp"},
      {zig, "zig"},
      {ruby, "ruby"},
      {elixir, "elixir"},
      {dotNet, "dotNet"},
      {java, "java"},
      {android, "android"},
      {gradle, "gradle"},
      {xcode, "xcode"},
      {javaScript, "javaScript"},
      {nextJS, "nextJS"},
      {godot, "godot"},
      {unreal, "unreal"},
      {unity, "unity"},
      {flutter, "flutter"},
  }};
}

[[nodiscard]] constexpr std::string_view rawValue(Kind kind) { return enumText(kind); }
[[nodiscard]] constexpr std::optional<Kind> kindFromRawValue(std::string_view raw) {
  return parseEnum<Kind>(raw);
}
// "Rust project", "Next.js app" and so on.
[[nodiscard]] std::string_view label(Kind kind);

inline constexpr std::uint64_t minimumBytes = 5'000'000;
inline constexpr std::uint64_t minimumModelBytes = 50'000'000;

// Extensions of files that hold AI model weights, compared without regard to case. Generic
// containers (".bin", ".h5", ".npz") are left out: too many other files use them.
inline constexpr auto modelExtensions =
    std::to_array<std::string_view>({"gguf", "ggml", "safetensors", "ckpt", "pt", "pth", "onnx",
                                     "tflite", "keras", "mlmodel", "llamafile"});

// Folders the advisor never looks inside: installed packages, app bundles (suffix ".app"),
// version-control internals and the Trash, whose contents are not anyone's project.
inline constexpr auto sealedNames =
    std::to_array<std::string_view>({"node_modules", ".git", ".hg", ".svn", ".Trash"});

// How far below its project a folder may lie and still be proposed. Names that only ever mean
// one thing (node_modules, .venv with its pyvenv.cfg, .pytest_cache) are found a few levels
// down, as in a monorepo's tool folders; names that depend on the project's kind (build, dist,
// target) only directly inside the project folder, where the tools put them.
inline constexpr int maxDepthForDistinctNames = 3;
inline constexpr int maxDepthForKindNames = 1;

// Every kind whose markers are present, in the order of precedence used for the label and for
// a name that more than one kind claims. `folderName` tells an Android project (Gradle files
// in a folder named "android") from any other Gradle project.
[[nodiscard]] std::vector<Kind> kinds(std::span<const std::string> markers,
                                      std::string_view folderName);

// The label of the node's project kind, or none when it is not a project folder.
[[nodiscard]] std::optional<std::string> label(const SizeNode& node);

// The install command for a JavaScript project's packages, chosen by its lock file:
// "yarn install", "pnpm install", "bun install", otherwise "npm install".
[[nodiscard]] std::string_view installer(std::span<const std::string> markers);

// The sentence for a folder of that name directly or nearly directly inside a project of the
// given kinds, or none when it is not rebuildable there. `childMarkers` are the folder's own
// markers (a Python environment is known by its pyvenv.cfg); `depth` is how many folders below
// the project it lies (1 for a direct child); `installCommand` is what `installer` chose.
[[nodiscard]] std::optional<std::string> rebuildReason(std::string_view name,
                                                       std::span<const std::string> childMarkers,
                                                       std::span<const Kind> projectKinds,
                                                       int depth, std::string_view installCommand);

// Walks the tree and proposes every rebuildable folder of at least `minimumBytes` and every
// model file of at least `minimumModelBytes`. `home` locates the Trash, which is never looked
// into. Nested proposals never happen: a proposed folder is not looked into.
[[nodiscard]] RebuildPlan plan(const SizeNode& tree, std::string_view home);

inline constexpr std::string_view modelReason =
    "An AI model file. If you downloaded it, you can download it again. If you trained it "
    "yourself, it can't be remade.";

}  // namespace pellwin::ProjectAdvisor
