// Size trees under a made-up home, "/home/ann", for the tests of the space map and its screen:
// `file` and `folder` make nodes by their path below home, a folder summing its children.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "core/space/size_node.h"
#include "core/space/storage_category.h"

namespace pellwin::testing::home_tree {

inline const std::string home = "/home/ann";

inline SizeNode file(const std::string& relative, std::uint64_t bytes,
                     StorageCategory category = StorageCategory::other) {
  const std::string path = home + "/" + relative;
  return SizeNode{
      .name = path.substr(path.rfind('/') + 1), .path = path, .bytes = bytes, .category = category};
}

// `relative` empty is home itself.
inline SizeNode folder(const std::string& relative, std::uint64_t restBytes,
                       std::vector<SizeNode> children,
                       StorageCategory category = StorageCategory::other) {
  SizeNode node = relative.empty() ? SizeNode{.name = "ann", .path = home, .category = category}
                                   : file(relative, 0, category);
  node.isDirectory = true;
  node.restBytes = restBytes;
  node.bytes = restBytes;
  for (const SizeNode& child : children) node.bytes += child.bytes;
  SizeNode::sortChildren(children);
  node.children = std::move(children);
  return node;
}

}  // namespace pellwin::testing::home_tree
