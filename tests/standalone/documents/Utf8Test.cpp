#include <gtest/gtest.h>

#include "standalone/documents/Utf8.h"

namespace orv {
namespace {

TEST(DecodeUtf8, ReadsCharactersOfEveryLengthAndRefusesWhatIsNone) {
  struct {
    const char* what;
    std::string bytes;
    char32_t codePoint;
    std::size_t length;
  } const cases[] = {
      {"ASCII", "a", 'a', 1},
      {"a zero byte", std::string(1, '\0'), 0, 1},
      {"the first of two bytes", "\xC2\x80", 0x80, 2},
      {"two bytes", "\xC3\xA9", 0xE9, 2},
      {"the first of three bytes", "\xE0\xA0\x80", 0x800, 3},
      {"three bytes", "\xE2\x82\xAC", 0x20AC, 3},
      {"the first of four bytes", "\xF0\x90\x80\x80", 0x10000, 4},
      {"the last code point", "\xF4\x8F\xBF\xBF", 0x10FFFF, 4},
      {"a lone continuation byte", "\x80", ReplacementCharacter, 1},
      {"a byte that never occurs", "\xFF", ReplacementCharacter, 1},
      {"a cut character", "\xE2\x82", ReplacementCharacter, 1},
      {"a broken character", "\xE2\x28\xA1", ReplacementCharacter, 1},
      {"an overlong slash of two bytes", "\xC0\xAF", ReplacementCharacter, 1},
      {"an overlong slash of three bytes", "\xE0\x80\xAF", ReplacementCharacter, 1},
      {"an overlong form of four bytes", "\xF0\x80\x80\xAF", ReplacementCharacter, 1},
      {"a surrogate", "\xED\xA0\x80", ReplacementCharacter, 1},
      {"a value beyond the last", "\xF4\x90\x80\x80", ReplacementCharacter, 1},
  };
  for (const auto& c : cases) {
    const Utf8Character character = DecodeUtf8(c.bytes, 0);
    EXPECT_EQ(character.CodePoint, c.codePoint) << c.what;
    EXPECT_EQ(character.Length, c.length) << c.what;
  }
}

TEST(AppendUtf8, GivesBackWhatWasDecoded) {
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; codePoint += codePoint < 0x900 ? 1 : 0x101) {
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) continue;
    std::string bytes;
    AppendUtf8(bytes, codePoint);
    const Utf8Character character = DecodeUtf8(bytes, 0);
    ASSERT_EQ(character.CodePoint, codePoint);
    ASSERT_EQ(character.Length, bytes.size()) << "code point " << static_cast<unsigned>(codePoint);
  }
}

TEST(DropIncompleteCharacter, CutsOnlyAFragmentAtTheEnd) {
  struct {
    const char* what;
    std::string text, kept;
  } const cases[] = {
      {"an empty text", "", ""},
      {"ASCII", "abc", "abc"},
      {"a whole character", "ab\xC3\xA9", "ab\xC3\xA9"},
      {"one byte of two", "ab\xC3", "ab"},
      {"one byte of three", "ab\xE2", "ab"},
      {"two bytes of three", "ab\xE2\x82", "ab"},
      {"three bytes of four", "ab\xF0\x9F\x98", "ab"},
      {"nothing but a fragment", "\xE2\x82", ""},
      {"stray continuation bytes, left to the writer", "a\x80\x80\x80", "a\x80\x80\x80"},
  };
  for (const auto& c : cases) {
    std::string text = c.text;
    DropIncompleteCharacter(text);
    EXPECT_EQ(text, c.kept) << c.what;
  }
}

}  // namespace
}  // namespace orv
