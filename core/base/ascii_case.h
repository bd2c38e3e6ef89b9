// Lower-casing for names that are compared without regard to case (process names, app
// identities, folder names). ASCII only, so it never depends on the process's locale.
#pragma once

#include <string>
#include <string_view>

namespace pellwin {

[[nodiscard]] inline std::string asciiLower(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

}  // namespace pellwin
