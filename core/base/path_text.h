// Path arithmetic on text, for paths that are names rather than files to open: an executable's
// path, a command's first word, a folder in the size tree. Nothing here touches the disk.
#pragma once

#include <string>
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

// `name` inside `folder`, with exactly one "/" between them: "/" and "a" give "/a", "/x/" and
// "a" give "/x/a". An empty folder stands for the root.
[[nodiscard]] inline std::string joinedPath(std::string_view folder, std::string_view name) {
  std::string path;
  path.reserve(folder.size() + 1 + name.size());
  path += folder;
  if (path.empty() || path.back() != '/') path += '/';
  path += name;
  return path;
}

}  // namespace pellwin
