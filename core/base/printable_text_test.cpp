#include "core/base/printable_text.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(PrintableText, ReplacesEverythingThatCouldSteerATerminal) {
  using namespace std::string_literals;
  const struct {
    const char* why;
    std::string text;
    std::string expected;
  } cases[] = {
      {"plain text stays", "python3.12 train.py --lr 0.1", "python3.12 train.py --lr 0.1"},
      {"other scripts stay", "Café 東京 🚀", "Café 東京 🚀"},
      {"an escape sequence that would clear the screen", "a\x1b[2Jb", "a?[2Jb"},
      {"newline, tab, carriage return and NUL", "a\nb\tc\rd\0e"s, "a?b?c?d?e"},
      {"DEL", "a\x7f", "a?"},
      {"C1 control CSI encoded as UTF-8",
       "a\xc2\x9b"
       "31mb",
       "a?31mb"},
      {"a lone CSI byte",
       "a\x9b"
       "31m",
       "a?31m"},
      {"right-to-left override", "evil\u202Etxt.exe", "evil?txt.exe"},
      {"bidirectional isolate", "a\u2066b\u2069", "a?b?"},
      {"line separator", "a\u2028b", "a?b"},
      {"overlong encoding of '/'", "a\xc0\xaf", "a??"},
      {"UTF-16 surrogate encoded in UTF-8", "\xed\xa0\x80", "???"},
      {"a sequence cut short at the end", "ab\xe6\x9d", "ab??"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(printableText(c.text), c.expected);
  }
}

TEST(StrippedText, DropsControlsAndKeepsWordsApart) {
  using namespace std::string_literals;
  const struct {
    const char* why;
    std::string text;
    std::string expected;
  } cases[] = {
      {"plain text and markup characters stay", "Web <Content> & co", "Web <Content> & co"},
      {"an escape sequence loses its escape", "a\x1b[2Jb", "a[2Jb"},
      {"line breaks and tabs become blanks", "two\nlines\tand\r\u2028more", "two lines and  more"},
      {"NUL, DEL and C1 go", "a\0b\x7f\xc2\x9b"s "c", "abc"},
      {"bidirectional override goes", "evil\u202Etxt", "eviltxt"},
      {"invalid UTF-8 still becomes a question mark", "a\xff", "a?"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(strippedText(c.text), c.expected);
  }
}

}  // namespace
}  // namespace pellwin
