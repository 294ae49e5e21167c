#include <gtest/gtest.h>

#include <string>

#include "standalone/tables/TextCheck.h"

namespace orv {
namespace {

using namespace std::string_literals;

TEST(TextCheck, FollowsTheByteRangesOfTheStandard) {
  constexpr std::size_t kNone = std::string::npos;
  struct {
    const char* what;
    std::string bytes;
    std::size_t offset;  // of the fault
  } const cases[] = {
      {"ASCII", "time,status\r\n", kNone},
      {"two bytes", "\xC2\x80 \xDF\xBF", kNone},
      {"three bytes", "\xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xEF\xBF\xBF", kNone},
      {"four bytes", "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF", kNone},
      {"continuation byte first", "ab\x80", 2},
      {"overlong two bytes", "\xC0\xAF", 0},
      {"overlong two bytes, C1", "a\xC1\xBF", 1},
      {"overlong three bytes", "\xE0\x9F\xBF", 1},
      {"surrogate", "\xED\xA0\x80", 1},
      {"overlong four bytes", "\xF0\x8F\xBF\xBF", 1},
      {"beyond U+10FFFF", "\xF4\x90\x80\x80", 1},
      {"no first byte", "\xF5\x80\x80\x80", 0},
      {"FF", "\xFF", 0},
      {"character cut by a letter", "\xC3xyz", 1},
      {"character cut by a line end", "\xE2\x82\n", 2},
      {"Latin-1 after sixteen ASCII bytes", "0123456789abcdefM\xFCller", 17},
      {"range is reset after a character", "\xED\x9F\xBF\xC2\xBF\xE0\xA0\x80\xC2\x80", kNone},
  };
  for (const auto& c : cases) {
    TextCheck check;
    const TextCheck::Finding finding = check.Check(c.bytes);
    EXPECT_EQ(finding.Fault, c.offset == kNone ? TextFault::None : TextFault::NotUtf8) << c.what;
    if (c.offset == kNone) {
      EXPECT_TRUE(check.AtEndOfCharacter()) << c.what;
    } else {
      EXPECT_EQ(finding.Offset, c.offset) << c.what;
    }
  }
}

TEST(TextCheck, FindsAZeroByteAtAnyPlaceOfAWord) {
  for (std::size_t size = 1; size <= 20; ++size) {
    for (std::size_t place = 0; place < size; ++place) {
      std::string bytes(size, '\x01');
      bytes[place] = '\0';
      const TextCheck::Finding finding = TextCheck().Check(bytes);
      EXPECT_EQ(finding.Fault, TextFault::ZeroByte) << size << " " << place;
      EXPECT_EQ(finding.Offset, place) << size;
    }
  }
}

TEST(TextCheck, TakesCharactersCutByTheEndOfABlock) {
  const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z";
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    TextCheck check;
    EXPECT_EQ(check.Check(text.substr(0, cut)).Fault, TextFault::None) << cut;
    EXPECT_EQ(check.Check(text.substr(cut)).Fault, TextFault::None) << cut;
    EXPECT_TRUE(check.AtEndOfCharacter());
  }
  TextCheck check;
  check.Check("\xE2\x82");
  EXPECT_FALSE(check.AtEndOfCharacter());
  EXPECT_EQ(check.Check("x").Fault, TextFault::NotUtf8);
}

}  // namespace
}  // namespace orv
