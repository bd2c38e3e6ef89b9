#include "core/space/size_node.h"

#include <algorithm>

#include "core/base/checked_math.h"
#include "core/base/format.h"

namespace pellwin {

bool pathIsWithin(std::string_view path, std::string_view ancestor) {
  if (!path.starts_with(ancestor)) return false;
  if (path.size() == ancestor.size()) return true;
  if (!ancestor.empty() && ancestor.back() == '/') return true;
  return path[ancestor.size()] == '/';
}

namespace {

// The child to follow towards `path`, or null when no child's subtree can hold it.
template <typename Node>
Node* childToward(Node& node, std::string_view path) {
  for (auto& child : node.children) {
    if (child.path.contains(path)) return &child;
  }
  return nullptr;
}

// The nodes from `root` to the node with `path`, or empty.
template <typename Node>
std::vector<Node*> descend(Node& root, std::string_view path) {
  std::vector<Node*> nodes;
  Node* node = &root;
  while (node != nullptr) {
    nodes.push_back(node);
    if (node->path == path) return nodes;
    node = childToward(*node, path);
  }
  return {};
}

}  // namespace

namespace {

// Every field but `children`.
SizeNode copyFields(const SizeNode& node) {
  return {.name = node.name,
          .path = node.path,
          .bytes = node.bytes,
          .isDirectory = node.isDirectory,
          .children = {},
          .restBytes = node.restBytes,
          .restCount = node.restCount,
          .isLocked = node.isLocked,
          .lastUsed = node.lastUsed,
          .category = node.category,
          .markers = node.markers};
}

bool fieldsEqual(const SizeNode& a, const SizeNode& b) {
  return a.name == b.name && a.path == b.path && a.bytes == b.bytes &&
         a.isDirectory == b.isDirectory && a.restBytes == b.restBytes &&
         a.restCount == b.restCount && a.isLocked == b.isLocked && a.lastUsed == b.lastUsed &&
         a.category == b.category && a.markers == b.markers;
}

}  // namespace

SizeNodeChildren::SizeNodeChildren() noexcept = default;
SizeNodeChildren::SizeNodeChildren(std::initializer_list<SizeNode> nodes)
    : SizeNodeChildren(SizeNodeChildren(std::vector<SizeNode>(nodes))) {}
SizeNodeChildren::SizeNodeChildren(std::vector<SizeNode>&& nodes) noexcept
    : std::vector<SizeNode>(std::move(nodes)) {}
SizeNodeChildren::SizeNodeChildren(SizeNodeChildren&& other) noexcept = default;
SizeNodeChildren& SizeNodeChildren::operator=(SizeNodeChildren&& other) noexcept = default;

SizeNodeChildren::SizeNodeChildren(const SizeNodeChildren& other) : std::vector<SizeNode>() {
  std::vector<std::pair<const SizeNodeChildren*, SizeNodeChildren*>> pending{{&other, this}};
  while (!pending.empty()) {
    auto [from, to] = pending.back();
    pending.pop_back();
    to->reserve(from->size());
    for (const SizeNode& node : *from) to->push_back(copyFields(node));
    // Addresses are taken only once `to` has stopped growing.
    for (std::size_t i = 0; i < from->size(); ++i) {
      if (!(*from)[i].children.empty()) {
        pending.emplace_back(&(*from)[i].children, &(*to)[i].children);
      }
    }
  }
}

SizeNodeChildren& SizeNodeChildren::operator=(const SizeNodeChildren& other) {
  if (this != &other) *this = SizeNodeChildren(other);
  return *this;
}

SizeNodeChildren::~SizeNodeChildren() {
  // Each list is emptied of its grandchildren before it is destroyed, so no destructor ever
  // has more than one level below it.
  std::vector<std::vector<SizeNode>> pending;
  for (SizeNode& node : *this) {
    if (!node.children.empty()) pending.push_back(node.children.release());
  }
  while (!pending.empty()) {
    std::vector<SizeNode> list = std::move(pending.back());
    pending.pop_back();
    for (SizeNode& node : list) {
      if (!node.children.empty()) pending.push_back(node.children.release());
    }
  }
}

std::vector<SizeNode> SizeNodeChildren::release() noexcept {
  std::vector<SizeNode> nodes = std::move(static_cast<std::vector<SizeNode>&>(*this));
  clear();
  return nodes;
}

bool operator==(const SizeNodeChildren& a, const SizeNodeChildren& b) {
  std::vector<std::pair<const SizeNodeChildren*, const SizeNodeChildren*>> pending{{&a, &b}};
  while (!pending.empty()) {
    auto [left, right] = pending.back();
    pending.pop_back();
    if (left->size() != right->size()) return false;
    for (std::size_t i = 0; i < left->size(); ++i) {
      if (!fieldsEqual((*left)[i], (*right)[i])) return false;
      pending.emplace_back(&(*left)[i].children, &(*right)[i].children);
    }
  }
  return true;
}

std::string SizeNode::sizeLabel() const { return isLocked ? "Locked" : Format::disk(bytes); }

const SizeNode* SizeNode::find(std::string_view wanted) const {
  auto nodes = descend(*this, wanted);
  return nodes.empty() ? nullptr : nodes.back();
}

std::vector<const SizeNode*> SizeNode::chain(std::string_view wanted) const {
  return descend(*this, wanted);
}

std::vector<SizeNode> SizeNode::biggestFiles(std::size_t limit) const {
  std::vector<const SizeNode*> files;
  forEach([&](const SizeNode& node) {
    if (&node != this && !node.isDirectory && !node.isLocked) files.push_back(&node);
  });
  std::stable_sort(files.begin(), files.end(), [](const SizeNode* a, const SizeNode* b) {
    if (a->bytes != b->bytes) return a->bytes > b->bytes;
    return a->path < b->path;
  });
  if (files.size() > limit) files.resize(limit);
  std::vector<SizeNode> result;
  result.reserve(files.size());
  for (const SizeNode* file : files) result.push_back(*file);
  return result;
}

SizeNode SizeNode::removing(const std::unordered_set<std::string>& paths) const {
  SizeNode copy = *this;
  if (paths.empty()) return copy;

  // Post-order over the copy with an explicit stack: a folder's total is lowered once all of
  // its children have been rebuilt.
  struct Frame {
    SizeNode* node;
    std::size_t next = 0;
    std::uint64_t removed = 0;
  };
  std::vector<Frame> stack;
  auto enter = [&](SizeNode* node) {
    Frame frame{.node = node};
    std::erase_if(node->children, [&](const SizeNode& child) {
      if (!paths.contains(child.path.str())) return false;
      frame.removed = checkedAdd(frame.removed, child.bytes, "removed bytes");
      return true;
    });
    stack.push_back(frame);
  };
  std::vector<std::uint64_t> bytesBefore;  // of each frame's node, parallel to `stack`
  enter(&copy);
  bytesBefore.push_back(copy.bytes);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next < frame.node->children.size()) {
      SizeNode* child = &frame.node->children[frame.next++];
      bytesBefore.push_back(child->bytes);
      enter(child);
      continue;
    }
    frame.node->bytes = saturatingSubtract(frame.node->bytes, frame.removed);
    const std::uint64_t lowered = bytesBefore.back() - frame.node->bytes;
    stack.pop_back();
    bytesBefore.pop_back();
    if (!stack.empty()) {
      stack.back().removed = checkedAdd(stack.back().removed, lowered, "removed bytes");
    }
  }
  return copy;
}

