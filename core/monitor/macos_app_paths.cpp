#include "core/monitor/macos_app_paths.h"

namespace pellwin::MacosAppPaths {

std::optional<std::string_view> outermostBundlePath(std::string_view path) {
  const auto at = path.find(".app/");
  if (at == std::string_view::npos) return std::nullopt;
  return path.substr(0, at + 4);
}

bool isInBundle(std::string_view path) { return path.find(".app/") != std::string_view::npos; }

std::optional<std::string> signingCloneTarget(std::string_view path,
                                              std::span<const std::string> arguments) {
  if (path.find("code_sign_clone") == std::string_view::npos || arguments.empty() ||
      !isInBundle(arguments.front())) {
    return std::nullopt;
  }
  return arguments.front();
}

bool isFrameworkPython(std::string_view path) {
  return path.find("/Python.framework/") != std::string_view::npos &&
         !path.ends_with("/Python.app/Contents/MacOS/Python");
}

bool isSystemFolder(std::string_view path) { return path.starts_with("/System/"); }

}  // namespace pellwin::MacosAppPaths
