// A size-tree node's display path, kept as the node's own name and a shared link to its
// folder's path rather than as one string: a tree then holds each name once, so its memory
// grows with the number of nodes, not with their depth times the length of their paths.
// Compares, orders and converts as the text it stands for. Immutable; copies share their links,
// and reading a path from several threads at once is safe.
#pragma once

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

namespace pellwin {

class NodePath {
 public:
  NodePath() = default;  // ""
  // A whole path given as text. Implicit, so that a path can be written where a node is made.
  NodePath(std::string text);  // NOLINT(google-explicit-constructor)
  NodePath(const char* text) : NodePath(std::string(text)) {}  // NOLINT

  // `name` inside `folder`: the folder's path, then "/" unless it already ends with one, then
  // the name (as joinedPath does), sharing the folder's text.
  [[nodiscard]] static NodePath inFolder(const NodePath& folder, std::string_view name);

  [[nodiscard]] std::string str() const;
  operator std::string() const { return str(); }  // NOLINT(google-explicit-constructor)
  void appendTo(std::string& out) const;

  [[nodiscard]] std::size_t size() const;
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] bool endsWithSlash() const;

  // Whether this path was made by `inFolder(folder, ...)` from this very folder path (or a copy
  // of it), and then the name it added; a path that only reads the same is not.
  [[nodiscard]] bool isInFolder(const NodePath& folder) const;
  [[nodiscard]] std::string_view lastAdded() const;

  friend bool operator==(const NodePath& a, const NodePath& b);
  friend bool operator==(const NodePath& a, std::string_view b);
  friend bool operator==(const NodePath& a, const std::string& b) {
    return a == std::string_view(b);
  }
  friend bool operator==(const NodePath& a, const char* b) { return a == std::string_view(b); }
  friend std::strong_ordering operator<=>(const NodePath& a, const NodePath& b);

  // Whether the text of this path starts with `prefix`.
  [[nodiscard]] bool startsWith(std::string_view prefix) const;
  // Whether this path contains `path` by components, as pathIsWithin(path, *this) would say.
  [[nodiscard]] bool contains(std::string_view path) const;

 private:
  struct Link;
  explicit NodePath(std::shared_ptr<const Link> link) : link_(std::move(link)) {}

  std::shared_ptr<const Link> link_;
};

// The text, for test failures and logs.
std::ostream& operator<<(std::ostream& out, const NodePath& path);

}  // namespace pellwin
