// Path arithmetic on text, for paths that are names rather than files to open: an executable's
// path, a command's first word, a folder in the size tree. Nothing here touches the disk.
#pragma once

#include <string_view>

namespace pellwin {

// The last component of `path`: what follows the last "/", trailing slashes aside, so
// "/usr/bin/" names "bin" and "/" names "/". A path without a slash is its own last component.
[[nodiscard]] constexpr std::string_view lastPathComponent(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  if (path == "/") return path;
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace pellwin
