#include "probe/files/trash_info.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

TEST(TrashInfo, PercentEncodingRoundTripsEveryByteAndRejectsBrokenEscapes) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  const std::string encoded = TrashInfo::percentEncode(all);
  EXPECT_EQ(encoded.find_first_of(" \n\t\x7f\xff"), std::string::npos);
  EXPECT_EQ(TrashInfo::percentDecode(encoded), all);
  EXPECT_EQ(TrashInfo::percentEncode("/a b/ü%"), "/a%20b/%C3%BC%25");
  for (const char* broken : {"%", "%4", "%zz", "a%2"}) {
    SCOPED_TRACE(broken);
    EXPECT_EQ(TrashInfo::percentDecode(broken), std::nullopt);
  }
}

TEST(TrashInfo, ParsesTheFirstPathAndDateAndIgnoresEverythingElse) {
  const struct {
    const char* why;
    const char* text;
    std::optional<TrashInfo::Parsed> expected;
  } cases[] = {
      {"written by us", "[Trash Info]\nPath=/h/a%20b\nDeletionDate=2026-01-02T03:04:05\n",
       TrashInfo::Parsed{.path = "/h/a b", .deletionDate = "2026-01-02T03:04:05"}},
      {"first keys win, others ignored, CRLF",
       "[Trash Info]\r\nX=1\r\nPath=rel/x\r\nPath=/other\r\nDeletionDate=20040831T22:32:08\r\n",
       TrashInfo::Parsed{.path = "rel/x", .deletionDate = "20040831T22:32:08"}},
      {"no final newline", "[Trash Info]\nPath=/x",
       TrashInfo::Parsed{.path = "/x", .deletionDate = ""}},
      {"wrong header", "[Trash info]\nPath=/x\n", std::nullopt},
      {"no path", "[Trash Info]\nDeletionDate=2026-01-02T03:04:05\n", std::nullopt},
      {"undecodable path", "[Trash Info]\nPath=/x%G0\n", std::nullopt},
      {"empty", "", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(TrashInfo::parse(c.text), c.expected);
  }
  std::tm time{};
  time.tm_year = 126;
  time.tm_mon = 0;
  time.tm_mday = 2;
  time.tm_hour = 3;
  time.tm_min = 4;
  time.tm_sec = 5;
  EXPECT_EQ(TrashInfo::parse(TrashInfo::text("/h/new\nline", TrashInfo::deletionDate(time))),
            (TrashInfo::Parsed{.path = "/h/new\nline", .deletionDate = "2026-01-02T03:04:05"}));
}

TEST(TrashInfo, CandidateNamesCountUpAndFitWithTheInfoExtension) {
  EXPECT_EQ(TrashInfo::candidateName("a.txt", 1), "a.txt");
  EXPECT_EQ(TrashInfo::candidateName("a.txt", 2), "a.txt.2");
  const std::string longAscii(300, 'a');
  EXPECT_EQ(TrashInfo::candidateName(longAscii, 1).size(), 245u);
  EXPECT_EQ(TrashInfo::candidateName(longAscii, 12).size(), 245u);
  // 122 two-byte letters then more: the cut never splits one.
  std::string wide;
  for (int i = 0; i < 130; ++i) wide += "\xc3\xa9";
  const std::string cut = TrashInfo::candidateName(wide, 1);
  EXPECT_EQ(cut.size(), 244u);
  EXPECT_EQ(cut.substr(cut.size() - 2), "\xc3\xa9");
}

TEST(TrashInfo, DirectorySizesDropMalformedLinesAndRoundTrip) {
  const auto parsed = TrashInfo::parseDirectorySizes(
      "16384 15803468 Documents\n8192 15803582 Another%20Folder\nbad line\n-1 2 x\n1 2 a%2Fb\n"
      "3 4 \n5 x y\n");
  ASSERT_EQ(parsed.size(), 2u);
  EXPECT_EQ(parsed[1], (TrashInfo::DirectorySize{
                           .bytes = 8192, .infoModified = 15803582, .name = "Another Folder"}));
  EXPECT_EQ(TrashInfo::parseDirectorySizes(TrashInfo::formatDirectorySizes(parsed)), parsed);
}

}  // namespace
}  // namespace pellwin
