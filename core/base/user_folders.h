// The user's own folders as the desktop names them: the XDG user folders of
// $XDG_CONFIG_HOME/user-dirs.dirs, whose names follow the language the account was set up in
// ("Schreibtisch", "Imágenes") or wherever the user moved them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pellwin::UserFolders {

// The folders named in a user-dirs.dirs text, as absolute paths in file order. Lines are
// `XDG_NAME_DIR="$HOME/Path"` or `XDG_NAME_DIR="/Path"` with shell escapes inside the quotes;
// comments, other variables and values of any other form are skipped, as are values that are
// home itself (the desktop's way of turning a folder off).
[[nodiscard]] std::vector<std::string> parse(std::string_view text, std::string_view home);

}  // namespace pellwin::UserFolders
