#include "probe/files/size_node_json.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <vector>

#include "probe/files/json_tree_reader.h"

namespace pellwin::SizeNodeJSON {

std::string quoted(std::string_view text, bool* exact) {
  const nlohmann::json value = std::string(text);
  try {
    std::string out = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::strict);
    if (exact) *exact = true;
    return out;
  } catch (const nlohmann::json::type_error&) {
    // Not UTF-8: a readable stand-in; the caller stores the exact bytes beside it.
    if (exact) *exact = false;
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  }
}

std::string hexBytes(std::string_view text) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(text.size() * 2);
  for (unsigned char byte : text) {
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 15];
  }
  return hex;
}

std::optional<std::string> fromHex(std::string_view hex) {
  if (hex.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(hex.size() / 2);
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    unsigned value = 0;
    const char* first = hex.data() + i;
    auto [end, error] = std::from_chars(first, first + 2, value, 16);
    if (error != std::errc{} || end != first + 2) return std::nullopt;
    bytes += static_cast<char>(value);
  }
  return bytes;
}

namespace {

void appendText(std::string& out, std::string_view key, std::string_view text) {
  bool exact = true;
  out += '"';
  out += key;
  out += "\":";
  out += SizeNodeJSON::quoted(text, &exact);
  if (!exact) {
    out += ",\"";
    out += key;
    out += "Bytes\":\"";
    out += hexBytes(text);
    out += '"';
  }
}

void appendNumber(std::string& out, std::string_view key, const nlohmann::json& number) {
  out += '"';
  out += key;
  out += "\":";
  out += number.dump();
}

void appendBool(std::string& out, std::string_view key, bool value) {
  out += '"';
  out += key;
  out += value ? "\":true" : "\":false";
}

// Everything up to the children's opening bracket.
void appendHead(const SizeNode& node, std::string& out) {
  out += '{';
  appendText(out, "name", node.name);
  out += ',';
  appendText(out, "path", node.path.str());
  out += ',';
  appendNumber(out, "bytes", node.bytes);
  out += ',';
  appendBool(out, "isDirectory", node.isDirectory);
  out += ",\"children\":[";
}

// Everything after the children's closing bracket.
void appendTail(const SizeNode& node, std::string& out) {
  out += "],";
  appendNumber(out, "restBytes", node.restBytes);
  out += ',';
  appendNumber(out, "restCount", node.restCount);
  out += ',';
  appendBool(out, "isLocked", node.isLocked);
  if (node.lastUsed) {
    out += ',';
    appendNumber(out, "lastUsed", *node.lastUsed - referenceDateOffset);
  }
  out += ",\"category\":";
  out += SizeNodeJSON::quoted(rawValue(node.category));
  if (node.markers) {
    out += ",\"markers\":[";
    for (std::size_t i = 0; i < node.markers->size(); ++i) {
      if (i > 0) out += ',';
      out += SizeNodeJSON::quoted((*node.markers)[i]);
    }
    out += ']';
  }
  out += '}';
}

}  // namespace

void append(const SizeNode& node, std::string& out) {
  struct Frame {
    const SizeNode* node;
    std::size_t next = 0;
  };
  std::vector<Frame> stack{{&node}};
  appendHead(node, out);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next < frame.node->children.size()) {
      if (frame.next > 0) out += ',';
      const SizeNode& child = frame.node->children[frame.next++];
      appendHead(child, out);
      stack.push_back({&child});
      continue;
    }
    appendTail(*frame.node, out);
    stack.pop_back();
  }
}

std::string encode(const SizeNode& node) {
  std::string out;
  append(node, out);
  return out;
}

std::optional<SizeNode> decode(std::string_view json) {
  JSONTreeReader reader(JSONTreeReader::Shape::node);
  if (!nlohmann::json::sax_parse(json, &reader) || !reader.finished()) return std::nullopt;
  return reader.takeTree();
}

}  // namespace pellwin::SizeNodeJSON
