// Text that other programs chose (process names, command lines) made safe to show: nothing in
// it can move the cursor, send escape sequences to a terminal or reorder the line.
#pragma once

#include <string>
#include <string_view>

namespace pellwin {

// Replaces each control character (C0, DEL, C1), bidirectional formatting character, line or
// paragraph separator, and each byte that is not part of valid UTF-8 with "?". Everything else,
// other languages' letters included, is kept as it is.
[[nodiscard]] std::string printableText(std::string_view text);

}  // namespace pellwin
