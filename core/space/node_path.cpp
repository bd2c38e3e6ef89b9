#include "core/space/node_path.h"

#include <algorithm>
#include <ostream>

#include "core/base/path_text.h"

namespace pellwin {

struct NodePath::Link {
  // Null when `text` is the whole path. Mutable only so that the destructor can unchain it.
  mutable std::shared_ptr<const Link> folder{};
  std::string text{};    // the whole path, or the name added to the folder's
  std::size_t size = 0;  // of the whole path
  bool slash = false;    // a "/" between the folder's path and `text`

  Link(std::shared_ptr<const Link> folderPath, std::string added, std::size_t wholeSize,
       bool joined)
      : folder(std::move(folderPath)), text(std::move(added)), size(wholeSize), slash(joined) {}
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  // Releases the folders this link alone kept, one after the other: letting each destructor
  // release the next would recurse as deep as the tree.
  ~Link() {
    std::shared_ptr<const Link> next = std::move(folder);
    while (next && next.use_count() == 1) next = std::move(next->folder);
  }
};

namespace {

// Calls `piece(text, end)` for each stretch of the path, last first, with where it ends in the
// whole text; stops early when `piece` returns false. Returns whether it went through.
template <typename Link, typename Piece>
bool backwards(const Link* link, Piece&& piece) {
  while (link != nullptr) {
    if (!piece(std::string_view(link->text), link->size)) return false;
    if (link->slash && !piece(std::string_view("/"), link->size - link->text.size())) return false;
    link = link->folder.get();
  }
  return true;
}

}  // namespace

NodePath::NodePath(std::string text) {
  if (text.empty()) return;
  const std::size_t size = text.size();
  link_ = std::make_shared<const Link>(nullptr, std::move(text), size, false);
}

NodePath NodePath::inFolder(const NodePath& folder, std::string_view name) {
  if (folder.empty()) return NodePath(joinedPath({}, name));
  const bool slash = !folder.endsWithSlash();
  return NodePath(std::make_shared<const Link>(folder.link_, std::string(name),
                                               folder.size() + slash + name.size(), slash));
}

std::size_t NodePath::size() const { return link_ ? link_->size : 0; }

void NodePath::appendTo(std::string& out) const {
  const std::size_t start = out.size();
  out.resize(start + size());
  backwards(link_.get(), [&](std::string_view piece, std::size_t end) {
    piece.copy(out.data() + start + end - piece.size(), piece.size());
    return true;
  });
}

std::string NodePath::str() const {
  std::string text;
  appendTo(text);
  return text;
}

bool NodePath::endsWithSlash() const {
  bool slash = false;
  backwards(link_.get(), [&](std::string_view piece, std::size_t) {
    if (piece.empty()) return true;
    slash = piece.back() == '/';
    return false;
  });
  return slash;
}

bool NodePath::isInFolder(const NodePath& folder) const {
  return link_ && link_->folder && link_->folder == folder.link_;
}

std::string_view NodePath::lastAdded() const {
  return link_ ? std::string_view(link_->text) : std::string_view();
}

bool NodePath::startsWith(std::string_view prefix) const {
  if (prefix.size() > size()) return false;
  return backwards(link_.get(), [&](std::string_view piece, std::size_t end) {
    const std::size_t begin = end - piece.size();
    if (begin >= prefix.size()) return true;
    const std::size_t length = std::min(end, prefix.size()) - begin;
    return piece.substr(0, length) == prefix.substr(begin, length);
  });
}

bool operator==(const NodePath& a, std::string_view b) {
  return a.size() == b.size() && a.startsWith(b);
}

bool operator==(const NodePath& a, const NodePath& b) {
  const NodePath::Link* left = a.link_.get();
  const NodePath::Link* right = b.link_.get();
  // Paths built alike are compared a name at a time, without making their text.
  while (left != right) {
    if (left == nullptr || right == nullptr || left->size != right->size) return false;
    if (!left->folder || !right->folder || left->slash != right->slash ||
        left->text.size() != right->text.size()) {
      std::string rightText(right->size, '\0');
      backwards(right, [&](std::string_view piece, std::size_t end) {
        piece.copy(rightText.data() + end - piece.size(), piece.size());
        return true;
      });
      return backwards(left, [&](std::string_view piece, std::size_t end) {
        return piece == std::string_view(rightText).substr(end - piece.size(), piece.size());
      });
    }
    if (left->text != right->text) return false;
    left = left->folder.get();
    right = right->folder.get();
  }
  return true;
}

std::strong_ordering operator<=>(const NodePath& a, const NodePath& b) {
  if (a.link_ == b.link_) return std::strong_ordering::equal;
  return a.str().compare(b.str()) <=> 0;
}

bool NodePath::contains(std::string_view path) const {
  if (path.size() < size() || !(*this == path.substr(0, size()))) return false;
  if (path.size() == size()) return true;
  if (!empty() && endsWithSlash()) return true;
  return path[size()] == '/';
}

std::ostream& operator<<(std::ostream& out, const NodePath& path) { return out << path.str(); }

}  // namespace pellwin