SizeNode SizeNode::replacing(std::string_view wanted, SizeNode subtree) const {
  SizeNode copy = *this;
  std::vector<SizeNode*> nodes = descend(copy, wanted);
  if (nodes.empty()) return copy;

  std::uint64_t oldBytes = nodes.back()->bytes;
  *nodes.back() = std::move(subtree);
  std::uint64_t newBytes = nodes.back()->bytes;
  // Bottom-up, so that sorting an ancestor's children never moves a node still to be read.
  for (std::size_t i = nodes.size() - 1; i-- > 0;) {
    SizeNode& ancestor = *nodes[i];
    const std::uint64_t before = ancestor.bytes;
    const std::uint64_t kept = saturatingSubtract(ancestor.bytes, oldBytes);
    ancestor.bytes = checkedAdd(kept, newBytes, "folder size");
    sortChildren(ancestor.children);
    oldBytes = before;
    newBytes = ancestor.bytes;
  }
  return copy;
}

bool SizeNode::comesBefore(const SizeNode& a, const SizeNode& b) {
  if (a.bytes != b.bytes) return a.bytes > b.bytes;
  return a.name < b.name;
}

void SizeNode::sortChildren(std::vector<SizeNode>& children) {
  std::stable_sort(children.begin(), children.end(), comesBefore);
}

}  // namespace pellwin
