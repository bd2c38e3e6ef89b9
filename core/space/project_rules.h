// The names that mark a developer project folder. The walk notes every marker it meets in a
// folder (SizeNode::markers); the advisor reads the project's kind from them.
#pragma once

#include <array>
#include <string_view>

namespace pellwin::ProjectRules {

inline constexpr auto markerFiles = std::to_array<std::string_view>({
    "package.json",
    "package-lock.json",
    "yarn.lock",
    "pnpm-lock.yaml",
    "bun.lockb",
    "bun.lock",
    "next.config.js",
    "next.config.mjs",
    "next.config.ts",
    "capacitor.config.json",
    "capacitor.config.ts",
    "build.gradle",
    "build.gradle.kts",
    "settings.gradle",
    "settings.gradle.kts",
    "Podfile",
    "Package.swift",
    "pubspec.yaml",
    "Cargo.toml",
    "pyproject.toml",
    "requirements.txt",
    "setup.py",
    "setup.cfg",
    "Pipfile",
    "poetry.lock",
    "uv.lock",
    "pyvenv.cfg",
    "go.mod",
    "pom.xml",
    "Gemfile",
    "composer.json",
    "mix.exs",
    "stack.yaml",
    "cabal.project",
    "build.zig",
    "CMakeLists.txt",
    ".terraform.lock.hcl",
    "project.godot",
});
static_assert(markerFiles.size() == 38);

inline constexpr auto markerDirectories =
    std::to_array<std::string_view>({"android", "ios", "Assets", "ProjectSettings"});

// A name ending in one of these marks a project whether it is a file or a folder.
inline constexpr auto markerSuffixes = std::to_array<std::string_view>(
    {".xcodeproj", ".xcworkspace", ".csproj", ".fsproj", ".sln", ".uproject"});

[[nodiscard]] bool isMarker(std::string_view name, bool isDirectory);

}  // namespace pellwin::ProjectRules
