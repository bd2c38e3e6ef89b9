#include "probe/files/json_tree_reader.h"

#include <limits>

#include "probe/files/size_node_json.h"

namespace pellwin {
namespace {

// The keys a node must have, one bit each; "lastUsed" and "markers" may be absent.
enum : std::uint32_t {
  kName = 1u << 0,
  kPath = 1u << 1,
  kBytes = 1u << 2,
  kIsDirectory = 1u << 3,
  kChildren = 1u << 4,
  kRestBytes = 1u << 5,
  kRestCount = 1u << 6,
  kIsLocked = 1u << 7,
  kCategory = 1u << 8,
  kAllRequired = (1u << 9) - 1,
};

bool isNodeKey(const std::string& key) {
  for (const char* known :
       {"name", "path", "nameBytes", "pathBytes", "bytes", "isDirectory", "children", "restBytes",
        "restCount", "isLocked", "lastUsed", "category", "markers"}) {
    if (key == known) return true;
  }
  return false;
}

bool isTopKey(const std::string& key) {
  for (const char* known : {"version", "tree", "scannedAt", "root", "rootBytes", "access"}) {
    if (key == known) return true;
  }
  return false;
}

}  // namespace

namespace {
template <typename S>
std::optional<std::uint64_t> asUnsigned(const S& value) {
  if (value.kind == S::Kind::unsignedNumber) return value.unsignedNumber;
  return std::nullopt;
}
template <typename S>
std::optional<std::int64_t> asSigned(const S& value) {
  if (value.kind == S::Kind::signedNumber) return value.signedNumber;
  if (value.kind == S::Kind::unsignedNumber &&
      value.unsignedNumber <=
          static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    return static_cast<std::int64_t>(value.unsignedNumber);
  }
  return std::nullopt;
}
template <typename S>
std::optional<double> asDouble(const S& value) {
  switch (value.kind) {
    case S::Kind::unsignedNumber: return static_cast<double>(value.unsignedNumber);
    case S::Kind::signedNumber: return static_cast<double>(value.signedNumber);
    case S::Kind::floating: return value.floating;
    case S::Kind::null:
    case S::Kind::flag:
    case S::Kind::text: return std::nullopt;
  }
  return std::nullopt;
}
template <typename S>
const std::string* asText(const S& value) {
  return value.kind == S::Kind::text ? value.text : nullptr;
}
}  // namespace

bool JSONTreeReader::nodeScalar(Level& level, const Scalar& value) {
  SizeNode& node = level.node;
  const std::string& key = level.key;
  auto text = [&](std::string& field, std::uint32_t bit) {
    const std::string* got = asText(value);
    if (got == nullptr) return false;
    field = *got;
    level.seen |= bit;
    return true;
  };
  auto exactBytes = [&](std::optional<std::string>& field) {
    const std::string* got = asText(value);
    if (got == nullptr) return false;
    field = SizeNodeJSON::fromHex(*got);
    return field.has_value();
  };
  auto unsignedField = [&](std::uint64_t& field, std::uint32_t bit) {
    const auto got = asUnsigned(value);
    if (!got) return false;
    field = *got;
    level.seen |= bit;
    return true;
  };
  auto flag = [&](bool& field, std::uint32_t bit) {
    if (value.kind != Scalar::Kind::flag) return false;
    field = value.flag;
    level.seen |= bit;
    return true;
  };
  if (key == "name") return text(node.name, kName);
  if (key == "path") {
    const std::string* got = asText(value);
    if (got == nullptr) return false;
    // The exact bytes, when given, win over the readable stand-in, in whichever order they come.
    if (!level.pathBytes) node.path = linkedPath(*got);
    level.seen |= kPath;
    return true;
  }
  if (key == "nameBytes") return exactBytes(level.nameBytes);
  if (key == "pathBytes") {
    if (!exactBytes(level.pathBytes)) return false;
    node.path = linkedPath(*level.pathBytes);
    return true;
  }
  if (key == "bytes") return unsignedField(node.bytes, kBytes);
  if (key == "restBytes") return unsignedField(node.restBytes, kRestBytes);
  if (key == "isDirectory") return flag(node.isDirectory, kIsDirectory);
  if (key == "isLocked") return flag(node.isLocked, kIsLocked);
  if (key == "restCount") {
    const auto got = asSigned(value);
    if (!got) return false;
    node.restCount = *got;
    level.seen |= kRestCount;
    return true;
  }
  if (key == "lastUsed") {
    if (value.kind == Scalar::Kind::null) return true;
    const auto got = asDouble(value);
    if (!got) return false;
    node.lastUsed = *got + SizeNodeJSON::referenceDateOffset;
    return true;
  }
  if (key == "category") {
    const std::string* got = asText(value);
    if (got == nullptr) return false;
    const auto category = storageCategoryFromRawValue(*got);
    if (!category) return false;
    node.category = *category;
    level.seen |= kCategory;
    return true;
  }
  if (key == "markers") return value.kind == Scalar::Kind::null;
  if (key == "children") return false;
  return true;  // a key this version does not know is passed over
}

bool JSONTreeReader::topScalar(Level& level, const Scalar& value) {
  const std::string& key = level.key;
  if (key == "version") {
    version = asSigned(value);
    return version.has_value();
  }
  if (key == "scannedAt") {
    scannedAt = asDouble(value);
    return scannedAt.has_value();
  }
  if (key == "root" || key == "rootBytes" || key == "access") {
    const std::string* got = asText(value);
    if (got == nullptr) return false;
    if (key == "root") root = *got;
    if (key == "access") access = *got;
    if (key == "rootBytes") {
      rootBytes = SizeNodeJSON::fromHex(*got);
      return rootBytes.has_value();
    }
    return true;
  }
  return !isTopKey(key);
}

bool JSONTreeReader::scalar(const Scalar& value) {
  if (stack_.empty()) return false;  // a bare scalar is not a tree
  Level& level = stack_.back();
  switch (level.context) {
    case Context::skipped: return true;
    case Context::children: return false;
    case Context::markers: {
      const std::string* got = asText(value);
      if (got == nullptr) return false;
      level.node.markers->push_back(*got);
      return true;
    }
    case Context::node: return nodeScalar(level, value);
    case Context::top: return topScalar(level, value);
  }
  return false;
}

bool JSONTreeReader::null() { return scalar({.kind = Scalar::Kind::null}); }
bool JSONTreeReader::boolean(bool value) {
  return scalar({.kind = Scalar::Kind::flag, .flag = value});
}
bool JSONTreeReader::number_integer(number_integer_t value) {
  return scalar({.kind = Scalar::Kind::signedNumber, .signedNumber = value});
}
bool JSONTreeReader::number_unsigned(number_unsigned_t value) {
  return scalar({.kind = Scalar::Kind::unsignedNumber, .unsignedNumber = value});
}
bool JSONTreeReader::number_float(number_float_t value, const string_t&) {
  return scalar({.kind = Scalar::Kind::floating, .floating = value});
}
bool JSONTreeReader::string(string_t& value) {
  return scalar({.kind = Scalar::Kind::text, .text = &value});
}
bool JSONTreeReader::binary(binary_t&) { return false; }

bool JSONTreeReader::start_object(std::size_t) {
  if (finished_) return false;
  if (stack_.empty()) {
    if (started_) return false;
    started_ = true;
    stack_.push_back({.context = shape_ == Shape::node ? Context::node : Context::top});
    return true;
  }
  Level& level = stack_.back();
  switch (level.context) {
    case Context::skipped: ++skipDepth_; return true;
    case Context::markers: return false;
    case Context::children: stack_.push_back({.context = Context::node}); return true;
    case Context::node:
      if (isNodeKey(level.key)) return false;
      stack_.push_back({.context = Context::skipped});
      return true;
    case Context::top:
      if (level.key == "tree") {
        treeSeen_ = true;
        stack_.push_back({.context = Context::node});
        return true;
      }
      if (isTopKey(level.key)) return false;
      stack_.push_back({.context = Context::skipped});
      return true;
  }
  return false;
}

bool JSONTreeReader::key(string_t& value) {
  if (stack_.empty()) return false;
  Level& level = stack_.back();
  if (level.context == Context::node || level.context == Context::top) level.key = value;
  return true;
}

// The node being read is on top of the stack, above its parent's "children" and its parent.
NodePath JSONTreeReader::linkedPath(std::string_view text) const {
  if (stack_.size() >= 3 && stack_[stack_.size() - 2].context == Context::children) {
    const Level& parent = stack_[stack_.size() - 3];
    const NodePath& folder = parent.node.path;
    if (parent.context == Context::node && (parent.seen & kPath) != 0 && !folder.empty() &&
        text.size() > folder.size() && folder.contains(text)) {
      const std::string_view name = text.substr(folder.size() + (folder.endsWithSlash() ? 0 : 1));
      if (!name.empty() && name.find('/') == std::string_view::npos) {
        return NodePath::inFolder(folder, name);
      }
    }
  }
  return NodePath(std::string(text));
}

bool JSONTreeReader::finishNode() {
  Level level = std::move(stack_.back());
  stack_.pop_back();
  if ((level.seen & kAllRequired) != kAllRequired) return false;
  if (level.nameBytes) level.node.name = std::move(*level.nameBytes);
  if (stack_.empty()) {
    tree_ = std::move(level.node);
    finished_ = true;
    return true;
  }
  Level& below = stack_.back();
  if (below.context == Context::top) {
    tree_ = std::move(level.node);
    return true;
  }
  // Below is the parent's "children" array, and below that the parent itself.
  if (below.context != Context::children || stack_.size() < 2) return false;
  stack_[stack_.size() - 2].node.children.push_back(std::move(level.node));
  return true;
}

bool JSONTreeReader::endSkipped() {
  if (skipDepth_ > 0) {
    --skipDepth_;
  } else {
    stack_.pop_back();
  }
  return true;
}

bool JSONTreeReader::end_object() {
  if (stack_.empty()) return false;
  Level& level = stack_.back();
  switch (level.context) {
    case Context::skipped: return endSkipped();
    case Context::node: return finishNode();
    case Context::top:
      stack_.pop_back();
      finished_ = version.has_value() && treeSeen_ && scannedAt.has_value() && root.has_value() &&
                  access.has_value();
      return finished_;
    case Context::children:
    case Context::markers: return false;
  }
  return false;
}

bool JSONTreeReader::start_array(std::size_t) {
  if (stack_.empty()) return false;
  Level& level = stack_.back();
  switch (level.context) {
    case Context::skipped: ++skipDepth_; return true;
    case Context::children:
    case Context::markers: return false;
    case Context::node:
      if (level.key == "children") {
        level.seen |= kChildren;
        stack_.push_back({.context = Context::children});
        return true;
      }
      if (level.key == "markers") {
        stack_.push_back({.context = Context::markers});
        stack_.back().node.markers.emplace();
        return true;
      }
      if (isNodeKey(level.key)) return false;
      stack_.push_back({.context = Context::skipped});
      return true;
    case Context::top:
      if (isTopKey(level.key)) return false;
      stack_.push_back({.context = Context::skipped});
      return true;
  }
  return false;
}

bool JSONTreeReader::end_array() {
  if (stack_.empty()) return false;
  Level& level = stack_.back();
  switch (level.context) {
    case Context::skipped: return endSkipped();
    case Context::children: stack_.pop_back(); return true;
    case Context::markers: {
      std::vector<std::string> markers = std::move(*level.node.markers);
      stack_.pop_back();
      stack_.back().node.markers = std::move(markers);
      return true;
    }
    case Context::node:
    case Context::top: return false;
  }
  return false;
}

bool JSONTreeReader::parse_error(std::size_t, const std::string&,
                                 const nlohmann::detail::exception&) {
  return false;
}

}  // namespace pellwin
