// The delete list of the space map: the items the user picked, never one inside another, so
// no byte is counted twice. It refuses what the removal rules refuse, and gives the warnings to
// show before the user confirms. A plain value owned by the space map's screen model; it never
// touches the disk.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/space/removal_rules.h"
#include "core/space/size_node.h"

namespace pellwin {

class RemovalSelection {
 public:
  static constexpr std::string_view privateInsideCaution =
      "Some folders inside are private, so Tovrin can't show you what's in them.";

  [[nodiscard]] const std::vector<SizeNode>& items() const { return items_; }
  [[nodiscard]] bool isEmpty() const { return items_.empty(); }
  [[nodiscard]] std::size_t count() const { return items_.size(); }
  // The sum of the items' bytes; an overflow is a fatal error.
  [[nodiscard]] std::uint64_t totalBytes() const;
  [[nodiscard]] bool contains(std::string_view path) const;

  // Why the node may not be picked: locked, refused by the rules, or holding something the
  // rules refuse (a protected path below it, or a folder below it in the tree).
  [[nodiscard]] static std::optional<RemovalRefusal> refusal(const SizeNode& node,
                                                             std::string_view home,
                                                             const RemovalGuards& guards);

  // Picks the node unless refused. A node already covered by a picked item changes nothing;
  // picked items inside the node are taken out, and the node goes to the end.
  [[nodiscard]] std::optional<RemovalRefusal> add(const SizeNode& node, std::string_view home,
                                                  const RemovalGuards& guards);
  // Unpicks the node when it is picked, else adds it.
  [[nodiscard]] std::optional<RemovalRefusal> toggle(const SizeNode& node, std::string_view home,
                                                     const RemovalGuards& guards);
  void remove(std::string_view path);
  void clear() { items_.clear(); }

  // The picked items that cover the node: the one with its path or an ancestor's.
  [[nodiscard]] std::vector<SizeNode> covering(const SizeNode& node) const;

  // The warnings to show before deleting the node, each once, in order: the developer
  // project's, the node's own, those of the folders below it, and `privateInsideCaution` when
  // a folder below it is locked.
  [[nodiscard]] static std::vector<std::string> cautions(const SizeNode& node,
                                                         std::string_view home,
                                                         std::optional<std::string_view> appName);

  // After a rescan: keeps only the items that still exist in `tree` and still pass the rules,
  // each taking its new node (and so its new size). The order is kept.
  void reconcile(const SizeNode& tree, std::string_view home, const RemovalGuards& guards);

  friend bool operator==(const RemovalSelection&, const RemovalSelection&) = default;

 private:
  std::vector<SizeNode> items_;
};

}  // namespace pellwin
