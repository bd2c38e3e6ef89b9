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

// The same characters removed rather than replaced, for text shown where a "?" would read as
// part of a name (a desktop notification): a tab or a line break becomes one blank, the others
// go. A byte that is not part of valid UTF-8 still becomes "?", so the result is valid UTF-8.
[[nodiscard]] std::string strippedText(std::string_view text);

}  // namespace pellwin
