// The scan cache's JSON form of a size tree: one object per node with the keys "name",
// "path", "bytes", "isDirectory", "children", "restBytes", "restCount", "isLocked", "lastUsed"
// (seconds since 1 January 2001, may be absent), "category" and "markers" (may be absent).
// File names are bytes, not always UTF-8: a name or path that is not valid UTF-8 is written with
// U+FFFD in place of the bad bytes, followed by "nameBytes" or "pathBytes" holding its exact
// bytes in hexadecimal, which win when read back. Writing and reading never recurse, so a tree
// of any depth is safe.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/space/size_node.h"

namespace pellwin::SizeNodeJSON {

// Seconds from 1 January 1970 to 1 January 2001, the epoch of dates in the cache.
inline constexpr double referenceDateOffset = 978'307'200.0;

// Appends the node's JSON to `out`.
void append(const SizeNode& node, std::string& out);

// A JSON string value for `text` (quotes included), with U+FFFD for bytes that are not UTF-8;
// `exact` says whether it kept every byte.
[[nodiscard]] std::string quoted(std::string_view text, bool* exact = nullptr);

// `text`'s bytes as lower-case hexadecimal, and back; none for text that is not hexadecimal.
[[nodiscard]] std::string hexBytes(std::string_view text);
[[nodiscard]] std::optional<std::string> fromHex(std::string_view hex);

[[nodiscard]] std::string encode(const SizeNode& node);
// None when the text is not JSON, a required key is missing or a value has the wrong type.
[[nodiscard]] std::optional<SizeNode> decode(std::string_view json);

}  // namespace pellwin::SizeNodeJSON
