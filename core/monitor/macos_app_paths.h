// How macOS lays out the programs that process paths name: app bundles ("….app/…"), the
// signing clones apps run from, framework Pythons and the read-only system folder. Kept so
// that a machine reading from that system judges the same; not live on Linux, where no path
// takes these forms. Pure functions.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pellwin::MacosAppPaths {

// The path cut just after the first ".app" followed by "/", so a helper app nested in an app
// bundle yields the outer bundle; none when the path has no ".app/".
[[nodiscard]] std::optional<std::string_view> outermostBundlePath(std::string_view path);

// A program inside an app bundle: known by its bundle, never by its command line.
[[nodiscard]] bool isInBundle(std::string_view path);

// The real program of one run from a signing clone (its path holds "code_sign_clone"): the
// first argument, when that lies inside an app bundle; none otherwise.
[[nodiscard]] std::optional<std::string> signingCloneTarget(std::string_view path,
                                                            std::span<const std::string> arguments);

// A framework Python: a Python inside a "Python.framework" folder other than the framework's
// app stub. It is always shown on its own.
[[nodiscard]] bool isFrameworkPython(std::string_view path);

// A path inside "/System/", where the system's own programs live.
[[nodiscard]] bool isSystemFolder(std::string_view path);

}  // namespace pellwin::MacosAppPaths
