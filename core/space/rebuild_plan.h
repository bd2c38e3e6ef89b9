// What the developer project advisor proposes: folders that a build or an install makes again,
// and large AI model files, each with the sentence shown to the user.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

struct RebuildItem {
  std::string path{};
  std::string name{};  // the folder's (or file's) own name
  std::uint64_t bytes = 0;
  std::string reason{};        // what it is and how it comes back
  std::string projectName{};   // the owning project folder's name; empty when there is none
  std::string relativePath{};  // the path inside its project (its name when there is none)
  friend bool operator==(const RebuildItem&, const RebuildItem&) = default;

  [[nodiscard]] const std::string& id() const { return path; }
  // The path relative to `folder` when it lies inside it, otherwise the whole path.
  [[nodiscard]] std::string displayPath(std::string_view folder) const;
};

struct ProjectSummary {
  std::string path{};
  std::string name{};
  std::string label{};  // the project kind's label, such as "Rust project"
  friend bool operator==(const ProjectSummary&, const ProjectSummary&) = default;
};

struct RebuildPlan {
  std::vector<RebuildItem> items{};        // rebuildable folders
  std::vector<RebuildItem> models{};       // model files
  std::vector<ProjectSummary> projects{};  // the projects that own an item, in tree order
  friend bool operator==(const RebuildPlan&, const RebuildPlan&) = default;

  [[nodiscard]] bool isEmpty() const { return items.empty() && models.empty(); }
  // The items' and models' bytes; an overflow is a fatal error.
  [[nodiscard]] std::uint64_t totalBytes() const;
};

}  // namespace pellwin
