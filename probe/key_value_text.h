// Line-by-line walking of the kernel's "Key: value" and "key value" text files.
#pragma once

#include <string_view>

namespace pellwin {

[[nodiscard]] inline std::string_view trimSpaces(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

// Calls visit(line) for every line; a last line without a line end counts too.
template <class Visit>
void forEachLine(std::string_view text, Visit&& visit) {
  while (!text.empty()) {
    const auto end = text.find('\n');
    visit(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
}

// Calls visit(key, value) for every line holding `separator`; both sides are trimmed. Lines
// without the separator are skipped.
template <class Visit>
void forEachKeyValue(std::string_view text, char separator, Visit&& visit) {
  forEachLine(text, [&](std::string_view line) {
    const auto at = line.find(separator);
    if (at == std::string_view::npos) return;
    visit(trimSpaces(line.substr(0, at)), trimSpaces(line.substr(at + 1)));
  });
}

// Splits off the next space-separated word; runs of spaces count as one separator.
[[nodiscard]] inline std::string_view nextWord(std::string_view& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) {
    text = {};
    return {};
  }
  text.remove_prefix(first);
  const auto end = text.find(' ');
  const auto word = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end);
  return word;
}

}  // namespace pellwin
