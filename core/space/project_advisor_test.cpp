#include "core/space/project_advisor.h"

#include <gtest/gtest.h>

#include <set>

#include "core/space/project_rules.h"

namespace pellwin {
namespace {

using Markers = std::vector<std::string>;

SizeNode dir(std::string path, std::uint64_t bytes, std::vector<SizeNode> children = {},
             std::optional<Markers> markers = std::nullopt) {
  std::string name = path.substr(path.rfind('/') + 1);
  return {.name = name,
          .path = path,
          .bytes = bytes,
          .isDirectory = true,
          .children = std::move(children),
          .markers = std::move(markers)};
}

SizeNode file(std::string path, std::uint64_t bytes) {
  std::string name = path.substr(path.rfind('/') + 1);
  return {.name = name, .path = path, .bytes = bytes};
}

TEST(ProjectRules, RecognisesMarkersByKindOfEntry) {
  const struct {
    const char* name;
    bool isDirectory;
    bool marker;
  } cases[] = {
      {"Cargo.toml", false, true},    {"Cargo.toml", true, false},   {"android", true, true},
      {"android", false, false},      {"App.xcodeproj", true, true}, {"App.sln", false, true},
      {"Game.uproject", false, true}, {"cargo.toml", false, false},  {"README.md", false, false},
      {"pyvenv.cfg", false, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(ProjectRules::isMarker(c.name, c.isDirectory), c.marker);
  }
}

TEST(ProjectAdvisor, EveryKindHasALabelOfItsOwn) {
  std::set<std::string_view> labels;
  for (ProjectAdvisor::Kind kind : enumCases<ProjectAdvisor::Kind>()) {
    SCOPED_TRACE(ProjectAdvisor::rawValue(kind));
    EXPECT_TRUE(labels.insert(ProjectAdvisor::label(kind)).second);
  }
  EXPECT_EQ(labels.size(), enumCount<ProjectAdvisor::Kind>);
}

TEST(ProjectAdvisor, LabelsTheMostSpecificKind) {
  const struct {
    const char* why;
    std::string path;
    Markers markers;
    std::optional<std::string> label;
  } cases[] = {
      {"Rust", "/p/r", {"Cargo.toml"}, "Rust project"},
      {"Flutter over its Gradle files", "/p/f", {"pubspec.yaml", "build.gradle"}, "Flutter app"},
      {"React Native", "/p/rn", {"package.json", "ios", "android"}, "React Native app"},
      {"Capacitor over React Native",
       "/p/c",
       {"package.json", "android", "capacitor.config.ts"},
       "Capacitor app"},
      {"Next.js", "/p/n", {"package.json", "next.config.mjs"}, "Next.js app"},
      {"JavaScript by lock file alone", "/p/j", {"pnpm-lock.yaml"}, "JavaScript project"},
      {"Gradle folder named android", "/p/rn/android", {"settings.gradle"}, "Android project"},
      {"other Gradle folder", "/p/g", {"build.gradle.kts"}, "Gradle project"},
      {"Unity needs both folders", "/p/u", {"Assets", "ProjectSettings", "U.sln"}, "Unity project"},
      {"Assets alone is no project", "/p/a", {"Assets"}, std::nullopt},
      {"C++ only when nothing else", "/p/x", {"CMakeLists.txt", "Cargo.toml"}, "Rust project"},
      {"C++", "/p/y", {"CMakeLists.txt"}, "C or C++ project"},
      {"a Python environment is no project", "/p/.venv", {"pyvenv.cfg"}, std::nullopt},
      {".NET", "/p/d", {"App.csproj"}, ".NET project"},
      {"Xcode by Podfile", "/p/i", {"Podfile"}, "Xcode project"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(ProjectAdvisor::label(dir(c.path, 0, {}, c.markers)), c.label);
  }
  EXPECT_EQ(ProjectAdvisor::label(dir("/p/none", 0)), std::nullopt);
}

TEST(ProjectAdvisor, InstallerFollowsTheLockFile) {
  EXPECT_EQ(ProjectAdvisor::installer(Markers{"package.json", "yarn.lock"}), "yarn install");
  EXPECT_EQ(ProjectAdvisor::installer(Markers{"pnpm-lock.yaml"}), "pnpm install");
  EXPECT_EQ(ProjectAdvisor::installer(Markers{"bun.lock"}), "bun install");
  EXPECT_EQ(ProjectAdvisor::installer(Markers{"bun.lockb"}), "bun install");
  EXPECT_EQ(ProjectAdvisor::installer(Markers{"package.json"}), "npm install");
}

TEST(ProjectAdvisor, ProposesFoldersFromTheSizeFloorUp) {
  for (std::uint64_t bytes : {4'999'999ull, 5'000'000ull}) {
    SCOPED_TRACE(bytes);
    SizeNode tree = dir("/h/rs", bytes + 10, {dir("/h/rs/target", bytes)}, Markers{"Cargo.toml"});
    auto plan = ProjectAdvisor::plan(tree, "/h");
    if (bytes < ProjectAdvisor::minimumBytes) {
      EXPECT_TRUE(plan.isEmpty());
      EXPECT_TRUE(plan.projects.empty());
      continue;
    }
    ASSERT_EQ(plan.items.size(), 1u);
    EXPECT_EQ(plan.items[0].reason, "Rust build output. cargo build makes it again.");
    EXPECT_EQ(plan.items[0].projectName, "rs");
    EXPECT_EQ(plan.items[0].relativePath, "target");
    ASSERT_EQ(plan.projects.size(), 1u);
    EXPECT_EQ(plan.projects[0],
              (ProjectSummary{.path = "/h/rs", .name = "rs", .label = "Rust project"}));
  }
}

TEST(ProjectAdvisor, ProposesModelFilesFromTheirFloorUp) {
  SizeNode tree =
      dir("/h", 300'000'000,
          {file("/h/a.gguf", 50'000'000), file("/h/b.GGUF", 49'999'999),
           file("/h/c.safetensors", 60'000'000), file("/h/d.bin", 90'000'000),
           dir("/h/x/node_modules", 70'000'000, {file("/h/x/node_modules/m.onnx", 70'000'000)})});
  auto plan = ProjectAdvisor::plan(tree, "/h");
  ASSERT_EQ(plan.models.size(), 2u);
  EXPECT_EQ(plan.models[0].path, "/h/a.gguf");
  EXPECT_EQ(plan.models[1].path, "/h/c.safetensors");
  EXPECT_EQ(plan.models[0].reason, ProjectAdvisor::modelReason);
  EXPECT_EQ(plan.totalBytes(), 110'000'000u);
}

TEST(ProjectAdvisor, GivesEachFolderTheSentenceOfItsProjectKind) {
  constexpr std::uint64_t kBig = 10'000'000;
  const struct {
    const char* why;
    Markers projectMarkers;
    std::string folder;
    Markers folderMarkers;
    std::optional<std::string> reason;
  } cases[] = {
      {"pnpm lock",
       {"package.json", "pnpm-lock.yaml"},
       "node_modules",
       {},
       "Packages the project downloaded. Run pnpm install to get them back."},
      {"no lock",
       {"package.json"},
       "node_modules",
       {},
       "Packages the project downloaded. Run npm install to get them back."},
      {"Java target", {"pom.xml"}, "target", {}, "Java build output. mvn package makes it again."},
      {"target means nothing to Go", {"go.mod"}, "target", {}, std::nullopt},
      {"Flutter build beats Gradle's",
       {"pubspec.yaml", "build.gradle"},
       "build",
       {},
       "Flutter build output. The next build makes it again."},
      {"Gradle build",
       {"settings.gradle"},
       "build",
       {},
       "Build output. The next Gradle build makes it again."},
      {"JavaScript dist",
       {"package.json"},
       "dist",
       {},
       "Build output. Your build command makes it again."},
      {"Python dist",
       {"pyproject.toml"},
       "dist",
       {},
       "Build output. Building the package makes it again."},
      {"venv with pyvenv.cfg",
       {"requirements.txt"},
       ".venv",
       {"pyvenv.cfg"},
       "A Python environment. Reinstall the project's packages to get it back."},
      {"venv without pyvenv.cfg", {"requirements.txt"}, "venv", {}, std::nullopt},
      {"CMake build folder",
       {"CMakeLists.txt"},
       "cmake-build-debug",
       {},
       "Build output. The next build makes it again."},
      {"bare prefix is no build folder", {"CMakeLists.txt"}, "cmake-build-", {}, std::nullopt},
      {".NET obj", {"App.csproj"}, "obj", {}, ".NET build output. dotnet build makes it again."},
      {"Elixir deps", {"mix.exs"}, "deps", {}, "Dependencies. Run mix deps.get to get them back."},
      {"PHP vendor",
       {"composer.json"},
       "vendor",
       {},
       "Packages from Composer. Run composer install to get them back."},
      {"Go vendor is source", {"go.mod"}, "vendor", {}, std::nullopt},
      {"Unreal",
       {"Game.uproject"},
       "Intermediate",
       {},
       "Unreal makes this again when you build or open the project."},
      {"Godot",
       {"project.godot"},
       ".godot",
       {},
       "Godot's import cache. Godot makes it again when you open the project."},
      {"Terraform",
       {".terraform.lock.hcl"},
       ".terraform",
       {},
       "Providers Terraform downloaded. Run terraform init to get them back."},
      {"a project inside is code, whatever its name",
       {"package.json"},
       "build",
       {"CMakeLists.txt"},
       std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    SizeNode tree = dir("/h/p", kBig + 1, {dir("/h/p/" + c.folder, kBig, {}, c.folderMarkers)},
                        c.projectMarkers);
    if (c.folderMarkers.empty()) tree.children[0].markers.reset();
    auto plan = ProjectAdvisor::plan(tree, "/h");
    if (!c.reason) {
      EXPECT_TRUE(plan.items.empty());
      continue;
    }
    ASSERT_EQ(plan.items.size(), 1u);
    EXPECT_EQ(plan.items[0].reason, *c.reason);
  }
}

TEST(ProjectAdvisor, WalksTheWholeTreeWithOwnersDepthsAndSeals) {
  constexpr std::uint64_t M = 1'000'000;
  SizeNode tree =
      dir("/h", 500 * M,
          {dir("/h/code", 300 * M,
               {dir("/h/code/mono", 200 * M,
                    {dir("/h/code/mono/packages", 100 * M,
                         {dir("/h/code/mono/packages/web", 100 * M,
                              {dir("/h/code/mono/packages/web/node_modules", 60 * M),
                               dir("/h/code/mono/packages/web/src", 40 * M,
                                   {dir("/h/code/mono/packages/web/src/build", 40 * M)})},
                              Markers{"package.json"})}),
                     dir("/h/code/mono/tools", 20 * M,
                         {dir("/h/code/mono/tools/py", 20 * M,
                              {dir("/h/code/mono/tools/py/.venv", 20 * M, {},
                                   Markers{"pyvenv.cfg"})})})},
                    Markers{"package.json", "yarn.lock"}),
                dir("/h/code/loose", 100 * M, {dir("/h/code/loose/target", 100 * M)})}),
           dir("/h/.local/share/Trash", 100 * M,
               {dir("/h/.local/share/Trash/files", 100 * M,
                    {dir("/h/.local/share/Trash/files/old", 100 * M,
                         {dir("/h/.local/share/Trash/files/old/target", 100 * M)},
                         Markers{"Cargo.toml"})})}),
           dir("/h/Tool.app", 100 * M, {file("/h/Tool.app/model.gguf", 100 * M)})});

  auto plan = ProjectAdvisor::plan(tree, "/h");
  ASSERT_EQ(plan.items.size(), 2u);
  // The monorepo's lock file decides the installer of a package without its own.
  EXPECT_EQ(plan.items[0].path, "/h/code/mono/packages/web/node_modules");
  EXPECT_EQ(plan.items[0].reason,
            "Packages the project downloaded. Run yarn install to get them back.");
  EXPECT_EQ(plan.items[0].displayPath("/h/code"), "mono/packages/web/node_modules");
  // A Python environment is known by itself a few levels below its project.
  EXPECT_EQ(plan.items[1].path, "/h/code/mono/tools/py/.venv");
  EXPECT_EQ(plan.items[1].projectName, "mono");
  EXPECT_EQ(plan.items[1].relativePath, "tools/py/.venv");
  // Not proposed: "build" two levels down, "target" outside any project, anything in the Trash
  // or in an app bundle.
  ASSERT_EQ(plan.projects.size(), 2u);
  EXPECT_EQ(plan.projects[0].label, "JavaScript project");
  EXPECT_EQ(plan.projects[0].path, "/h/code/mono/packages/web");
  EXPECT_EQ(plan.projects[1].path, "/h/code/mono");
  EXPECT_TRUE(plan.models.empty());
}

}  // namespace
}  // namespace pellwin
