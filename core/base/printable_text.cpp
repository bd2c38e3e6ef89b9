#include "core/base/printable_text.h"

#include <cstdint>

namespace pellwin {
namespace {

// The length of the valid UTF-8 sequence starting at `at` and the code point it encodes;
// length 0 for a byte that does not start one (stray continuation, overlong form, surrogate,
// beyond U+10FFFF, cut short).
struct Decoded {
  std::size_t length = 0;
  char32_t codePoint = 0;
};

Decoded decode(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = byte(at);
  if (lead < 0x80) return {1, lead};
  std::size_t length = 0;
  char32_t codePoint = 0;
  char32_t minimum = 0;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, codePoint = lead & 0x1F, minimum = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, codePoint = lead & 0x0F, minimum = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, codePoint = lead & 0x07, minimum = 0x10000;
  } else {
    return {};
  }
  if (at + length > text.size()) return {};
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return {};
    codePoint = (codePoint << 6) | (byte(at + i) & 0x3F);
  }
  if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
    return {};
  }
  return {length, codePoint};
}

bool isUnsafe(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c <= 0x9F)          // C0, DEL, C1 (0x9B is a one-byte escape)
         || (c >= 0x202A && c <= 0x202E)               // bidirectional embeddings and overrides
         || (c >= 0x2066 && c <= 0x2069)               // bidirectional isolates
         || c == 0x200E || c == 0x200F || c == 0x061C  // direction marks
         || c == 0x2028 || c == 0x2029;                // line and paragraph separators
}

bool isLineSpace(char32_t c) {
  return c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r' || c == 0x2028 ||
         c == 0x2029;
}

enum class Unsafe { replace, strip };

std::string safeText(std::string_view text, Unsafe unsafe) {
  std::string safe;
  safe.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const Decoded d = decode(text, at);
    if (d.length == 0) {
      safe += '?';
      at += 1;
      continue;
    }
    if (!isUnsafe(d.codePoint)) {
      safe.append(text, at, d.length);
    } else if (unsafe == Unsafe::replace) {
      safe += '?';
    } else if (isLineSpace(d.codePoint)) {
      safe += ' ';
    }
    at += d.length;
  }
  return safe;
}

}  // namespace

std::string printableText(std::string_view text) { return safeText(text, Unsafe::replace); }

std::string strippedText(std::string_view text) { return safeText(text, Unsafe::strip); }

}  // namespace pellwin
