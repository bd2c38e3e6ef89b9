// The disk space map's tree of folders and files: what the walk builds, the scan cache stores,
// the rings draw and the delete list picks from. Only what can be drawn is kept: items under
// 1,000,000 bytes are folded into their folder's remainder (`restBytes`, `restCount`).
// A plain value; every operation returns a new tree or points into this one.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/space/node_path.h"
#include "core/space/storage_category.h"

namespace pellwin {

struct SizeNode;

// A folder's kept children: a std::vector<SizeNode> whose copy, destruction and comparison
// run without recursion. A tree is as deep as the disk it was walked from (tens of thousands
// of levels are possible), and the implicit, recursive versions would overflow the stack.
class SizeNodeChildren : public std::vector<SizeNode> {
 public:
  SizeNodeChildren() noexcept;
  SizeNodeChildren(std::initializer_list<SizeNode> nodes);
  SizeNodeChildren(std::vector<SizeNode>&& nodes) noexcept;
  SizeNodeChildren(const SizeNodeChildren& other);
  SizeNodeChildren(SizeNodeChildren&& other) noexcept;
  SizeNodeChildren& operator=(const SizeNodeChildren& other);
  SizeNodeChildren& operator=(SizeNodeChildren&& other) noexcept;
  ~SizeNodeChildren();

  // Compares the whole subtrees, every field of every node.
  friend bool operator==(const SizeNodeChildren& a, const SizeNodeChildren& b);

  // Takes the nodes out, leaving this list empty.
  [[nodiscard]] std::vector<SizeNode> release() noexcept;
};

// Every field takes part in copying and comparing; a new field must also be added to
// `copyFields` and `fieldsEqual` in size_node.cpp.
struct SizeNode {
  std::string name{};  // last component of the display path; "/" for the root of a whole disk
  // Display path, unique within a tree: the node's identity. A node the walk made shares its
  // folder's path and adds its name.
  NodePath path{};
  std::uint64_t bytes = 0;  // allocated bytes of the node and everything under it
  bool isDirectory = false;
  // Kept items (at least 1,000,000 bytes, or locked), largest first, equal sizes by name.
  SizeNodeChildren children{};
  std::uint64_t restBytes = 0;       // total of the items too small to keep
  std::int64_t restCount = 0;        // how many such items
  bool isLocked = false;             // could not be read: 0 bytes, no children
  std::optional<double> lastUsed{};  // seconds since 1970
  StorageCategory category = StorageCategory::other;
  // Names directly inside the folder that mark a developer project; absent when none.
  std::optional<std::vector<std::string>> markers{};

  friend bool operator==(const SizeNode&, const SizeNode&) = default;

  [[nodiscard]] const NodePath& id() const { return path; }

  // "Locked" for a locked node, otherwise Format::disk of `bytes`.
  [[nodiscard]] std::string sizeLabel() const;

  // The node with that path in this tree, or null. The pointer lives as long as this tree.
  // A path inside a remainder is never found.
  [[nodiscard]] const SizeNode* find(std::string_view path) const;

  // The nodes from this one down to the node with that path, both included (the breadcrumb);
  // empty when the path is not in the tree. The pointers live as long as this tree.
  [[nodiscard]] std::vector<const SizeNode*> chain(std::string_view path) const;

  // The largest kept files anywhere under this node (remainders are not looked into), largest
  // first, equal sizes by path.
  [[nodiscard]] std::vector<SizeNode> biggestFiles(std::size_t limit) const;

  // A copy without the nodes of those paths, each ancestor's `bytes` lowered by what was taken
  // out of it (never below 0). Remainders and the order of the kept children are unchanged.
  [[nodiscard]] SizeNode removing(const std::unordered_set<std::string>& paths) const;

  // A copy with the node at that path replaced by `subtree` (a rescan of one folder), each
  // ancestor's `bytes` adjusted by the difference and its children sorted again. A path not in
  // the tree gives an unchanged copy.
  [[nodiscard]] SizeNode replacing(std::string_view path, SizeNode subtree) const;

  // The order of kept children: largest `bytes` first, equal sizes by `name` ascending.
  [[nodiscard]] static bool comesBefore(const SizeNode& a, const SizeNode& b);
  static void sortChildren(std::vector<SizeNode>& children);

  // Every kept node of this tree, this one first, depth first in children order. Without
  // recursion, so a tree as deep as the disk allows is safe to visit.
  template <typename Visit>
  void forEach(Visit&& visit) const;
  template <typename Visit>
  void forEachMutable(Visit&& visit);
};

// Whether `ancestor` contains `path` by components: `path` equals it, or continues it after
// a "/" (the "/" is not doubled when `ancestor` already ends with one).
[[nodiscard]] bool pathIsWithin(std::string_view path, std::string_view ancestor);

template <typename Visit>
void SizeNode::forEach(Visit&& visit) const {
  std::vector<const SizeNode*> pending{this};
  while (!pending.empty()) {
    const SizeNode* node = pending.back();
    pending.pop_back();
    visit(*node);
    for (auto it = node->children.rbegin(); it != node->children.rend(); ++it) {
      pending.push_back(&*it);
    }
  }
}

template <typename Visit>
void SizeNode::forEachMutable(Visit&& visit) {
  std::vector<SizeNode*> pending{this};
  while (!pending.empty()) {
    SizeNode* node = pending.back();
    pending.pop_back();
    visit(*node);
    for (auto it = node->children.rbegin(); it != node->children.rend(); ++it) {
      pending.push_back(&*it);
    }
  }
}

}  // namespace pellwin
