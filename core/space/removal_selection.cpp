#include "core/space/removal_selection.h"

#include <algorithm>
#include <cctype>

#include "core/base/checked_math.h"
#include "core/base/path_text.h"
#include "core/space/project_advisor.h"

namespace pellwin {

namespace {

std::string lowered(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// `path` lies strictly below `folder` ("folder/" is a prefix of it).
bool isBelow(std::string_view path, std::string_view folder) {
  return path != folder && pathIsWithin(path, folder);
}

// The folders below `node` in the tree, depth first, locked ones listed but not entered.
template <typename Visit>
void forEachFolderBelow(const SizeNode& node, Visit&& visit) {
  std::vector<const SizeNode*> pending;
  for (auto it = node.children.rbegin(); it != node.children.rend(); ++it) pending.push_back(&*it);
  while (!pending.empty()) {
    const SizeNode* folder = pending.back();
    pending.pop_back();
    if (!folder->isDirectory) continue;
    if (visit(*folder)) return;
    if (folder->isLocked) continue;
    for (auto it = folder->children.rbegin(); it != folder->children.rend(); ++it) {
      pending.push_back(&*it);
    }
  }
}

std::optional<RemovalRefusal> holds(const std::string& name) {
  return RemovalRefusal{.reason = "It holds " + name + ", which Tovrin keeps safe"};
}

}  // namespace

std::uint64_t RemovalSelection::totalBytes() const {
  std::uint64_t total = 0;
  for (const SizeNode& item : items_)
    total = checkedAdd(total, item.bytes, "the delete list's total");
  return total;
}

bool RemovalSelection::contains(std::string_view path) const {
  return std::ranges::any_of(items_, [&](const SizeNode& item) { return item.path == path; });
}

std::optional<RemovalRefusal> RemovalSelection::refusal(const SizeNode& node, std::string_view home,
                                                        const RemovalGuards& guards) {
  if (node.isLocked) {
    return RemovalRefusal{.reason =
                              "macOS keeps it private. Allow whole-disk scan to see and delete it"};
  }
  if (auto refused = RemovalRules::verdict(node.path.str(), home, false, std::nullopt, guards))
    return refused;
  if (!node.isDirectory) return std::nullopt;

  // A guarded path may lie below where the scan did not reach. The rules compare lower-case
  // components, so this test does too.
  const std::string below = lowered(node.path.str()) + (node.path.endsWithSlash() ? "" : "/");
  for (const auto* paths : {&guards.kept, &guards.mainFolders}) {
    for (const std::string& path : *paths) {
      if (lowered(path).starts_with(below)) return holds(std::string(lastPathComponent(path)));
    }
  }
  const auto split = RemovalRules::split(guards);
  std::optional<RemovalRefusal> found;
  forEachFolderBelow(node, [&](const SizeNode& folder) {
    if (RemovalRules::refusal(folder.path.str(), home, split)) found = holds(folder.name);
    return found.has_value();
  });
  return found;
}

std::optional<RemovalRefusal> RemovalSelection::add(const SizeNode& node, std::string_view home,
                                                    const RemovalGuards& guards) {
  if (auto refused = refusal(node, home, guards)) return refused;
  if (!covering(node).empty()) return std::nullopt;
  std::erase_if(items_,
                [&](const SizeNode& item) { return isBelow(item.path.str(), node.path.str()); });
  items_.push_back(node);
  return std::nullopt;
}

std::optional<RemovalRefusal> RemovalSelection::toggle(const SizeNode& node, std::string_view home,
                                                       const RemovalGuards& guards) {
  const std::string path = node.path.str();
  if (contains(path)) {
    remove(path);
    return std::nullopt;
  }
  return add(node, home, guards);
}

void RemovalSelection::remove(std::string_view path) {
  std::erase_if(items_, [&](const SizeNode& item) { return item.path == path; });
}

std::vector<SizeNode> RemovalSelection::covering(const SizeNode& node) const {
  std::vector<SizeNode> found;
  for (const SizeNode& item : items_) {
    if (item.path.contains(node.path.str())) found.push_back(item);
  }
  return found;
}

std::vector<std::string> RemovalSelection::cautions(const SizeNode& node, std::string_view home,
                                                    std::optional<std::string_view> appName) {
  std::vector<std::string> warnings;
  const auto addOnce = [&](std::optional<std::string> warning) {
    if (warning && std::ranges::find(warnings, *warning) == warnings.end()) {
      warnings.push_back(std::move(*warning));
    }
  };
  if (const auto label = ProjectAdvisor::label(node)) {
    addOnce("Deleting this " + *label +
            " deletes its code too, not only the parts that can be rebuilt.");
  }
  addOnce(RemovalRules::caution(node.path.str(), home, appName));
  if (!node.isDirectory) return warnings;
  bool anyLocked = false;
  forEachFolderBelow(node, [&](const SizeNode& folder) {
    addOnce(RemovalRules::caution(folder.path.str(), home, appName));
    anyLocked = anyLocked || folder.isLocked;
    return false;
  });
  if (anyLocked) addOnce(std::string(privateInsideCaution));
  return warnings;
}

void RemovalSelection::reconcile(const SizeNode& tree, std::string_view home,
                                 const RemovalGuards& guards) {
  std::vector<SizeNode> kept;
  for (const SizeNode& item : items_) {
    const SizeNode* now = tree.find(item.path.str());
    if (now != nullptr && !refusal(*now, home, guards)) kept.push_back(*now);
  }
  items_ = std::move(kept);
}

}  // namespace pellwin
