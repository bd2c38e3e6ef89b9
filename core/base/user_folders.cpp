#include "core/base/user_folders.h"

#include <optional>

namespace pellwin::UserFolders {

namespace {

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
    text.remove_suffix(1);
  }
  return text;
}

// The text inside double quotes with the shell's escapes undone; none when the quotes do not
// close the value or an unescaped "$" or "`" would need a shell to expand it.
std::optional<std::string> unquoted(std::string_view value) {
  if (value.size() < 2 || value.front() != '"' || value.back() != '"') return std::nullopt;
  value = value.substr(1, value.size() - 2);
  std::string out;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '\\' && i + 1 < value.size()) {
      out += value[++i];
    } else if (c == '"' || c == '`' || c == '\\' || c == '$') {
      return std::nullopt;
    } else {
      out += c;
    }
  }
  return out;
}

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::optional<std::string> folder(std::string_view value, std::string_view home) {
  // "$HOME" is expanded before the escapes are undone, so an escaped "\$HOME" is not home.
  constexpr std::string_view homeVariable = "\"$HOME";
  std::string path;
  if (value.starts_with(homeVariable) &&
      (value.size() == homeVariable.size() + 1 || value[homeVariable.size()] == '/')) {
    const auto rest = unquoted("\"" + std::string(value.substr(homeVariable.size())));
    if (!rest) return std::nullopt;
    path = std::string(home) + *rest;
  } else {
    const auto whole = unquoted(value);
    if (!whole || !whole->starts_with('/')) return std::nullopt;
    path = *whole;
  }
  path = withoutTrailingSlashes(std::move(path));
  if (path == withoutTrailingSlashes(std::string(home))) return std::nullopt;
  return path;
}

}  // namespace

std::vector<std::string> parse(std::string_view text, std::string_view home) {
  std::vector<std::string> folders;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    const std::string_view line = trimmed(text.substr(start, end - start));
    start = end + 1;
    const std::size_t equals = line.find('=');
    if (line.starts_with('#') || equals == std::string_view::npos) continue;
    const std::string_view name = line.substr(0, equals);
    if (!name.starts_with("XDG_") || !name.ends_with("_DIR")) continue;
    if (auto path = folder(line.substr(equals + 1), home)) folders.push_back(std::move(*path));
  }
  return folders;
}

}  // namespace pellwin::UserFolders
